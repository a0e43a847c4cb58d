#include "osal/export/osal_msmalloc.h"
#include "support/platform.h"
#include "util/export/arguments.h"

#include <gtest/gtest.h>
#include <cstring>
#include <sstream>

using std::string;

// The text is copied to a block of exactly its size, so that the address sanitizer watches its end.
static int parse(argsParse* pa, const string& text) {
    const std::vector<char> exact(text.begin(), text.end());
    return argParse(pa, exact.data(), exact.size(), ',');
}

// The value and the count of a required, repeatable size, and the error. Where a '|' is expected, a
// catch-all takes unknown items, and the name and value of the last one follow.
const std::pair<const char*, const char*> PARSE_CASES[] = {
    {"size=64m,v", "67108864*1 "},
    {",,size='1k'tail,,verb=off,", "1024*1 "},
    {"size=1,size=2,", "2*2 "},
    {"a=1,size=3,*=x y", "3*1 *|x y"},
    {"size=3,=off", "3*1 "},
    {"", "1*0 Required parameter size missing"},
    {"size=3,v,verb", "3*1 Duplicate parameter verb"},
    {"size=abc", "1*1 Could not parse value for argument 'size': abc (could not parse number)"},
    {"size=3,Size=4", "3*1 Unknown parameter Size"},
    {"size=3,ver=1", "3*1 Unknown parameter ver"},
    {"siz=1", "1*0 Unknown parameter siz"},
};

TEST(ArgParse, StoresValuesOrNamesTheFirstMistake) {
    for (const auto& [text, expected] : PARSE_CASES) {
        SCOPED_TRACE(text);
        platform = Platform{};
        argsParse pa = {};
        argInfo size_info, flags[2], sinks[2];
        bool flag;
        size_t size =
            argAddsize_t("size", &pa, &size_info, &size, 1, "", nullptr, _required | _multiple);
        for (const char* name : {"", "v"})
            argAddbool(name, &pa, &flags[*name == 'v'], &flag, false, nullptr, nullptr, 0);
        // Declared again, in the same place: its alias comes before the other's name.
        argAddbool("verbose", &pa, &flags[0], &flag, false, "", "v,,verb", 0);
        const char *name = "", *value = "";
        const bool has_sink = strchr(expected, '|') != nullptr;
        if (has_sink) {
            EXPECT_EQ(argAddFallback(&pa, &sinks[0], nullptr, nullptr), nullptr);
            argAddFallback(&pa, &sinks[1], &name, &value);  // the last one counts
        }
        EXPECT_EQ(argCount(&pa), 3);
        const int result = parse(&pa, text);
        const string error = argError(&pa);
        EXPECT_EQ(result, error.empty() ? 0 : -1);
        EXPECT_EQ(std::to_string(size) + "*" + std::to_string(size_info.handled) + " " +
                      (has_sink ? string(name) + "|" + value : error),
                  expected);
        for (size_t failing : {2, 0}) {  // a message stays when there is no memory for another
            gsFree(pa.data);
            platform.failing_allocation = failing;
            EXPECT_EQ(parse(&pa, "size=?"), -1);
            EXPECT_EQ(argError(&pa) == error, failing == 2);
        }
        argFree(&pa);
        EXPECT_STREQ(argError(&pa), "");
        EXPECT_EQ(platform.live_blocks, 0);
    }
}

// Asks for three values where there are two; a fourth, the variable's own, must not change.
template <typename T>
static void expect_values(auto add, T initial, const string& first, const string& second,
                          const string& expected) {
    argsParse pa = {};
    argInfo info, sink;
    T value = add("n", &pa, &info, &value, initial, "", "m,", _multiple);
    EXPECT_EQ(value, initial);
    argAddFallback(&pa, &sink, nullptr, nullptr);
    const string text = "n=" + first + ";=9;nn=9;m=" + second;
    EXPECT_EQ(argParse(&pa, text.c_str(), text.size(), ';'), 0) << argError(&pa);
    EXPECT_STREQ(info.pos, "m");
    T values[] = {initial, initial, initial, value};
    argGetValues(&pa, &info, values, 3);
    string told;
    for (const T& each : values)
        told += (std::ostringstream() << each).str() + " ";
    EXPECT_EQ(told, expected);
    argFree(&pa);
}

TEST(ArgParse, StoresEveryType) {
    expect_values<bool>(argAddbool, true, "off", "", "0 1 0 1 ");
    expect_values<int>(argAddint, 7, "-2k", "5", "-2048 5 0 5 ");
    expect_values<s8>(argAdds8, 7, "-8g", "5", "-8589934592 5 0 5 ");
    expect_values<double>(argAdddouble, 7, "2.5", "1k", "2.5 1024 0 1024 ");
    expect_values<size_t>(argAddsize_t, 7, "8g", "5", "8589934592 5 0 5 ");
    expect_values<u8>(argAddu8, 7, "0x1fk", "5", "31744 5 0 5 ");
    expect_values<nanotime>(argAddnanotime, 7, "5ms", "-1s", "5000000 -1000000000 0 -1000000000 ");
    expect_values<pcchar>(argAddpcchar, "default", "'a;b'", "\"x", "a;b x  x ");
    expect_values<pvoid>(argAddpvoid, &platform, "ff", "10h", "0xff 0x10 0 0x10 ");
}

TEST(ArgParse, FindsEachOfManyNamesThatDifferInOneCharacter) {
    constexpr size_t LONGEST = 20, COUNT = LONGEST * (LONGEST + 1) / 2;
    string names[COUNT], text;
    size_t values[COUNT] = {}, count = 0;
    argInfo infos[COUNT], sink;
    argsParse pa = {};
    for (size_t length = 1; length <= LONGEST; length++)
        for (size_t place = 0; place < length; place++, count++) {
            string& name = names[count].assign(length, 'o');
            for (const char c : string("abcdefghijklmnopqrstuvwyzx")) {
                name[place] = c;
                text += name + "=" + std::to_string(count + 1) + ",";
            }
            argAddsize_t(name.c_str(), &pa, &infos[count], &values[count], 0, "", nullptr, 0);
        }
    argAddFallback(&pa, &sink, nullptr, nullptr);
    EXPECT_EQ(parse(&pa, text + "*"), 0) << argError(&pa);
    for (size_t i = 0; i < COUNT; i++)
        EXPECT_EQ(values[i], i + 1) << names[i];
    argFree(&pa);
}

TEST(ArgGetValues, ReportsTheValueThatDidNotConvertAndEndsThere) {
    platform = Platform{};
    argsParse pa = {};
    argInfo info;
    string text = "n=1,n=?,n=3";
    int n = argAddint("n", &pa, &info, &n, 0, nullptr, nullptr, _multiple), values[3];
    ASSERT_EQ(argParse(&pa, text.data(), text.size(), ','), -1);
    const auto read = [&] {
        argGetValues(&pa, &info, values, 3);
        return values[0] * 100 + values[1] * 10 + values[2];
    };
    EXPECT_EQ(read(), 100);
    EXPECT_EQ(platform.reports, std::vector<string>{"argConvert(a->kind, &p, tmp, NULL)|"
                                                    "src/util/c/shared/arguments|argGetValues|"});
    text[4] = 'm';  // one item less
    EXPECT_EQ(read(), 130);
    argFree(&pa);
    argGetValues(&pa, &info, nullptr, 0);
    EXPECT_EQ(read(), 0);  // too late, but not fatal
}
