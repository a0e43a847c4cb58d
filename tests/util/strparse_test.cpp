#include "util/export/strparse.h"
#include "support/number_texts.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>
#include <cfenv>
#include <clocale>
#include <cmath>
#include <random>
#include <vector>

template <typename Value>
struct Case {
    const char* text;
    Value value;
    const char* error = "";
};

// Every case starts with this value, which most failures leave.
constexpr long UNTOUCHED = 77;

struct Failures {
    const char* error;
    std::vector<const char*> texts;
};

template <typename Value>
static void check(Parser<Value>* parser, const auto& cases, const std::vector<Failures>& failures) {
    std::vector<Case<Value>> all(std::begin(cases), std::end(cases));
    for (const auto& [error, texts] : failures)
        for (const char* text : texts)
            all.push_back({text, (Value)UNTOUCHED, error});
    for (const Case<Value>& c : all) {
        const Parsed<Value> parsed = parse(parser, c.text, (Value)UNTOUCHED);
        EXPECT_EQ(parsed.value, c.value) << c.text;
        EXPECT_EQ(parsed.error, c.error) << c.text;
        Value value = {};
        EXPECT_EQ(parser(c.text, &value, nullptr), *c.error == '\0') << c.text;
    }
}

const Case<size_t> SIZE_CASES[] = {
    {"64m", 67108864},    {"1G", 1073741824},
    {" \t42", 42},        {"+5", 5},
    {"0x400", 1024},      {"0X1k", 1024},
    {"0x0x1", 1},         {"0x0xk", 0},
    {"0x-1", UINT64_MAX},  // the conversion takes a sign of its own
    {"10h", 16},          {"10Hk", 16384},
    {"0x10h", 16},        {"12kb", 12288},
    {"16g", 1ULL << 34},  {"18446744073709551615", UINT64_MAX},
};

TEST(StrToSuffix, ScalesOrNamesTheFaultAndLeavesTheValue) {
    check<size_t>(strToSuffixSize, SIZE_CASES,
                  {{"illegal suffix", {"5t", "12 k", "10hh", "1\xE9"}},
                   {"could not parse number", {"12b", "ff", "1eh", "", "  ", "0x", "h", "\xA0"}},
                   {"negative value not allowed", {"-1", " -x"}}});
    const Case<s8> longs[] = {{"-2k", -2048}, {"- 10h", -16}, {"--5", 5}};
    check<s8>(strToSuffixLong, longs, {{"could not parse number", {"-", "-b"}}});
    const Case<void*> addresses[] = {{"ff", (void*)255},    {"1e3", (void*)0x1e3},
                                     {"1000", (void*)1000}, {"ak", (void*)10240},
                                     {"1eh", (void*)0x1e},  {"+0x10", (void*)16}};
    check<void*>(strToSuffixAddress, addresses, {{"could not parse number", {"", "+ff", "xff"}}});
}

const Case<double> DOUBLE_CASES[] = {
    {"-.5e1Gx", -5.0 * (1 << 30)},
    {" 1e+", 1},
    {"0x1p4k", 16384},
    {"-inf", -HUGE_VAL},
    {"1.5e-308", 1.5e-308},  // below the normal doubles
    {"1e18446744073709551617", HUGE_VAL},
    {"9792353653691471313e270", 9792353653691471313e270},  // 128 bits do not decide these
    {"-9313446463250210747e-188", -9313446463250210747e-188},
    {"1.5 k", 1.5, "illegal suffix"},
    {"1,5", 1, "illegal suffix"},
    {"1f5", 1, "illegal suffix"},
};

TEST(StrToSuffixDouble, LeavesTheNumberBehindWhenItsSuffixIsWrong) {
    check<double>(strToSuffixDouble, DOUBLE_CASES,
                  {{"illegal floating point value", {"x", ".", ""}}});
}

TEST(StrToSuffixNanoTime, NeedsAUnit) {
    const Case<nanotime> times[] = {
        {" 9 ns", 9},         {"+7us", 7000},        {"-5\tms", -5000000},   {"3s", 3000000000},
        {"3m", 180000000000}, {"2h", 7200000000000}, {"1d", 86400000000000}, {"0", 0}};
    check<nanotime>(strToSuffixNanoTime, times,
                    {{"unit required", {"10"}},
                     {"syntax error", {"ms", ""}},
                     {"illegal unit", {"5MS", "5sec", "0k"}}});
}

static std::string characters(std::mt19937_64& random, size_t most) {
    static const std::string ALL = "0019xXeEpPfahHkKmMgtsudniN+-.,()_ \t\n\v\x85\xA0\xFF";
    std::string text;
    for (size_t left = random() % (most + 1); left > 0; left--)
        text += ALL[random() % ALL.size()];
    return text;
}

