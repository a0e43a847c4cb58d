#include "util/export/scaled_printfmt.h"

#include <gtest/gtest.h>

TEST(ScaledDown, PairsTheNumberWithItsUnitAndRoundsHalvesUp) {
    const std::tuple<nanotime, nanotime, const char*> TIMES[] = {
        {0, 0, "s"},          {999, 999, "ns"},         {1000, 1, "us"},       {15000, 15, "us"},
        {-1000, -1000, "ns"}, {2500000000, 2500, "ms"}, {60000000000, 60, "s"}};
    for (const auto& [n, shown, suffix] : TIMES) {
        EXPECT_EQ(scaledownNanotime(n), shown);
        EXPECT_STREQ(scaledDownNanotimeSuffix(n), suffix) << n;
    }
    EXPECT_EQ(scaledownNanotime(9007199254740993000), 9007199254740994);  // in double precision
    const std::tuple<u8, u8, const char*> SIZES[] = {
        {0, 0, ""},        {1023, 1023, ""},        {1536, 1536, ""},        {1U << 10, 1, "K"},
        {3145728, 3, "M"}, {1074790400, 1025, "M"}, {1ULL << 40, 1024, "G"}, {~0ULL, ~0ULL, ""}};
    for (const auto& [n, shown, suffix] : SIZES) {
        EXPECT_TRUE(scaledownU8(n) == shown && scaledownSize(n) == shown) << n;
        EXPECT_STREQ(scaledDownU8Suffix(n), suffix) << n;
        EXPECT_STREQ(scaledDownSizeSuffix(n), suffix) << n;
    }
    const size_t FIXED[][3] = {{1535, 1024, 1}, {1536, 1024, 2}, {511, 1024, 0},
                               {1, 3, 0},       {2, 3, 1},       {7, 0, 7}};
    for (const auto& [n, factor, shown] : FIXED)
        EXPECT_EQ(scaledownSizeFixed(n, factor), shown) << n;
}
