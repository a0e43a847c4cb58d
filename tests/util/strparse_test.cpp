#include "util/export/strparse.h"
#include "support/number_texts.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>
#include <cfenv>
#include <clocale>
#include <cmath>
#include <random>
#include <vector>
#if defined(__x86_64__)
#include <pmmintrin.h>
#endif

template <typename Value>
struct Case {
    const char* text;
    Value value;
    const char* error = "";
};

struct Failures {
    const char* error;
    std::vector<const char*> texts;
};

// Every case starts with the value 77, which most failures leave.
template <typename Value>
static void check(Parser<Value>* parser, std::vector<Case<Value>> cases,
                  const std::vector<Failures>& failures) {
    for (const auto& [error, texts] : failures)
        for (const char* text : texts)
            cases.push_back({text, (Value)77L, error});
    for (const auto& [text, value, error] : cases) {
        const Parsed expected = {bits_of(value), error};
        EXPECT_EQ(parse(parser, text, (Value)77L), expected) << text;
        Value other = {};
        EXPECT_EQ(parser(text, &other, nullptr), *error == '\0') << text;
        EXPECT_TRUE(*error != '\0' || bits_of(other) == expected.first) << text;
    }
}

const std::vector<Case<size_t>> SIZES = {{"64m", 67108864},
                                         {"1G", 1073741824},
                                         {" \t42", 42},
                                         {"+5", 5},
                                         {"0x400", 1024},
                                         {"0X1k", 1024},
                                         {"0x0x1", 1},
                                         {"0x00000000000000010", 16},
                                         {"0x0xk", 0},
                                         {"0x-1", UINT64_MAX},
                                         {"10h", 16},
                                         {"10Hk", 16384},
                                         {"0x10h", 16},
                                         {"12kb", 12288},
                                         {"16g", 1ULL << 34},
                                         {"18446744073709551615", UINT64_MAX},
                                         {"18446744073709551616", UINT64_MAX},
                                         {"0x10000000000000000", UINT64_MAX}};

const std::vector<Case<void*>> ADDRESSES = {{"ff", (void*)255},    {"1e3", (void*)0x1e3},
                                            {"1000", (void*)1000}, {"ak", (void*)10240},
                                            {"1eh", (void*)0x1e},  {"+0x10", (void*)16}};

const std::vector<Case<nanotime>> TIMES = {
    {" 9 ns", 9},         {"+7us", 7000},        {"-5\tms", -5000000},   {"3s", 3000000000},
    {"3m", 180000000000}, {"2h", 7200000000000}, {"1d", 86400000000000}, {"0", 0}};

TEST(StrToSuffix, ScalesOrNamesTheFaultAndLeavesTheValue) {
    check(strToSuffixSize, SIZES,
          {{"illegal suffix", {"5t", "12 k", "10hh", "1\xE9"}},
           {"could not parse number", {"12b", "ff", "1eh", "", "  ", "0x", "h", "\xA0"}},
           {"negative value not allowed", {"-1", " -x"}}});
    check<s8>(strToSuffixLong, {{"-2k", -2048}, {"- 10h", -16}, {"--5", 5}},
              {{"could not parse number", {"-", "-b"}}});
    check(strToSuffixAddress, ADDRESSES, {{"could not parse number", {"", "+ff", "xff"}}});
    check(strToSuffixNanoTime, TIMES,
          {{"unit required", {"10"}},
           {"syntax error", {"ms", ""}},
           {"illegal unit", {"5MS", "5sec", "0k"}}});
}

TEST(StrToBool, KnowsItsWords) {
    check<bool>(strToBool, {{"", true}, {"1", true}, {"TRUE", true}, {"On", true}}, {});
    check<bool>(strToBool, {{"0", false}, {"False", false}, {"OFF", false}},
                {{"illegal boolean value", {"yes", " ", "01", "onn", "tru"}}});
}

const std::vector<Case<double>> DOUBLES = {
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
    check(strToSuffixDouble, DOUBLES, {{"illegal floating point value", {"x", ".", ""}}});
}

// In a thread that takes subnormal numbers for 0, a product would be 0.
#if defined(__x86_64__)
TEST(StrToSuffixDouble, ReadsSubnormalNumbersInEveryThread) {
    _MM_SET_DENORMALS_ZERO_MODE(_MM_DENORMALS_ZERO_ON);
    const Parsed subnormal = parse(strToSuffixDouble, "1.5e-308");
    _MM_SET_DENORMALS_ZERO_MODE(_MM_DENORMALS_ZERO_OFF);
    EXPECT_EQ(subnormal, Parsed(bits_of(1.5e-308), ""));
}
#endif

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
    for (std::string text; rounds > 0; rounds--)
        ASSERT_TRUE(parsers_agree(text = any_double(random))) << "'" << text << "'";
}

TEST(StrToSuffixDouble, RoundsAsTheThreadAsksFor) {
    for (int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO, FE_TONEAREST}) {
        std::fesetround(mode);
        compare_at_random(mode == FE_TONEAREST ? 300000 : 10000);
    }
}

// A locale of the test's own, whose decimal point is a comma.
TEST(StrToSuffixDouble, TakesTheLocalesDecimalPoint) {
    TempFolder folder;
    const std::string name = folder.file("comma");
    std::ofstream(name + ".def") << "LC_NUMERIC\ndecimal_point \"<U002C>\"\nthousands_sep \"\"\n"
                                    "grouping -1\nEND LC_NUMERIC\n";
    // localedef prints a warning for everything that is missing.
    (void)!system(("localedef -c -i '" + name + ".def' '" + name + "' >/dev/null 2>&1").c_str());
    setenv("LOCPATH", folder.file("").c_str(), 1);
    ASSERT_NE(setlocale(LC_NUMERIC, "comma"), nullptr);
    EXPECT_EQ(parse(strToSuffixDouble, "1,5k"), Parsed(bits_of(1536.0), ""));
    EXPECT_EQ(parse(strToSuffixDouble, "1.5k").second, "illegal suffix");
    compare_at_random(20000);
    setlocale(LC_NUMERIC, "C");
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
