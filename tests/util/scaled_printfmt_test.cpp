#include "util/export/scaled_printfmt.h"

#include <gtest/gtest.h>

struct TimeCase {
    nanotime n, value;
    const char* suffix;
};

const TimeCase TIME_CASES[] = {
    {0, 0, "s"},
    {999, 999, "ns"},
    {1000, 1, "us"},
    {1500000, 1500, "us"},
    {2500000000, 2500, "ms"},
    {86400000000000, 86400, "s"},
    {-2000000000, -2000000000, "ns"},
    {INT64_MIN, INT64_MIN, "ns"},
    {9007199254740993000, 9007199254740994, "us"},  // the quotient is formed in double precision
};

struct SizeCase {
    u8 x, value;
    const char* suffix;
};

const SizeCase SIZE_CASES[] = {
    {0, 0, ""},
    {1023, 1023, ""},
    {1024, 1, "K"},
    {1536, 1536, ""},
    {3145728, 3, "M"},
    {1074790400, 1025, "M"},
    {1ULL << 40, 1024, "G"},
    {UINT64_MAX, UINT64_MAX, ""},
};

TEST(ScaledDown, PairsTheNumberWithItsUnit) {
    for (const TimeCase& c : TIME_CASES) {
        EXPECT_EQ(scaledownNanotime(c.n), c.value);
        EXPECT_STREQ(scaledDownNanotimeSuffix(c.n), c.suffix) << c.n;
    }
    for (const SizeCase& c : SIZE_CASES) {
        EXPECT_EQ(scaledownU8(c.x), c.value);
        EXPECT_EQ(scaledownSize(c.x), c.value);
        EXPECT_STREQ(scaledDownU8Suffix(c.x), c.suffix) << c.x;
        EXPECT_STREQ(scaledDownSizeSuffix(c.x), c.suffix) << c.x;
    }
}

TEST(ScaledDown, RoundsHalvesUp) {
    EXPECT_EQ(scaledownSizeFixed(1535, 1024), 1U);
    EXPECT_EQ(scaledownSizeFixed(1536, 1024), 2U);
    EXPECT_EQ(scaledownSizeFixed(511, 1024), 0U);
    EXPECT_EQ(scaledownSizeFixed(2, 3), 1U);
    EXPECT_EQ(scaledownSizeFixed(1, 3), 0U);
    EXPECT_EQ(scaledownSizeFixed(7, 0), 7U);
}
