// Scaled-down numbers. The number and its suffix come from the same choice of unit, so that they
// always agree.

#include "util/export/scaled_printfmt.h"

struct TimeUnit {
    nanotime nanos;
    const char* suffix;
};

constexpr TimeUnit SECONDS = {1'000'000'000, "s"};
constexpr TimeUnit TIME_UNITS[] = {SECONDS, {1'000'000, "ms"}, {1'000, "us"}};

static TimeUnit time_unit(nanotime n) {
    if (n == 0)
        return SECONDS;
    for (const TimeUnit& unit : TIME_UNITS)
        if (n >= unit.nanos && n % unit.nanos == 0)
            return unit;
    return {1, "ns"};
}

nanotime scaledownNanotime(nanotime n) {
    const TimeUnit unit = time_unit(n);
    if (unit.nanos == 1)
        return n;
    // In double precision, as in every release: beyond 2^53 ns the last digits are rounded.
    return static_cast<nanotime>(static_cast<double>(n) / static_cast<double>(unit.nanos));
}

const char* scaledDownNanotimeSuffix(nanotime n) {
    return time_unit(n).suffix;
}

struct BinaryUnit {
    int shift;
    const char* suffix;
};

static BinaryUnit binary_unit(u8 x) {
    constexpr BinaryUnit UNITS[] = {{30, "G"}, {20, "M"}, {10, "K"}};
    for (const BinaryUnit& unit : UNITS)
        if (x != 0 && x % (1ULL << unit.shift) == 0)
            return unit;
    return {0, ""};
}

u8 scaledownU8(u8 x) {
    return x >> binary_unit(x).shift;
}

const char* scaledDownU8Suffix(u8 x) {
    return binary_unit(x).suffix;
}

size_t scaledownSize(size_t x) {
    return scaledownU8(x);
}

const char* scaledDownSizeSuffix(size_t x) {
    return scaledDownU8Suffix(x);
}

size_t scaledownSizeFixed(size_t x, size_t scale_factor) {
    return scale_factor == 0 ? x : (x + scale_factor / 2) / scale_factor;
}
