#include "osal/export/osal_msmalloc.h"
#include "support/plain_arguments.h"
#include "support/platform.h"

#include <gtest/gtest.h>
#include <random>

using std::string;

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
    {"size=1,size=2", "", 2, "", 2},
    {"a=1,size=3,b=x y", "", 3, "b|x y", 1},
    {"*=1,size=3", "", 3, "*|1", 1},
    {"v", "Required parameter size missing"},
    {"", "Required parameter size missing"},
    {"size=3,v,verb", "Duplicate parameter verb", 3, "", 1},
    {"size=abc", "Could not parse value for argument 'size': abc (could not parse number)", 1, "",
     1},
    {"size=3,color=red,size=x", "Unknown parameter color", 3, "", 1},
    {"size=3,Size=4", "Unknown parameter Size", 3, "", 1},
    {"size=3,ver=1", "Unknown parameter ver", 3, "", 1},
    {"size=3,=1", "Unknown parameter ", 3, "", 1},
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
        verbose = argAddbool("verbose", &pa, &infos[1], &verbose, false, "", "v,verb", 0);
        EXPECT_EQ(argCount(&pa), 2);
        EXPECT_EQ(argParse(&pa, c.text, strlen(c.text), ','), *c.error == '\0' ? 0 : -1);
        EXPECT_STREQ(argError(&pa), c.error);
        EXPECT_EQ(size, c.size);
        EXPECT_EQ(infos[0].handled, c.sizes);
        EXPECT_EQ(string(name) + (*name != '\0' ? "|" : "") + value, c.last);
        argFree(&pa);
        EXPECT_STREQ(argError(&pa), "");
        EXPECT_EQ(pa.data, nullptr);
    }
}

TEST(ArgParse, AgreesWithThePlainParserOnRandomTexts) {
    std::mt19937 random(20260329);
    const char* const VALUES[] = {"",    "1", "0x1fk", "-2",  "off", "2.5",
                                  "5ms", "0", "'a,b'", "\"x", "'1'2"};
    for (int round = 0; round < 20000; round++) {
        Declarations args, all = every_type();
        for (DeclaredArgument& arg : all)
            if (random() % 8 != 0)
                args.push_back(arg);
        std::vector<string> names = {
            "unknown", "c", "f", "no", "s", "t", "sz", "address", "a-long-name-on-more-than-16"};
        for (const DeclaredArgument& arg : args)
            names.insert(names.end(), 3, arg.name);
        string text;
        for (size_t items = random() % 8; items > 0; items--)
            text += "," + names[random() % names.size()] + (random() % 8 != 0 ? "=" : "") +
                    VALUES[random() % std::size(VALUES)];
        ASSERT_EQ(first_difference(args, text, ','), "") << text;
    }
}

TEST(ArgParse, FindsEachOfManyArgumentsAndTheFirstOfANameTwice) {
    for (int count : {1, 7, 600}) {
        std::deque<string> names;
        Declarations args;
        string text = "none=1";
        args.push_back({"*", TYPE_pcchar, nullptr, 0, true});
        for (int i = 0; i < count; i++) {
            names.push_back((i % 2 != 0 ? "an-option-with-number-" : "o") + std::to_string(i));
            text = names.back() + "=" + std::to_string(i) + ";" + text;
            args.push_back({names.back().c_str(), TYPE_int});
        }
        args.push_back({"o0", TYPE_int});
        EXPECT_EQ(first_difference(args, text, ';'), "") << count;
    }
}

TEST(ArgParse, CutsMessagesAfter127Characters) {
    for (size_t length : {109, 110, 111, 5000}) {
        Declarations none;
        EXPECT_EQ(first_difference(none, string(length, 'x'), ','), "") << length;
    }
}

TEST(ArgParse, ReplacesItsMessageUnlessThereIsNoMemoryForAnother) {
    platform = Platform{};
    argsParse pa = {};
    for (const char* text : {"a", "b", "c"}) {
        platform.failing_allocation = *text == 'b' ? 2 : 0;
        EXPECT_EQ(argParse(&pa, text, 1, ','), -1);
        EXPECT_STREQ(argError(&pa), *text == 'c' ? "Unknown parameter c" : "Unknown parameter a");
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

TEST(ArgAdd, DeclaresARecordAnewInItsPlace) {
    argsParse pa = {};
    argInfo first, second;
    int a = 0, b = 0;
    argAddint("a", &pa, &first, &a, 0, nullptr, nullptr, 0);
    argAddint("b", &pa, &second, &b, 0, nullptr, nullptr, 0);
    argAddint("c", &pa, &first, &a, 0, nullptr, nullptr, 0);
    EXPECT_EQ(argCount(&pa), 2);
    EXPECT_EQ(argParse(&pa, "c=1,b=2", 7, ','), 0);
    EXPECT_EQ(a * 10 + b, 12);
    argFree(&pa);
}

TEST(ArgAddFallback, TakesUnknownItemsThatNobodyWants) {
    argsParse pa = {};
    argInfo info;
    EXPECT_EQ(argAddFallback(&pa, &info, nullptr, nullptr), nullptr);
    EXPECT_EQ(argParse(&pa, "a=1", 3, ','), 0);
    argFree(&pa);
}

TEST(ArgInfo, PacksItsFlagsIntoOneWord) {
    argInfo info = {};
    info.kind = TYPE_pvoid;
    info.multiple = 1;
    info.handled = 0xABCD;
    u8 word = 0;
    static_assert(sizeof info == offsetof(argInfo, v) + 2 * sizeof word);
    memcpy(&word, reinterpret_cast<const char*>(&info) + offsetof(argInfo, v) + 8, 4);
    EXPECT_EQ(word, 8U | 2U << 8 | 0xABCDU << 11);
}
