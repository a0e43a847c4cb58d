#include "support/guarded_text.h"
#include "support/json_outcome.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <clocale>
#include <random>
#include <sstream>
#include <thread>
#include <vector>

using std::string;

// The document's terminator is the last byte that can be read.
static JsonOutcome outcome_of(const string& document, size_t errlen = 5000,
                              size_t abort_at = SIZE_MAX) {
    return json_outcome(guarded({document.c_str(), document.size() + 1}), errlen, abort_at);
}

// Leading blanks change nothing, but move all tokens across the boundaries of the reader's blocks
// of 64 bytes and stretches of 4096. A tail keeps the reader in its copies of whole blocks.
static void expect_outcome(const string& document, const string& expected) {
    const bool fails = expected.find('!') != string::npos;
    for (const string& tail : {string(), "\n" + string(100, '"')})
        for (size_t blanks = 0; blanks < 4110; blanks += blanks == 70 ? 3890 : 1) {
            const string moved = string(blanks, ' ') + document + (fails ? "" : tail);
            ASSERT_EQ(outcome_of(moved).line(), expected) << document << " after " << blanks;
        }
}

const std::pair<const char*, const char*> DOCUMENTS[] = {
    {"{ name: \"gc\", 'threads' = 4; ratio: 0.5,\n  flags: [on off, TRUE, null,], sub: {} }",
     "{'name':'gc','threads':4,'ratio':0.5,'flags':['on','off',true,null,],'sub':{},},"},
    {"[1,2]", "[1,2,],"},
    {"{a:1,}", "{'a':1,},"},
    {"{a:1;}", "{'a':1,},"},
    {"{a:1,/*c*/b:2}", "{'a':1,'b':2,},"},
    {"[a[b]c{d:e}]", "['a',['b',],'c',{'d':'e',},],"},
    {"{a{b:1}}", "{'a':! Unexpected char, line 1, \"{b:1}}\""},
    {"{a=[{b:{}}]; c: [[]]}", "{'a':[{'b':{},},],'c':[[],],},"},
    {"[,1,,2 3,]", "[1,2,3,],"},
    {"[[]{}'a''b'\"c\"d]", "[[],{},'a','b','c','d',],"},
    {"[True FALSE nUlL \"true\" truely falsy]", "[true,false,null,'true','truely','falsy',],"},
    {"{true: 1, 2: x, '': ''}", "{'true':1,'2':'x','':'',},"},
    {"\x01\x1f[\t\r\n\x0b 1\x7f \x0c]", "['1\x7f',],"},
    {"['a\"b' \"a'b\" '\t\x01\xC3\xA9' don't]",
     "['a\"b','a\\x27b','\\x09\\x01\xC3\xA9','don\\x27t',],"},
    {"[\xE6\x97\xA5\xED\xA0\xBD\xED\xB8\x80 \"\xED\xA0\x80\t\" 1\xD9\xA3]",  // an Arabic digit
     "['\xE6\x97\xA5\xED\xA0\xBD\xED\xB8\x80','\xED\xA0\x80\\x09','1\xD9\xA3',],"},
    // comments
    {"// c\n{/* a */a/**/://\n1/*b*/}/", "{'a':1,},"},
    {"/***/[/*/ 1 */2/* **/3/*a*//*b*/4//x\n//y\n5]", "[2,3,4,5,],"},
    {"[abc/*x*/def 'a/*b*/' TRUE/**/False/**/1]", "['abc','def','a/*b*/',true,false,1,],"},
    {"[1 /* open", "[1,! Missing value, line 1, \"\""},
    {"[1 /*/", "[1,! Missing value, line 1, \"\""},
    {"[1 // open", "[1,! Missing value, line 1, \"\""},
    {"[abc/def]", "['abc',! Missing value, line 1, \"/def]\""},
    // structure
    {"", "! Object must start with '{', line 1, \"\""},
    {" // c\n/* d\n */ /", "! Object must start with '{', line 3, \"/\""},
    {"\"lone\"", "! Object must start with '{', line 1, \"\"lone\"\""},
    {"{,}", "{! Missing value, line 1, \",}\""},
    {"{a 1}", "{'a':! Unexpected char, line 1, \"1}\""},
    {"{a\n}", "{'a':! Unexpected char, line 2, \"}\""},
    {"{a:1\n b:2}", "{'a':1,! Bad character, line 2, \"b:2}\""},
    {"{a:1", "{'a':1,! Bad character, line 1, \"\""},
    {"{a:1,\n", "{'a':1,! Object must end with '}', line 2, \"\""},
    {"{a:}", "{'a':! Missing value, line 1, \"}\""},
    {"{a", "{'a':! Unexpected char, line 1, \"\""},
    {"[1;2]", "[1,! Missing value, line 1, \";2]\""},
    {"[,;2]", "[! Missing value, line 1, \";2]\""},
    {"[1", "[1,! Missing value, line 1, \"\""},
    {"[a#b]", "['a',! Missing value, line 1, \"#b]\""},
    {"[a\\b]", "['a',! Missing value, line 1, \"\\b]\""},
    // strings, and lines within them
    {"[1,\n\n'open\n]", "[1,! Unterminated string, line 4, \"'open\""},
    {"[\"open\n]", "[! Unterminated string, line 2, \"\"open\""},
    {"[\n'a\r\n']", "[! Unterminated string, line 2, \"'a\r\""},
    {"{'a", "{! Unterminated string, line 1, \"'a\""},
    {"['a\\\n']", "[! Bad escape sequence, line 2, \"'a\\\""},
    {"['\\u1\n23' ;]", "['\\x01',! Missing value, line 2, \";]\""},
    {R"(['a\b\f\n\r\tz' "\x22\x27\x5c"])", R"(['a\x08\x0c\x0a\x0d\x09z','"\x27\x5c',],)"},
    {R"(["\u00e9\u20ACx" '\ud83d\ude00'])",
     "['\xC3\xA9\xE2\x82\xACx','\xED\xA0\xBD\xED\xB8\x80',],"},
    {R"(["\u0000\x00" '\u12zz\x4zz'])", R"(['\x00\x00','\x12\x04z',],)"},
    {R"(['\u  4a\u+04a\u0x4a' '\u41'"'])", "['JJJ','A',],"},  // no quote within the escape
    {R"(['\u-001\x-1'])", "['\xEF\xBF\xBF\xEF\xBF\xBF',],"},
    // the input as a whole
    {"[1 \xC0\x80 2]", "[1,! Missing value, line 1, \"\xC0\x80 2]\""},
    {"['a\xC0\x80']", "[! Unterminated string, line 1, \"'a\xC0\x80']\""},
    {"[1 // c \xC0\x80\n 2]", "[1,! Missing value, line 1, \"\xC0\x80\""},
    {"[1 /* \xC0\x80*/ 2]", "[1,! Missing value, line 1, \"\xC0\x80*/ 2]\""},
    {"[1] \xC0\x81", "! Illegal UTF8 text stream"},
    {"\xF0\x9F\x98\x80", "! Illegal UTF8 text stream"},
};

TEST(Json, ReadsTheDialectAndNamesItsFaults) {
    for (const auto& [document, expected] : DOCUMENTS)
        expect_outcome(document, expected);
}

const std::pair<const char*, std::vector<const char*>> BAD_ESCAPES[] = {
    {"Bad format number", {R"(\uzzzz)", R"(\x -)", "\\u\u2003041"}},  // no white space in "C"
    {"Bad escape sequence", {R"(\")", R"(\\)", R"(\/)", R"(\U0041)", "\\"}},
    {"Unexpected end of input", {"\\u12", "\\x"}},
};

TEST(Json, KnowsItsEscapesOnly) {
    for (const auto& [error, escapes] : BAD_ESCAPES)
        for (const string escape : escapes)
            expect_outcome("['" + escape, string("[! ") + error + ", line 1, \"'" + escape + '"');
}

// Each word and what it means.
const char WORDS[] = R"(
    0 0  -0 0  +5 5  -123456789 -123456789  010 8  07 7  0x1F 31  -0X10 -16  0x 0  12345678901234567 12345678901234567
    9223372036854775807 9223372036854775807  9223372036854775808 9223372036854775807
    -9223372036854775809 -9223372036854775808  18446744073709551617 9223372036854775807
    08 '08'  12abc '12abc'  0b1 '0b1'  -0B1 '-0B1'  1_000 '1_000'  - '-'  --1 '--1'  . '.'  -. '-.'
    1e3 1000.  1E3 '1E3'  1.5E3 1500.  .5 0.5  1. 1.  -.5 -0.5  -.5e-3 -5e-04  -0.0 -0.  0xfe 254.
    0x1p3 '0x1p3'  1e400 1e999  -1.8e308 -1e999  1e5x '1e5x'  1.5.2 '1.5.2'  1f5 '1f5'  e 'e'
    inf 'inf'  infe 'infe'  nan. 'nan.'  nan(e) 'nan(e)'  0.30000000000000004 0.30000000000000004
    9007199254740993.0 9007199254740992.  18014398509481983.0 18014398509481984.
    2.2250738585072011e-308 2.225073858507201e-308  1.5e-308 1.5e-308
    4.9406564584124654e-324 5e-324)";

TEST(Json, TellsNumbersFromWords) {
    std::istringstream words(WORDS);
    for (string word, meaning; words >> word >> meaning;)
        expect_outcome("[" + word + "]", "[" + meaning + ",],");
}

static string stretched(string text, size_t length) {
    for (size_t at = 0; (at = text.find('@', at)) != string::npos; at += length)
        text.replace(at, 1, string(length, 'x'));
    return text;
}

// "@" stands for letters.
const std::pair<const char*, const char*> STRETCHED[] = {
    {"{@: '@', b: \"@\xC3\xA9\", \"@\"=[]}", "{'@':'@','b':'@\xC3\xA9','@':[],},"},
    {R"([["@\u20AC", "y@\u20AC\n\u20ACx"]])",
     "[['@\xE2\x82\xAC','y@\xE2\x82\xAC\\x0a\xE2\x82\xACx',],],"},
    {"['@\\u00e9\\x41y' @\xE6\x97\xA5y;",
     "['@\xC3\xA9\x41y','@\xE6\x97\xA5y',! Missing value, line 1, \";\""},
    {R"(["@\x41\u12zz\u00e9@", '@\n@'])", "['@A\\x12\xC3\xA9@','@\\x0a@',],"},
    {"[/*@*/'@\n@", "[! Unterminated string, line 2, \"'@\""},
    {"[//@\n\"@\\q", "[! Bad escape sequence, line 2, \"\"@\\q\""},
};

TEST(Json, ReadsTokensOfEveryLength) {
    for (const auto& [document, expected] : STRETCHED)
        for (size_t length = 1; length < 1100; length++)
            ASSERT_EQ(outcome_of(stretched(document, length)).line(), stretched(expected, length));
}

TEST(Json, ReadsNumbersAsThePlatformDoes) {
    std::mt19937_64 random(20260401);
    const char* const formats[] = {"%.*g", "%.*e", "%.*f"};
    for (int round = 0; round < 500; round++) {
        string document = "[", expected = "[";
        const auto add = [&](const string& text) {
            const bool is_float = text.find_first_of(".e") != string::npos;
            document += text + ' ';
            expected += is_float ? float_text(std::strtod(text.c_str(), nullptr))
                                 : std::to_string(std::strtol(text.c_str(), nullptr, 0));
            expected += ',';
        };
        for (int i = 0; i < 100; i++) {
            char text[60];
            std::snprintf(
                text, sizeof text, formats[random() % 3], static_cast<int>(random() % 22),
                std::ldexp(static_cast<double>(random()), static_cast<int>(random() % 128) - 160));
            add(text);
        }
        const string digits(static_cast<size_t>(round), '1');
        for (const string& text :
             {"1" + digits, "-7" + digits, digits + ".5", "0." + digits + "e7"})
            add(text);
        ASSERT_EQ(outcome_of(document + "]").line(), expected + "],");
    }
}

static void ignore(JSONType, const JSONVal*, void*) {}

TEST(Json, CutsTheErrorTextToEveryBuffer) {
    const char* const document = "{ a: 1,\n  b: 2 c: 3 }";
    const string whole = outcome_of(document).error;
    for (size_t errlen = 1; errlen < 60; errlen++)
        EXPECT_EQ(outcome_of(document, errlen).error, cut_error(whole, errlen));
    char untouched[] = "untouched";
    EXPECT_EQ(jsonParse(document, ignore, nullptr, untouched, 0), -1);
    EXPECT_STREQ(untouched, "untouched");
    EXPECT_EQ(jsonParse(document, ignore, nullptr, nullptr, 50), -1);
    EXPECT_EQ(outcome_of("{a:1 b:2}", 27).error, "Bad character, line 1, \"b\"");
    EXPECT_EQ(outcome_of("{a:1 b:2}", 24).error, "Bad character, line 1, ");
}

// Brackets are first in their lines: an error names the line of the bracket, not the one before.
const char ALL_KINDS[] = "{a:\n[\n'b', 0x7,\n1.5\n null true FALSE\n]\n}";

TEST(Json, AbortsFromEveryKindOfEvent) {
    size_t event = 0;
    const char lines[] = "11233455567";  // a line break after the token is not read yet
    std::istringstream extracts("{a:|a:|[|'b', 0x7,|0x7,|1.5|null true FALSE|true FALSE|FALSE|]|}");
    for (string extract; std::getline(extracts, extract, '|'); event++) {
        const JsonOutcome outcome = outcome_of(ALL_KINDS, 5000, event);
        EXPECT_EQ(outcome.error, string("stop, line ") + lines[event] + ", \"" + extract + '"');
        EXPECT_EQ(outcome.events_left, SIZE_MAX) << "an event after the abort";
    }
    jsonAbort("no parse is running: %d", 1);  // returns
}

// Reads INNER from within the callback, then aborts or goes on.
static void expect_nested(const string& inner, bool aborts, const string& expected) {
    string told;
    auto nest = [&](JSONType type, const JSONVal* value) {
        if (type != JSON_STRING)
            return;
        told += json_outcome(inner.c_str(), 5000, 2).error + ';' + value->str.utf8 + ';';
        if (aborts)
            jsonAbort("%s %d", "outer", 7);
    };
    const auto call = [](JSONType type, const JSONVal* value, void* arg) {
        (*static_cast<decltype(nest)*>(arg))(type, value);
    };
    char error[100];
    EXPECT_EQ(jsonParse("[first\n[second] ;", call, &nest, error, sizeof error), -1);
    EXPECT_EQ(told, expected);
    EXPECT_STREQ(error, aborts ? "outer 7, line 1, \"first\"" : "Missing value, line 2, \";\"");
}

TEST(Json, NestsParses) {
    expect_nested("[]", false, ";first;;second;");
    expect_nested("[[\nx]]", false, "stop, line 2, \"x]]\";first;stop, line 2, \"x]]\";second;");
    expect_nested("[[[1]]]", true, "stop, line 1, \"[1]]]\";first;");
    expect_nested("[" + string(1000, 'i') + "}", true, "Missing value, line 1, \"}\";first;");
}

// Beyond ASCII a locale may have white space, on which C libraries disagree.
TEST(Json, SkipsTheLocalesSpacesInFrontOfHexadecimalDigits) {
    const auto outcome = [](wchar_t c) {
        char space[3];
        const string text = "['\\u" + string(space, wchar2utf8(space, c)) + " 41']";
        return json_outcome(text.c_str()).line();
    };
    for (const char* locale : {"C.UTF-8", "C"}) {
        ASSERT_NE(setlocale(LC_ALL, locale), nullptr);
        for (wchar_t c : {0x1680, 0x2000, 0x200A, 0x2028, 0x2029, 0x205F, 0x3000})
            EXPECT_EQ(outcome(c) == "['A',],", locale[1] != '\0') << static_cast<unsigned>(c);
        for (wchar_t c : {0xE9, 0x1FFF, 0x2007, 0x200B, 0x3001})
            EXPECT_TRUE(outcome(c).starts_with("[! Bad format number")) << static_cast<unsigned>(c);
    }
}

static void expect_deep(const string& document, const string& events) {
    std::thread([&] { EXPECT_TRUE(json_outcome(document.c_str()).events == events); }).join();
}

TEST(Json, NestsDeeplyOnASmallStack) {
    constexpr size_t DEEP = 1000000;
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, 1 << 20), 0);
    ASSERT_EQ(pthread_setattr_default_np(&attributes), 0);
    expect_deep(repeated(DEEP, "[") + repeated(DEEP, "]"),
                repeated(DEEP, "[") + repeated(DEEP, "],"));
    expect_deep(repeated(DEEP, "[{a:") + "1" + repeated(DEEP, "}]"),
                repeated(DEEP, "[{'a':") + "1," + repeated(DEEP, "},],"));
    expect_deep(repeated(DEEP, "{a="), repeated(DEEP, "{'a':"));
}
