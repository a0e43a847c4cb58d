#include "util/export/arguments.h"
#include "osal/export/osal_msmalloc.h"
#include "support/plain_arguments.h"
#include "support/platform.h"

#include <gtest/gtest.h>
#include <random>

struct WalkCase {
    const char* text;
    Items items;
    char delim = ',';
};

const WalkCase WALK_CASES[] = {
    {",,,", {}},
    {",a=1,,b=2,", {{"a", "1"}, {"b", "2"}}},
    {"verbose,a=,=x", {{"verbose", ""}, {"a", ""}, {"", "x"}}},
    {" a = 1,b=c=d", {{" a ", " 1"}, {"b", "c=d"}}},
    {"a='x,y',b=\"it's\"", {{"a", "x,y"}, {"b", "it's"}}},
    {"a='it\\'s',b", {{"a", "it\\'s"}, {"b", ""}}},
    {"a='x\\\\',b'", {{"a", "x\\\\',b"}}},  // a backslash counts even behind another one
    {"a='x'tail,b", {{"a", "x"}, {"b", ""}}},
    {"a='open,b=2", {{"a", "open,b=2"}}},
    {"a=x'y,z='", {{"a", "x'y"}, {"z", ""}}},  // quotes count only at the start of a value
    {"x=1  y=2", {{"x", "1"}, {"y", "2"}}, ' '},
    {"a='b'c'd", {{"a", "b"}, {"c", ""}, {"d", ""}}, '\''},
};

// The text is copied to a block of just its size, for the address sanitizer to watch its end.
static Items walk(const std::string& text, char delim) {
    const std::vector<char> exact(text.begin(), text.end());
    Items items;
    ArgIter iter;
    argIterInit(&iter, exact.data(), exact.size(), delim);
    while (!argIterDone(&iter)) {
        argIterNext(&iter);
        items.emplace_back(std::string(iter.name, iter.n_len), std::string(iter.value, iter.v_len));
    }
    argIterNext(&iter);  // stays at the end
    EXPECT_TRUE(argIterDone(&iter) && iter.n_len + iter.v_len == 0);
    return items;
}

TEST(ArgIter, SplitsTextIntoItems) {
    for (const WalkCase& c : WALK_CASES) {
        EXPECT_EQ(walk(c.text, c.delim), c.items) << c.text;
        EXPECT_EQ(plain_walk(c.text, c.delim), c.items) << c.text;
    }
}

// Nobody should ask for it, and what the items are nobody says.
TEST(ArgIter, StaysWithinTheTextWhenTheDelimiterIsAnEqualsSign) {
    for (size_t length = 0; length < 70; length++)
        for (const auto& [name, value] : walk("a=b=" + std::string(length, 'c') + "=d", '='))
            EXPECT_LT(name.size() + value.size(), length + 6);
}

TEST(ArgIter, AgreesWithThePlainWalkOnRandomText) {
    std::mt19937 random(20260329);
    const std::string alphabet = "abcdefgh=,='\"\\ \xff";
    for (int round = 0; round < 50000; round++) {
        std::string text(random() % 80, ' ');
        for (char& c : text)
            c = alphabet[random() % alphabet.size()];
        const char delim = "\",' "[random() % 4];
        ASSERT_EQ(walk(text, delim), plain_walk(text, delim)) << "'" << text << "' at " << delim;
    }
}
