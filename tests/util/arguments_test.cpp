#include "util/export/arguments.h"
#include "osal/export/osal_msmalloc.h"
#include "support/platform.h"

#include <gtest/gtest.h>
#include <random>

using Items = std::vector<std::pair<std::string, std::string>>;

struct WalkCase {
    const char* text;
    Items items;
    char delim = ',';
};

const WalkCase WALK_CASES[] = {
    {"", {}},
    {",,,", {}},
    {",a=1,,b=2,", {{"a", "1"}, {"b", "2"}}},
    {"verbose", {{"verbose", ""}}},
    {"a=", {{"a", ""}}},
    {"=x", {{"", "x"}}},
    {"=", {{"", ""}}},
    {"a=b=c", {{"a", "b=c"}}},
    {"a,b=c", {{"a", ""}, {"b", "c"}}},
    {" a = 1", {{" a ", " 1"}}},
    {"a='x,y',b=2", {{"a", "x,y"}, {"b", "2"}}},
    {"a=\"x,y\",b=2", {{"a", "x,y"}, {"b", "2"}}},
    {"a=\"it's\"", {{"a", "it's"}}},
    {"a='it\\'s',b", {{"a", "it\\'s"}, {"b", ""}}},
    {"a='x\\\\',b'", {{"a", "x\\\\',b"}}},  // a backslash counts even behind another one
    {"a='x'tail,b", {{"a", "x"}, {"b", ""}}},
    {"a='open,b=2", {{"a", "open,b=2"}}},
    {"a='", {{"a", ""}}},
    {"a='',b", {{"a", ""}, {"b", ""}}},
    {"a=x'y,z'", {{"a", "x'y"}, {"z'", ""}}},  // quotes count only at the start of a value
    {"x=1  y=2", {{"x", "1"}, {"y", "2"}}, ' '},
    {"a='b'c'd", {{"a", "b"}, {"c", ""}, {"d", ""}}, '\''},
    {"a_name_longer_than_a_block=a value longer than one,next",
     {{"a_name_longer_than_a_block", "a value longer than one"}, {"next", ""}}},
};

static Items walk(const std::string& text, char delim) {
    Items items;
    ArgIter iter;
    argIterInit(&iter, text.data(), text.size(), delim);
    while (!argIterDone(&iter)) {
        argIterNext(&iter);
        items.emplace_back(std::string(iter.name, iter.n_len), std::string(iter.value, iter.v_len));
    }
    return items;
}

TEST(ArgIter, SplitsTextIntoItems) {
    for (const WalkCase& c : WALK_CASES)
        EXPECT_EQ(walk(c.text, c.delim), c.items) << c.text;
}

TEST(ArgIter, StaysWithinTheGivenLength) {
    EXPECT_EQ(walk(std::string("a=1,b=2", 3), ','), (Items{{"a", "1"}}));
    // The text ends at a block boundary of unreadable memory under the address sanitizer.
    for (size_t length = 0; length < 70; length++) {
        const std::vector<char> text(length, 'n');
        ArgIter iter;
        argIterInit(&iter, text.data(), text.size(), ',');
        argIterNext(&iter);
        EXPECT_EQ(iter.n_len, length);
    }
}

TEST(ArgIter, StaysDoneAfterTheEnd) {
    ArgIter iter;
    argIterInitDefault(&iter, "a=1");
    EXPECT_EQ(iter.name, nullptr);
    argIterNext(&iter);
    argIterNext(&iter);
    EXPECT_TRUE(argIterDone(&iter));
    EXPECT_EQ(iter.n_len + iter.v_len, 0U);
    EXPECT_EQ(iter.args, iter.end);
}

// One character at a time, one rule after the other.
static Items plain_walk(const std::string& text, char delim) {
    Items items;
    const size_t end = text.size();
    auto next = [&](size_t p, char c) { return std::min(text.find(c, p), end); };
    size_t p = 0;
    while (true) {
        while (p < end && text[p] == delim)
            p++;
        if (p >= end)
            return items;
        const size_t d = next(p, delim);
        const size_t e = next(p, '=');
        if (e == end || e > d) {
            items.emplace_back(text.substr(p, d - p), "");
            p = d;
            continue;
        }
        size_t value = e + 1;
        size_t stop = d;
        if (value < end && (text[value] == '"' || text[value] == '\'')) {
            const char quote = text[value++];
            stop = next(value, quote);
            while (stop < end && text[stop - 1] == '\\')
                stop = next(stop + 1, quote);
        }
        items.emplace_back(text.substr(p, e - p), text.substr(value, stop - value));
        p = next(stop, delim);
    }
}

TEST(ArgIter, AgreesWithThePlainWalkOnRandomText) {
    std::mt19937 random(20260329);
    const std::string alphabet = "ab=,,='\"\\ \xff";
    for (int round = 0; round < 20000; round++) {
        std::string text(random() % 60, ' ');
        for (char& c : text)
            c = alphabet[random() % alphabet.size()];
        const char delim = "\",' "[random() % 4];
        ASSERT_EQ(walk(text, delim), plain_walk(text, delim)) << "'" << text << "' at " << delim;
    }
}

TEST(ArgIterGetNext, HandsOutCopies) {
    platform = Platform{};
    ArgIter iter;
    argIterInitDefault(&iter, "verbose,a='1,2'");
    char* name;
    char* value;
    for (const auto& [expected_name, expected_value] : Items{{"verbose", ""}, {"a", "1,2"}}) {
        ASSERT_TRUE(argIterGetNext(&iter, &name, &value));
        EXPECT_EQ(name, expected_name);
        EXPECT_EQ(value, expected_value);
        gsFree(name);
        gsFree(value);
    }
    char* const kept = name;
    EXPECT_FALSE(argIterGetNext(&iter, &name, &value));
    EXPECT_EQ(name, kept);
    EXPECT_EQ(platform.live_blocks, 0);
}

TEST(ArgIterGetNext, LosesTheItemButNoMemoryWhenACopyFails) {
    for (size_t failing : {1, 2}) {
        platform = Platform{};
        platform.failing_allocation = failing;
        ArgIter iter;
        argIterInitDefault(&iter, "a=1,b=2");
        char* name = nullptr;
        char* value = nullptr;
        EXPECT_FALSE(argIterGetNext(&iter, &name, &value));
        EXPECT_EQ(name, nullptr);
        EXPECT_EQ(value, nullptr);
        EXPECT_EQ(platform.live_blocks, 0);
        ASSERT_TRUE(argIterGetNext(&iter, &name, &value));
        EXPECT_STREQ(name, "b");
        gsFree(name);
        gsFree(value);
    }
}
