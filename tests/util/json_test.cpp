#include "util/export/json.h"
#include "support/plain_json.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>
#include <cmath>
#include <cstring>
#include <random>
#include <thread>

#ifdef __SANITIZE_THREAD__
constexpr int SLOWNESS = 10;  // of the thread sanitizer, which is meant for other tests than these
#else
constexpr int SLOWNESS = 1;
#endif

using std::string;

constexpr size_t AMPLE = 400;  // bytes for an error text

// A document whose terminator is the last byte before memory that cannot be read.
class GuardedText {
  public:
    const char* place(const string& text) {
        char* const start = end_ - text.size() - 1;
        if (start < area_)
            std::abort();
        std::memcpy(start, text.c_str(), text.size() + 1);
        return start;
    }
    GuardedText()
        : page_(static_cast<size_t>(sysconf(_SC_PAGESIZE))),
          area_(static_cast<char*>(mmap(nullptr, BYTES + page_, PROT_READ | PROT_WRITE,
                                        MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))),
          end_(area_ + BYTES) {
        if (mprotect(end_, page_, PROT_NONE) != 0)
            std::abort();
    }
    ~GuardedText() {
        munmap(area_, BYTES + page_);
    }
    GuardedText(const GuardedText&) = delete;

  private:
    static constexpr size_t BYTES = 1 << 20;
    size_t page_;
    char* area_;
    char* end_;
};

static void expect_same(const string& document, size_t errlen = AMPLE,
                        const AbortRequest& abort = {}) {
    static thread_local GuardedText guarded;
    const char* const text = guarded.place(document);
    const JsonOutcome expected = plain_json(text, errlen, abort);
    const JsonOutcome found = library_json(text, errlen, abort);
    if (found == expected)
        return;
    ADD_FAILURE() << "document: " << ::testing::PrintToString(document) << "\nerrlen: " << errlen
                  << ", abort at " << abort.at << "\nexpected: " << describe(expected)
                  << "\n   found: " << describe(found);
}

// Of the plain reader, too: it is what the generated documents are judged by.
static void expect_outcome(const string& document, const string& outcome) {
    SCOPED_TRACE(document);
    EXPECT_EQ(describe(plain_json(document.c_str(), AMPLE)), outcome);
    EXPECT_EQ(describe(library_json(document.c_str(), AMPLE)), outcome);
}

struct DocumentCase {
    const char* document;
    const char* outcome;
};