static std::string near_number(std::mt19937_64& random) {
    const u8 number = random() >> random() % 64;
    return characters(random, 3) + (random() % 2 == 0 ? std::to_string(number) : "") +
           characters(random, 4);
}

// Mantissas of up to 20 digits with a point anywhere, or near the middle between two doubles.
static std::string any_double(std::mt19937_64& random) {
    std::string text = std::to_string(random() >> random() % 60);
    if (random() % 4 == 0)
        text = std::to_string((1ULL << 53) + random() % 1000);
    if (random() % 2 == 0)
        text.insert(random() % text.size(), random() % 4 == 0 ? ".000" : ".");
    if (random() % 2 == 0)
        text += "e" + std::to_string(static_cast<int>(random() % 140) - 70);
    return (random() % 4 == 0 ? "-" : "") + text + (random() % 8 == 0 ? "m" : "");
}

static void compare_at_random(unsigned rounds) {
    std::mt19937_64 random(20260329);
    for (unsigned round = 0; round < rounds; round++)
        for (const std::string& text : {near_number(random), any_double(random)})
            ASSERT_TRUE(parsers_agree(text.c_str())) << "'" << text << "'";
}

TEST(StrToSuffix, AgreesWithThePlatformsScannerOnRandomText) {
    compare_at_random(300000);
}

TEST(StrToSuffixDouble, RoundsAsTheThreadAsksFor) {
    for (int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        std::fesetround(mode);
        compare_at_random(10000);
    }
    std::fesetround(FE_TONEAREST);
}

// A locale of the test's own, whose decimal point is a comma.
TEST(StrToSuffixDouble, TakesTheLocalesDecimalPoint) {
    TempFolder folder;
    const std::string name = folder.file("comma");
    std::ofstream(name + ".def") << "LC_NUMERIC\ndecimal_point \"<U002C>\"\nthousands_sep \"\"\n"
                                    "grouping -1\nEND LC_NUMERIC\n";
    // localedef complains of everything that is missing.
    (void)!system(("localedef -c -i '" + name + ".def' '" + name + "' >/dev/null 2>&1").c_str());
    setenv("LOCPATH", folder.file("").c_str(), 1);
    ASSERT_NE(setlocale(LC_NUMERIC, "comma"), nullptr);
    EXPECT_EQ(parse(strToSuffixDouble, "1,5k").value, 1536);
    EXPECT_EQ(parse(strToSuffixDouble, "1.5k").error, "illegal suffix");
    compare_at_random(20000);
    setlocale(LC_NUMERIC, "C");
}

TEST(StrToBool, KnowsItsWords) {
    for (const char* text : {"", "1", "TRUE", "On"})
        EXPECT_TRUE(parse(strToBool, text, false).value) << text;
    for (const char* text : {"0", "False", "OFF"})
        EXPECT_FALSE(parse(strToBool, text, true).value) << text;
    for (const char* text : {"yes", " ", "01", "onn", "tru"}) {
        EXPECT_EQ(parse(strToBool, text).error, "illegal boolean value") << text;
        EXPECT_TRUE(parse(strToBool, text, true).value) << text;
    }
}

TEST(StrSuffixToMultiplier, KnowsSixCharacters) {
    const std::string letters = "kKmMgG";
    for (int c = -300; c <= 300; c++) {
        u8 multiplier = 77;
        const size_t place = c > 0 && c < 128 ? letters.find(static_cast<char>(c)) : letters.npos;
        EXPECT_EQ(strSuffixToMultiplier(c, &multiplier), place != letters.npos) << c;
        EXPECT_EQ(multiplier, place != letters.npos ? 1024U << place / 2 * 10 : 77) << c;
    }
}

TEST(StrSplitAt, CutsInPlace) {
    char text[] = "name:va:lue", *left, *right;
    EXPECT_EQ(strSplitAt(text, &left, &right, ':'), 0);
    EXPECT_STREQ(left, "name");
    EXPECT_STREQ(right, "va:lue");
    for (int absent : {':', '\0'}) {
        EXPECT_EQ(strSplitAt(text, &left, &right, absent), 0);
        EXPECT_EQ(left, text);
        EXPECT_EQ(right, nullptr);
    }
}

TEST(StrStartsWith, ComparesCharacters) {
    EXPECT_TRUE(strStartsWith("name", ""));
    EXPECT_TRUE(strStartsWith("name", "na"));
    EXPECT_FALSE(strStartsWith("na", "name"));
    EXPECT_FALSE(strStartsWith("name", "Na"));
}
