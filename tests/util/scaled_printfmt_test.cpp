#include "util/export/scaled_printfmt.h"

#include <gtest/gtest.h>

template <typename Number>
struct Case {
    Number number, shown;
    const char* suffix;
};

const Case<nanotime> TIMES[] = {
    {0, 0, "s"},
    {999, 999, "ns"},
    {1000, 1, "us"},
    {1500000, 1500, "us"},
    {2500000000, 2500, "ms"},
    {86400000000000, 86400, "s"},
    {-2000000000, -2000000000, "ns"},
    {INT64_MIN, INT64_MIN, "ns"},
    {9007199254740993000, 9007199254740994, "us"}};  // formed in double precision

const Case<u8> SIZES[] = {{0, 0, ""},
                          {1023, 1023, ""},
                          {1024, 1, "K"},
                          {1536, 1536, ""},
                          {3145728, 3, "M"},
                          {1074790400, 1025, "M"},
                          {1ULL << 40, 1024, "G"},
                          {UINT64_MAX, UINT64_MAX, ""}};

TEST(ScaledDown, PairsTheNumberWithItsUnitAndRoundsHalvesUp) {
    for (const auto& [n, shown, suffix] : TIMES) {
        EXPECT_EQ(scaledownNanotime(n), shown);
        EXPECT_STREQ(scaledDownNanotimeSuffix(n), suffix) << n;
    }
    for (const auto& [n, shown, suffix] : SIZES) {
        EXPECT_TRUE(scaledownU8(n) == shown && scaledownSize(n) == shown) << n;
        EXPECT_STREQ(scaledDownU8Suffix(n), suffix) << n;
        EXPECT_STREQ(scaledDownSizeSuffix(n), suffix) << n;
    }
    EXPECT_TRUE(scaledownSizeFixed(1535, 1024) == 1 && scaledownSizeFixed(1536, 1024) == 2);
    EXPECT_TRUE(scaledownSizeFixed(511, 1024) == 0 && scaledownSizeFixed(1, 3) == 0);
    EXPECT_TRUE(scaledownSizeFixed(2, 3) == 1 && scaledownSizeFixed(7, 0) == 7);
}