const DocumentCase DOCUMENT_CASES[] = {
    {"{ name: \"gc\", 'threads' = 4; ratio: 0.5,\n  flags: [on off, TRUE, null,], sub: {} }",
     "{ k:name s:gc k:threads i:4 k:ratio f:0.5 k:flags [ s:on s:off true null ] k:sub { } }"},
    {"[1,2]", "[ i:1 i:2 ]"},
    {"{} trailing words", "{ }"},
    {"[]]", "[ ]"},
    {"{a:1,}", "{ k:a i:1 }"},
    {"{a:1;}", "{ k:a i:1 }"},
    {"{a:1,/*c*/b:2}", "{ k:a i:1 k:b i:2 }"},
    {"[a[b]c{d:e}]", "[ s:a [ s:b ] s:c { k:d s:e } ]"},
    {"{a{b:1}}", "{ k:a ! Unexpected char, line 1, \"{b:1}}\""},
    {"{a=[{b:{}}]; c: [[]]}", "{ k:a [ { k:b { } } ] k:c [ [ ] ] }"},
    {"[1 2 3]", "[ i:1 i:2 i:3 ]"},
    {"[,1,,2,]", "[ i:1 i:2 ]"},
    {"[[]{}'a''b'\"c\"d]", "[ [ ] { } s:a s:b s:c s:d ]"},
    {"[True FALSE nUlL \"true\" truely]", "[ true false null s:true s:truely ]"},
    {"{true: 1, 2: x, '': ''}", "{ k:true i:1 k:2 s:x k: s: }"},
    {"\x01\x1f[\t\r\n\x0b 1\x7f \x0c]", "[ s:1\x7f ]"},
    {"['a\"b' \"a'b\" '\t\x01\xC3\xA9' don't]", "[ s:a\"b s:a'b s:\t\x01\xC3\xA9 s:don't ]"},
    {"[\xE6\x97\xA5\xED\xA0\xBD\xED\xB8\x80 \xED\xA0\x80]",
     "[ s:\xE6\x97\xA5\xED\xA0\xBD\xED\xB8\x80 s:\xED\xA0\x80 ]"},
    // comments
    {"// c\n{/* a */a/**/://\n1/*b*/}/", "{ k:a i:1 }"},
    {"/***/[/*/ 1 */2/* **/3/*a*//*b*/4//x\n//y\n5]", "[ i:2 i:3 i:4 i:5 ]"},
    {"[abc/*x*/def 'a/*b*/']", "[ s:abc s:def s:a/*b*/ ]"},
    {"[TRUE/**/null/**/False/**/1]", "[ true null false i:1 ]"},
    {"[1 /* open", "[ i:1 ! Missing value, line 1, \"\""},
    {"[1 /*/", "[ i:1 ! Missing value, line 1, \"\""},
    {"[1 // open", "[ i:1 ! Missing value, line 1, \"\""},
    {"[abc/def]", "[ s:abc ! Missing value, line 1, \"/def]\""},
    // structure
    {"", "! Object must start with '{', line 1, \"\""},
    {" // c\n/* d\n */ /", "! Object must start with '{', line 3, \"/\""},
    {"\"lone\"", "! Object must start with '{', line 1, \"\"lone\"\""},
    {"{,}", "{ ! Missing value, line 1, \",}\""},
    {"{a 1}", "{ k:a ! Unexpected char, line 1, \"1}\""},
    {"{a\n}", "{ k:a ! Unexpected char, line 2, \"}\""},
    {"{a:1 b:2}", "{ k:a i:1 ! Bad character, line 1, \"b:2}\""},
    {"{ a: 1,\n  b: 2 c: 3 }", "{ k:a i:1 k:b i:2 ! Bad character, line 2, \"c: 3 }\""},
    {"{a:1", "{ k:a i:1 ! Bad character, line 1, \"\""},
    {"{a:1,\n", "{ k:a i:1 ! Object must end with '}', line 2, \"\""},
    {"{a:}", "{ k:a ! Missing value, line 1, \"}\""},
    {"{a", "{ k:a ! Unexpected char, line 1, \"\""},
    {"[1;2]", "[ i:1 ! Missing value, line 1, \";2]\""},
    {"[,;2]", "[ ! Missing value, line 1, \";2]\""},
    {"[1", "[ i:1 ! Missing value, line 1, \"\""},
    {"[a#b]", "[ s:a ! Missing value, line 1, \"#b]\""},
    {"[a\\b]", "[ s:a ! Missing value, line 1, \"\\b]\""},
    // strings, and lines within them
    {"[1,\n\n'open\n]", "[ i:1 ! Unterminated string, line 4, \"'open\""},
    {"[\n'a\r\n']", "[ ! Unterminated string, line 2, \"'a\r\""},
    {"{'a", "{ ! Unterminated string, line 1, \"'a\""},
    {"['a\\\n']", "[ ! Bad escape sequence, line 2, \"'a\\\""},
    {"['\\u1\n23' ;]", "[ s:\x01 ! Missing value, line 2, \";]\""},
    // the input as a whole
    {"[1 \xC0\x80 2]", "[ i:1 ! Missing value, line 1, \"\xC0\x80 2]\""},
    {"['a\xC0\x80']", "[ ! Unterminated string, line 1, \"'a\xC0\x80']\""},
    {"[1 // c \xC0\x80\n 2]", "[ i:1 ! Missing value, line 1, \"\xC0\x80\""},
    {"[1 /* \xC0\x80*/ 2]", "[ i:1 ! Missing value, line 1, \"\xC0\x80*/ 2]\""},
    {"[1] \xC0\x81", "! Illegal UTF8 text stream"},
    {"\xF0\x9F\x98\x80", "! Illegal UTF8 text stream"},
};

TEST(Json, ReadsTheDialectAndNamesItsFaults) {
    for (const DocumentCase& c : DOCUMENT_CASES)
        expect_outcome(c.document, c.outcome);
}

