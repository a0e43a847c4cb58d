#include "osal/export/osal_msmalloc.h"
#include "support/platform.h"
#include "util/export/arguments.h"

#include <gtest/gtest.h>
#include <cstring>
#include <deque>

using std::string;

// The text is copied to a block of just its size, for the address sanitizer to watch its end.
static int parse(argsParse* pa, const string& text, char delim = ',') {
    const std::vector<char> exact(text.begin(), text.end());
    return argParse(pa, exact.data(), exact.size(), delim);
}

struct ParseCase {
    const char* text;
    const char* error;
    size_t size = 1;
    const char* last = "";  // name and value of the last unknown item
    unsigned sizes = 0;
};

// A required, repeatable size and a bool, with a catch-all when an unknown item is expected.
const ParseCase PARSE_CASES[] = {
    {"size=64m,v", "", 64 << 20, "", 1},
    {",,size='1k'tail,,verb=off,", "", 1024, "", 1},
    {"size=1,size=2,", "", 2, "", 2},
    {"a=1,size=3,b=x y", "", 3, "b|x y", 1},
    {"*=1,size=3", "", 3, "*|1", 1},
    {"size=3,=off", "", 3, "", 1},
    {"v", "Required parameter size missing"},
    {"", "Required parameter size missing"},
    {"size=3,v,verb", "Duplicate parameter verb", 3, "", 1},
    {"size=abc", "Could not parse value for argument 'size': abc (could not parse number)", 1, "",
     1},
    {"size=3,color=red,size=x", "Unknown parameter color", 3, "", 1},
    {"size=3,Size=4", "Unknown parameter Size", 3, "", 1},
    {"size=3,ver=1", "Unknown parameter ver", 3, "", 1},
    {"siz=1", "Unknown parameter siz"},
};

TEST(ArgParse, StoresValuesOrNamesTheFirstMistake) {
    for (const ParseCase& c : PARSE_CASES) {
        SCOPED_TRACE(c.text);
        argsParse pa = {};
        argInfo infos[3] = {};
        size_t size;
        bool verbose;
        const char *name = "", *value = "";
        size = argAddsize_t("size", &pa, &infos[0], &size, 1, "", nullptr, _required | _multiple);
        if (*c.last != '\0')
            argAddFallback(&pa, &infos[2], &name, &value);
        verbose = argAddbool("verbose", &pa, &infos[1], &verbose, false, "", "v,,verb", 0);
        EXPECT_EQ(parse(&pa, c.text), *c.error == '\0' ? 0 : -1);
        EXPECT_STREQ(argError(&pa), c.error);
        EXPECT_EQ(size, c.size);
        EXPECT_EQ(infos[0].handled, c.sizes);
        EXPECT_EQ(string(name) + (*name != '\0' ? "|" : "") + value, c.last);
        argFree(&pa);
        EXPECT_STREQ(argError(&pa), "");
        EXPECT_EQ(pa.data, nullptr);
    }
}

// Strings are compared as such, not as pointers.
static auto shown(auto value) {
    if constexpr (std::is_same_v<decltype(value), pcchar>)
        return string(value != nullptr ? value : "(null)");
    else
        return value;
}

// Two values, under the name and under an alias, which is a later argument's name.
template <typename T>
static void expect_values(auto add, T initial, const string& first, T first_value,
                          const string& second, T second_value) {
    argsParse pa = {};
    argInfo info, other;
    T value = add("name", &pa, &info, &value, initial, "", "a,n,", _multiple), unused;
    add("n", &pa, &other, &unused, initial, nullptr, "other", 0);
    EXPECT_EQ(shown(value), shown(initial));
    const string text = "name=" + first + ",other=" + first + ",n=" + second;
    ASSERT_EQ(argParse(&pa, text.c_str(), text.size(), ','), 0) << argError(&pa);
    EXPECT_EQ(shown(value), shown(second_value));
    EXPECT_STREQ(info.pos, "n");
    const T expected[] = {first_value, second_value, T{}, initial};
    T values[] = {initial, initial, initial, initial};
    argGetValues(&pa, &info, values, 3);
    for (int i = 0; i < 4; i++)
        EXPECT_EQ(shown(values[i]), shown(expected[i])) << text;
    argFree(&pa);
}

