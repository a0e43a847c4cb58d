#include "util/export/strparse.h"
#include "support/plain_strparse.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>
#include <cfenv>
#include <clocale>
#include <cmath>
#include <random>

template <typename Value>
struct Case {
    const char* text;
    Value value;
    const char* error = nullptr;
};

// Every case starts with this value, which most failures leave.
constexpr int UNTOUCHED = 77;

template <typename Value>
static void check(bool (*parser)(const char*, Value*, const char**), const auto& cases) {
    for (const Case<Value>& c : cases) {
        const Parsed<Value> parsed = parse(parser, c.text, static_cast<Value>(UNTOUCHED));
        EXPECT_EQ(parsed.value, c.value) << c.text;
        EXPECT_STREQ(parsed.error, c.error) << c.text;
        Value value;
        EXPECT_EQ(parser(c.text, &value, nullptr), c.error == nullptr) << c.text;
    }
}

constexpr const char* NO_NUMBER = "could not parse number";
constexpr const char* BAD_SUFFIX = "illegal suffix";

const Case<size_t> SIZE_CASES[] = {
    {"64m", 67108864},
    {"1G", 1073741824},
    {" \t42", 42},
    {"+5", 5},
    {"0x400", 1024},
    {"0X1k", 1024},
    {"0x0x1", 1},
    {"0x-1", UINT64_MAX},  // the conversion takes a sign of its own
    {"10h", 16},
    {"10Hk", 16384},
    {"0x10h", 16},
    {"12kb", 12288},
    {"18446744073709551615", UINT64_MAX},
    {"16g", 1ULL << 34},
    {"5t", UNTOUCHED, BAD_SUFFIX},
    {"12 k", UNTOUCHED, BAD_SUFFIX},
    {"10hh", UNTOUCHED, BAD_SUFFIX},
    {"1\xE9", UNTOUCHED, BAD_SUFFIX},
    {"12b", UNTOUCHED, NO_NUMBER},
    {"ff", UNTOUCHED, NO_NUMBER},
    {"1eh", UNTOUCHED, NO_NUMBER},
    {"", UNTOUCHED, NO_NUMBER},
    {"  ", UNTOUCHED, NO_NUMBER},
    {"0x", UNTOUCHED, NO_NUMBER},
    {"h", UNTOUCHED, NO_NUMBER},
    {"-1", UNTOUCHED, "negative value not allowed"},
    {" -x", UNTOUCHED, "negative value not allowed"},
};

TEST(StrToSuffixSize, ScalesOrNamesTheFaultAndLeavesTheValue) {
    check<size_t>(strToSuffixSize, SIZE_CASES);
}

TEST(StrToSuffix, DiffersByTypeInSignsLettersAndWidth) {
    EXPECT_EQ(parse(strToSuffixLong, "-2k").value, -2048);
    EXPECT_EQ(parse(strToSuffixLong, "- 10h").value, -16);
    EXPECT_EQ(parse(strToSuffixLong, "--5").value, 5);
    EXPECT_EQ(parse(strToSuffixInt, "4g").value, 0);
    EXPECT_EQ(parse(strToSuffixInt, "2147483648").value, INT32_MIN);
    EXPECT_EQ(parse(strToSuffixUInt, "4294967297").value, 1U);
    const auto address = [](const char* text) {
        return reinterpret_cast<u8>(parse(strToSuffixAddress, text).value);
    };
    EXPECT_EQ(address("ff"), 255U);
    EXPECT_EQ(address("1e3"), 0x1e3U);
    EXPECT_EQ(address("1000"), 1000U);
    EXPECT_EQ(address("ak"), 10240U);
    EXPECT_EQ(address("1eh"), 0x1eU);
    EXPECT_EQ(address("+0x10"), 16U);
}

const Case<double> DOUBLE_CASES[] = {
    {"2.5", 2.5},
    {"1.5k", 1536},
    {"-.5e1Gx", -5.0 * (1 << 30)},
    {" 1e+", 1},
    {"0x1p4k", 16384},
    {"-inf", -HUGE_VAL},
    {"9792353653691471313e270", 9792353653691471313e270},  // 128 bits do not decide these
    {"-9313446463250210747e-188", -9313446463250210747e-188},
    {"1.5 k", 1.5, BAD_SUFFIX},
    {"1,5", 1, BAD_SUFFIX},
    {"x", UNTOUCHED, "illegal floating point value"},
    {".", UNTOUCHED, "illegal floating point value"},
    {"", UNTOUCHED, "illegal floating point value"},
};

TEST(StrToSuffixDouble, LeavesTheNumberBehindWhenItsSuffixIsWrong) {
    check<double>(strToSuffixDouble, DOUBLE_CASES);
}

const Case<nanotime> TIME_CASES[] = {
    {"500ms", 500000000},
    {"2h", 7200000000000},
    {"1d", 86400000000000},
    {"3m", 180000000000},
    {" 3 s", 3000000000},
    {"+7us", 7000},
    {"-5\tms", -5000000},
    {"5msx", 5000000},
    {"9ns", 9},
    {"0", 0},
    {"-0 ", 0},
    {"10", UNTOUCHED, "unit required"},
    {"ms", UNTOUCHED, "syntax error"},
    {"", UNTOUCHED, "syntax error"},
    {"5MS", UNTOUCHED, "illegal unit"},
    {"5sec", UNTOUCHED, "illegal unit"},
    {"0k", UNTOUCHED, "illegal unit"},
    {"5m s", 300000000000},
};

TEST(StrToSuffixNanoTime, NeedsAUnit) {
    check<nanotime>(strToSuffixNanoTime, TIME_CASES);
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
            ASSERT_STREQ(differing_parser(text.c_str()), nullptr) << "'" << text << "'";
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
    EXPECT_STREQ(parse(strToSuffixDouble, "1.5k").error, BAD_SUFFIX);
    compare_at_random(20000);
    setlocale(LC_NUMERIC, "C");
}

TEST(StrToBool, KnowsItsWords) {
    for (const char* text : {"", "1", "TRUE", "On"})
        EXPECT_TRUE(parse(strToBool, text, false).value) << text;
    for (const char* text : {"0", "False", "OFF"})
        EXPECT_FALSE(parse(strToBool, text, true).value) << text;
    for (const char* text : {"yes", " ", "01", "onn", "tru"}) {
        EXPECT_STREQ(parse(strToBool, text).error, "illegal boolean value") << text;
        EXPECT_TRUE(parse(strToBool, text, true).value) << text;
    }
}

TEST(StrSuffixToMultiplier, KnowsSixCharacters) {
    for (int c = -300; c <= 300; c++) {
        u8 multiplier = 77;
        const u8 expected = c > 0 && c < 128 ? plain_multiplier(static_cast<char>(c)) : 0;
        EXPECT_EQ(strSuffixToMultiplier(c, &multiplier), expected != 0) << c;
        EXPECT_EQ(multiplier, expected != 0 ? expected : 77) << c;
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