const DocumentCase WORD_CASES[] = {
    {"0", "i:0"},
    {"-0", "i:0"},
    {"+5", "i:5"},
    {"-123456789", "i:-123456789"},
    {"010", "i:8"},
    {"07", "i:7"},
    {"0x1F", "i:31"},
    {"-0X10", "i:-16"},
    {"9223372036854775807", "i:9223372036854775807"},
    {"9223372036854775808", "i:9223372036854775807"},
    {"-9223372036854775809", "i:-9223372036854775808"},
    {"18446744073709551617", "i:9223372036854775807"},
    {"08", "s:08"},
    {"falsy", "s:falsy"},
    {"12abc", "s:12abc"},
    {"0b1", "s:0b1"},
    {"-0B1", "s:-0B1"},
    {"1_000", "s:1_000"},
    {"-", "s:-"},
    {"--1", "s:--1"},
    {"1\xD9\xA3", "s:1\xD9\xA3"},  // an Arabic digit
    {"1e3", "f:1000"},
    {"1E3", "s:1E3"},
    {"1.5E3", "f:1500"},
    {".5", "f:0.5"},
    {"1.", "f:1"},
    {"-.5", "f:-0.5"},
    {"-.5e-3", "f:-0.00050000000000000001"},
    {"-0.0", "f:-0"},
    {"0xfe", "f:254"},  // the lower-case "e" makes it a float first
    {"0x1p3", "s:0x1p3"},
    {"1e400", "f:inf"},
    {"1.8e308", "f:inf"},
    {"1e5x", "s:1e5x"},
    {"1.5.2", "s:1.5.2"},
    {".", "s:."},
    {"-.", "s:-."},
    {"e", "s:e"},
    {"inf", "s:inf"},
    {"nan.", "s:nan."},
    {"0.30000000000000004", "f:0.30000000000000004"},
    {"9007199254740993.0", "f:9007199254740992"},    // halfway, to even
    {"18014398509481983.0", "f:18014398509481984"},  // up to the next power of two
    {"2.2250738585072011e-308", "f:2.2250738585072009e-308"},
    {"1.5e-308", "f:1.4999999999999999e-308"},  // subnormal
    {"4.9406564584124654e-324", "f:4.9406564584124654e-324"},
};

TEST(Json, TellsNumbersFromWords) {
    for (const DocumentCase& c : WORD_CASES)
        for (size_t before : {0, 20})  // short words are read together with what is before them
            expect_outcome(string(before, ' ') + "[" + c.document + "]",
                           string("[ ") + c.outcome + " ]");
}

const DocumentCase ESCAPE_CASES[] = {
    {R"(a\b\f\n\r\tz)", "s:a\b\f\n\r\tz"},
    {R"(\x22\x27\x5c)", "s:\"'\\"},
    {R"(\u00e9\u20ACx)", "s:\xC3\xA9\xE2\x82\xACx"},
    {R"(\ud83d\ude00)", "s:\xED\xA0\xBD\xED\xB8\x80"},
    {R"(\u0000\x00)", "s:\xC0\x80\xC0\x80"},
    {R"(\u12zz)", "s:\x12"},
    {R"(\x4zz)", "s:\x04z"},
    {R"(\u  4a\u+04a\u0x4a)", "s:JJJ"},
    {R"(\u-001\x-1)", "s:\xEF\xBF\xBF\xEF\xBF\xBF"},
    {R"(\u41'")", "s:A"},  // not a quote here
    {R"(\uzzzz)", "Bad format number"},
    {R"(\x -)", "Bad format number"},
    {"\\u\u2003041", "Bad format number"},  // an em space is no white space of the C locale
    {R"(\")", "Bad escape sequence"},
    {R"(\\)", "Bad escape sequence"},
    {R"(\/)", "Bad escape sequence"},
    {R"(\U0041)", "Bad escape sequence"},
    {"\\", "Bad escape sequence"},
    {"\\u12", "Unexpected end of input"},
    {"\\x", "Unexpected end of input"},
};

TEST(Json, KnowsItsEscapesOnly) {
    for (const DocumentCase& c : ESCAPE_CASES) {
        const string open = string("['") + c.document, outcome = c.outcome;
        if (outcome.rfind("s:", 0) == 0)
            expect_outcome(open + "']", "[ " + outcome + " ]");
        else
            expect_outcome(open, "[ ! " + outcome + ", line 1, \"'" + c.document + "\"");
    }
}

static void ignore(JSONType, const JSONVal*, void*) {}

TEST(Json, CutsTheErrorTextToEveryBuffer) {
    for (const char* document :
         {"{ a: 1,\n  b: 2 c: 3 }", "[1", "\xFF", "['open\n", "'\xE6\x97\xA5'"}) {
        for (size_t errlen = 1; errlen < 60; errlen++)
            expect_same(document, errlen);
        char untouched[] = "untouched";
        EXPECT_EQ(jsonParse(document, ignore, nullptr, untouched, 0), -1);
        EXPECT_STREQ(untouched, "untouched");
        EXPECT_EQ(jsonParse(document, ignore, nullptr, nullptr, 50), -1);
    }
}

// Brackets stand first in their lines: the line is counted up to them, and not before.
const char* const ALL_KINDS = "{a:\n[\n'b', 0x7,\n1.5\n null true FALSE\n]\n}";