TEST(ArgParse, StoresEveryType) {
    expect_values<bool>(argAddbool, true, "", true, "off", false);
    expect_values<int>(argAddint, 7, "-2k", -2048, "5", 5);
    expect_values<s8>(argAdds8, 7, "-8g", -(8LL << 30), "5", 5);
    expect_values<double>(argAdddouble, 7, "2.5", 2.5, "1k", 1024);
    expect_values<size_t>(argAddsize_t, 7, "8g", 8ULL << 30, "5", 5);
    expect_values<u8>(argAddu8, 7, "0x1fk", 0x1fULL << 10, "5", 5);
    expect_values<nanotime>(argAddnanotime, 7, "5ms", 5000000, "-1s", -1000000000);
    expect_values<pcchar>(argAddpcchar, "default", "'a,b'", "a,b", "\"x", "x");
    expect_values<pvoid>(argAddpvoid, &platform, "ff", (pvoid)0xff, "0", nullptr);
}

TEST(ArgAdd, DeclaresARecordAnewAndLeavesUnknownItemsToTheLastCatchAll) {
    argsParse pa = {};
    argInfo first, second, sinks[3];
    int a = 0, b = 0;
    pcchar name = "", value = "", kept = "";
    EXPECT_EQ(argAddFallback(&pa, &sinks[0], &kept, &kept), nullptr);
    argAddint("a", &pa, &first, &a, 0, nullptr, nullptr, 0);
    argAddint("b", &pa, &second, &b, 0, nullptr, nullptr, 0);
    argAddFallback(&pa, &sinks[1], nullptr, nullptr);
    for (const char* text : {"c=1,b=2,a=3", "c=4,a=5"}) {
        argAddint("c", &pa, &first, &a, 0, nullptr, nullptr, 0);
        EXPECT_EQ(argCount(&pa), 2);
        EXPECT_EQ(parse(&pa, text), 0) << argError(&pa);
        EXPECT_EQ(string(kept) + name + value, *name != '\0' ? "a5" : "");
        argFree(&pa);
        argAddFallback(&pa, &sinks[2], &name, &value);
    }
    EXPECT_EQ(a * 10 + b, 42);
}

TEST(ArgParse, FindsEachOfManyNamesThatDifferInOneCharacter) {
    struct Argument {
        string name;
        size_t value = 0;
        argInfo info = {};
    };
    std::deque<Argument> args;
    argsParse pa = {};
    argInfo sink;
    string text;
    for (size_t length = 1; length <= 20; length++)
        for (size_t place = 0; place < length; place++) {
            Argument& arg = args.emplace_back(Argument{string(length, 'o')});
            for (const char c : string("abcdefghijklmnopqrstuvwyzx")) {
                arg.name[place] = c;
                text += arg.name + "=" + std::to_string(args.size()) + ";";
            }
            argAddsize_t(arg.name.c_str(), &pa, &arg.info, &arg.value, 0, nullptr, nullptr, 0);
        }
    argAddFallback(&pa, &sink, nullptr, nullptr);
    EXPECT_EQ(parse(&pa, text + "*;*", ';'), 0) << argError(&pa);
    for (size_t i = 0; i < args.size(); i++)
        EXPECT_EQ(args[i].value, i + 1) << args[i].name;
    argFree(&pa);
}

TEST(ArgParse, ReplacesItsMessageUnlessThereIsNoMemoryForAnother) {
    platform = Platform{};
    argsParse pa = {};
    string expected;
    for (size_t length : {109, 110, 111, 112, 5000}) {
        platform.failing_allocation = length == 111 ? 2 : 0;
        const string text(length, 'x');
        EXPECT_EQ(parse(&pa, text), -1);
        expected = length == 111 ? expected : ("Unknown parameter " + text).substr(0, 127);
        EXPECT_EQ(argError(&pa), expected);
        gsFree(pa.data);
        pa.data = nullptr;
    }
    argFree(&pa);
    EXPECT_EQ(platform.live_blocks, 0);
}

TEST(ArgGetValues, ReportsAValueThatNoLongerConverts) {
    platform = Platform{};
    argsParse pa = {};
    argInfo info;
    char text[] = "n=1,n=2,n=3";
    int n = argAddint("n", &pa, &info, &n, 0, nullptr, nullptr, _multiple);
    ASSERT_EQ(argParse(&pa, text, strlen(text), ','), 0);
    *static_cast<char*>(memchr(pa.data, '2', pa.len)) = '?';
    int values[3];
    argGetValues(&pa, &info, values, 3);
    EXPECT_EQ(values[0] * 100 + values[1] * 10 + values[2], 103);
    EXPECT_EQ(platform.reports, std::vector<string>{"argConvert(a->kind, &p, tmp, NULL)|"
                                                    "src/util/c/shared/arguments|argGetValues|"});
    text[4] = 'm';  // an item less
    argGetValues(&pa, &info, values, 3);
    EXPECT_EQ(values[0] * 100 + values[1] * 10 + values[2], 130);
    argGetValues(&pa, &info, nullptr, 0);
    argFree(&pa);
    argGetValues(&pa, &info, values, 3);  // too late, but not fatal
    EXPECT_EQ(values[0], 0);
}