// The error text of an abort at each event of ALL_KINDS in turn.
const char* const ABORT_TEXTS[] = {
    "no 7, line 1, \"{a:\"",  // no token is pending: the bracket
    "no 7, line 1, \"a:\"",
    "no 7, line 2, \"[\"",
    "no 7, line 3, \"'b', 0x7,\"",
    "no 7, line 3, \"0x7,\"",
    "no 7, line 4, \"1.5\"",  // the line break after it is not read yet
    "no 7, line 5, \"null true FALSE\"",
    "no 7, line 5, \"true FALSE\"",
    "no 7, line 5, \"FALSE\"",
    "no 7, line 6, \"]\"",
    "no 7, line 7, \"}\"",
};

static void abort_at_zero(JSONType, const JSONVal*, void* arg) {
    if ((*static_cast<int*>(arg))-- == 0)
        jsonAbort("%s %d", "no", 7);
}

TEST(Json, AbortsFromEveryKindOfEvent) {
    for (int event = 0; event < static_cast<int>(std::size(ABORT_TEXTS)); event++) {
        char error[AMPLE];
        int left = event;
        EXPECT_EQ(jsonParse(ALL_KINDS, abort_at_zero, &left, error, sizeof error), -1);
        EXPECT_STREQ(error, ABORT_TEXTS[event]);
        EXPECT_EQ(left, -1) << "an event after the abort";
    }
    jsonAbort("no parse is running: %d", 1);  // returns
}

// Reads INNER from within the callback, then aborts or goes on.
struct Nest {
    const char* inner;
    bool abort_outer;
    string inner_errors;
    string strings;
};

static void nest(JSONType type, const JSONVal* value, void* arg) {
    auto* nest = static_cast<Nest*>(arg);
    if (type != JSON_STRING)
        return;
    char error[AMPLE] = "fine";
    const auto reject_null = [](JSONType inner_type, const JSONVal*, void*) {
        if (inner_type == JSON_NULL)
            jsonAbort("null");
    };
    jsonParse(nest->inner, reject_null, nullptr, error, sizeof error);
    nest->inner_errors += string(error) + ";";
    nest->strings.append(value->str.utf8, value->str.length);
    if (nest->abort_outer)
        jsonAbort("outer");
}

TEST(Json, NestsParses) {
    const string long_inner = "[" + string(1000, 'i') + " '" + string(2000, 'i') + "' }";
    struct NestCase {
        const char* inner;
        bool abort_outer;
        const char* inner_errors;
        const char* outer;
    };
    const NestCase CASES[] = {
        {"[1 [2]]", false, "fine;fine;", "Missing value, line 2, \";\""},
        {"[[[\nnull]]]", false, "null, line 2, \"null]]]\";null, line 2, \"null]]]\";",
         "Missing value, line 2, \";\""},
        {"[\n\n}", true, "Missing value, line 3, \"}\";", "outer, line 1, \"first\""},
        {long_inner.c_str(), true, "Missing value, line 1, \"}\";", "outer, line 1, \"first\""},
        {"[null]", true, "null, line 1, \"null]\";", "outer, line 1, \"first\""},
    };
    for (const NestCase& c : CASES) {
        Nest state = {c.inner, c.abort_outer, "", ""};
        char error[AMPLE];
        EXPECT_EQ(jsonParse("[first\n[second] ;", nest, &state, error, sizeof error), -1);
        EXPECT_EQ(state.inner_errors, c.inner_errors);
        EXPECT_EQ(state.strings, c.abort_outer ? "first" : "firstsecond");
        EXPECT_STREQ(error, c.outer);
    }
}

const char* const TOKENS[] = {"'abc'",
                              "\"abc\"",
                              "\"\"",
                              "word",
                              "12345678901234567",
                              "-1.5e-7",
                              "0x1F",
                              "1.25",
                              "FALSE",
                              "[]",
                              "'\\n'",
                              "\"\\u00e9\"",
                              "\"\\n\\x41\"",
                              "\"\xE6\x97\xA5\t\"",
                              "\xC3\xA9t\xC3\xA9",
                              "/* c **/",
                              "// c\n",
                              "'open\n",
                              "\"open\n",
                              "\"cr\r\"",
                              "\"\\q\""};

TEST(Json, ReadsTokensAcrossEveryBlockBoundary) {
    for (const char* token : TOKENS)
        for (size_t before = 0; before < 70; before++) {
            const string spaces(before, ' '), letters(before, 'x');
            for (const char* after : {"", " ", "]", ",1]", "\n\n 'end'} x"}) {
                expect_same("[" + spaces + token + after);
                expect_same("{" + letters + ":" + spaces + token + after);
                expect_same("['" + letters + "'" + token + after);
                expect_same("[/*" + letters + "*/" + token + after);
                expect_same("[" + spaces + "'" + letters + token + after);
                expect_same("[" + spaces + "\"" + letters + token + after);
            }
        }
}

// The reader looks ahead a few thousand bytes at a time.
TEST(Json, ReadsTokensFarIntoTheText) {
    for (const char* token : TOKENS)
        for (size_t before = 3960; before < 4110; before++) {
            const string spaces(before, ' '), letters(before, 'x');
            expect_same("[" + spaces + token + ",1]");
            expect_same("['" + letters + "'" + token + ",1]");
            expect_same("[\"" + letters + token + ",1\"]");
            expect_same("{" + letters + ":" + token + "\n;");
        }
}

TEST(Json, ReadsTokensOfEveryLength) {
    for (size_t length = 0; length < 1100; length++) {
        const string letters(length, 'x'), digits(length, '1');
        expect_same("{" + letters + ": '" + letters + "', b: \"" + letters + "\xC3\xA9\"}");
        expect_same("[[\"" + letters + "\\u20AC\", \"" + letters + "y\\u20AC\\n\\u20ACx\"]}");
        expect_same("['" + letters + "\\u00e9\\x41y' " + letters + "\xE6\x97\xA5" + "y;");
        expect_same("[" + digits + " " + digits + ".5 " + digits + "e " + letters + "\n;");
        expect_same("['" + letters + "\n");
        expect_same("[\"" + letters + "\\x41\\u12zz\\u00e9" + letters + "\"]");
    }
}

TEST(Json, ReadsDecimalsAsThePlatformDoes) {
    std::mt19937_64 random(20260401);
    for (int round = 0; round < 500 / SLOWNESS; round++) {
        string document = "[";
        for (int i = 0; i < 100; i++) {
            char text[60];
            const char* const formats[] = {" %.*g", " %.*e", " %.*f"};
            std::snprintf(
                text, sizeof text, formats[random() % 3], static_cast<int>(random() % 22),
                std::ldexp(static_cast<double>(random()), static_cast<int>(random() % 128) - 160));
            document += text;
        }
        expect_same(document + "]");
    }
}

TEST(Json, ReadsOnManyThreads) {
    std::vector<std::jthread> threads;
    for (size_t t = 0; t < 8; t++)
        threads.emplace_back([t] {
            for (size_t i = 0; i < 3000; i++)
                expect_same("{a: [" + string(t, ' ') + TOKENS[i % std::size(TOKENS)] + " 1.5e3 x]}",
                            1 + i % 100, {i % 7, "stop"});
        });
}

// Runs the function on a thread with a stack of 256 KiB.
static void run_on_small_stack(void* (*function)(void*), void* arg) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, 256 * 1024), 0);
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, function, arg), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

struct DeepParse {
    string document;
    int result = 1;
    size_t events = 0;
    char error[AMPLE] = {};
};

static void* parse_deep(void* arg) {
    auto* deep = static_cast<DeepParse*>(arg);
    const auto count = [](JSONType, const JSONVal*, void* events) {
        ++*static_cast<size_t*>(events);
    };
    deep->result = jsonParse(deep->document.c_str(), count, &deep->events, deep->error, AMPLE);
    return nullptr;
}

static string repeated(size_t times, const string& text) {
    string result;
    result.reserve(times * text.size());
    while (times-- > 0)
        result += text;
    return result;
}

TEST(Json, NestsDeeplyOnASmallStack) {
    constexpr size_t SURE = 100000, EXTREME = 10000000 / SLOWNESS;
    DeepParse arrays = {repeated(SURE, "[") + repeated(SURE, "]")};
    run_on_small_stack(parse_deep, &arrays);
    EXPECT_EQ(arrays.result, 0) << arrays.error;
    EXPECT_EQ(arrays.events, 2 * SURE);

    DeepParse mixed = {repeated(SURE / 2, "[{a:") + "1" + repeated(SURE / 2, "}]")};
    run_on_small_stack(parse_deep, &mixed);
    EXPECT_EQ(mixed.result, 0) << mixed.error;
    EXPECT_EQ(mixed.events, 2 * SURE + SURE / 2 + 1);

    DeepParse open = {repeated(EXTREME, "{a=")};
    run_on_small_stack(parse_deep, &open);
    EXPECT_EQ(open.result, -1);
    EXPECT_STRNE(open.error, "");
    DeepParse closed = {string(EXTREME, '[') + string(EXTREME, ']')};
    run_on_small_stack(parse_deep, &closed);
    if (closed.result == 0)
        EXPECT_EQ(closed.events, 2 * EXTREME);
    else
        EXPECT_STRNE(closed.error, "");
}
