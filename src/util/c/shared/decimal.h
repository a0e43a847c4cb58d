// Converts a decimal number to the nearest double, for parsers that have read the digits
// themselves. What is declined here they leave to the platform.
//
// Numbers that doubles do not hold exactly take one or two multiplications: the mantissa times the
// leading 128 bits of the power of five. The power of two is added to the exponent. The product's
// upper bits are the result, unless they are so close to the middle between two doubles that the
// truncated bits of the power could matter. The bounds are those of Lemire, "Number Parsing at a
// Gigabyte per Second" (2021), whose proof covers all 64-bit mantissas.
//
// In a header and always inlined, because a call would cost a parser a tenth of its time.
#ifndef UTIL_C_SHARED_DECIMAL_H
#define UTIL_C_SHARED_DECIMAL_H

#include "sharedinc/inttype.h"

#include <bit>

// The decimal point of the calling thread's locale, which the platform's conversions expect.
const char* decimal_point();
bool locale_has_point();

// True when that locale has only the characters of ASCII, as "C" has.
bool locale_is_ascii();

__extension__ using uint128 = unsigned __int128;

constexpr int MIN_POWER = -342;
constexpr int MAX_POWER = 308;

// The leading 128 bits of a power of five.
struct PowerOfFive {
    u8 high, low;
};

struct PowersOfFive {
    PowerOfFive of[MAX_POWER - MIN_POWER + 1];
};

extern const PowersOfFive POWERS_OF_FIVE;

// The powers of ten that a double holds exactly.
inline constexpr double EXACT_POWERS[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                          1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                          1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

constexpr int STORED_BITS = 52;  // of a double's significand
constexpr int EXTRA_BITS = 3;    // implicit bit, rounding bit, a product's possible leading zero

// The leading 128 bits of the product. The upper 64 are right unless the lower 64 are all ones. The
// second half of the power is needed only when it could carry into the result's bits.
static inline uint128 decimal_product(u8 mantissa, const PowerOfFive& power) {
    constexpr u8 BELOW_RESULT = ~static_cast<u8>(0) >> (STORED_BITS + EXTRA_BITS);
    uint128 result = static_cast<uint128>(mantissa) * power.high;
    if ((static_cast<u8>(result >> 64) & BELOW_RESULT) == BELOW_RESULT)
        result += static_cast<uint128>(mantissa) * power.low >> 64;
    return result;
}

// Tests with two additions, because reading the processor's rounding mode takes longer.
static inline bool rounds_to_nearest() {
    static const volatile float tiny = 0x1p-60F;
    return 1.0F + tiny == 1.0F - tiny;
}

// decimal_to_double() for mantissas and powers that doubles do not hold exactly.
[[gnu::always_inline]] static inline bool decimal_by_product(bool negative, u8 mantissa,
                                                             s8 exponent, double* result) {
    constexpr int EXPONENT_BIAS = 1023, INFINITE_EXPONENT = 0x7FF;
    // Between these powers a product may be exact, and what looks like a tie is one.
    constexpr s8 MIN_TIE_POWER = -4, MAX_TIE_POWER = 23;
    // Between these powers, 128 bits of the power of five are enough for every product.
    constexpr s8 MIN_KNOWN_POWER = -27, MAX_KNOWN_POWER = 55;

    if (mantissa == 0 || exponent < MIN_POWER || exponent > MAX_POWER || !rounds_to_nearest())
        return false;
    const int zeros = std::countl_zero(mantissa);
    const uint128 bits =
        decimal_product(mantissa << zeros, POWERS_OF_FIVE.of[exponent - MIN_POWER]);
    const u8 high = static_cast<u8>(bits >> 64), low = static_cast<u8>(bits);
    if (low == ~static_cast<u8>(0) && (exponent < MIN_KNOWN_POWER || exponent > MAX_KNOWN_POWER))
        return false;

    const int upper_bit = static_cast<int>(high >> 63);
    const int shift = upper_bit + 64 - STORED_BITS - EXTRA_BITS;
    u8 significand = high >> shift;
    // floor(log2(10^exponent)), exact for every power in the table.
    const int binary_exponent = static_cast<int>((217706 * exponent) >> 16);
    int biased = binary_exponent + 63 + upper_bit - zeros + EXPONENT_BIAS;
    if (biased <= 0)
        return false;
    const bool tie = low <= 1 && (significand & 3) == 1 && significand << shift == high;
    if (tie && exponent >= MIN_TIE_POWER && exponent <= MAX_TIE_POWER)
        significand--;
    significand = (significand + 1) >> 1;
    if (significand == static_cast<u8>(2) << STORED_BITS) {
        significand >>= 1;
        biased++;
    }
    if (biased >= INFINITE_EXPONENT)
        return false;
    significand &= (static_cast<u8>(1) << STORED_BITS) - 1;
    *result = std::bit_cast<double>(u8{negative} << 63 | static_cast<u8>(biased) << STORED_BITS |
                                    significand);
    return true;
}

// Sets `result` to the double nearest to mantissa * 10^exponent with its sign, ties to even.
// Returns false, and sets nothing, for what is left to the platform: values near or beyond the
// limits of normal doubles, and the rare ones that 128 bits cannot decide.
[[gnu::always_inline]] static inline bool decimal_to_double(bool negative, u8 mantissa, s8 exponent,
                                                            double* result) {
    // Doubles hold integers up to 2^53 exactly. The limit is lower, because numbers of 16 and 17
    // digits lie on both sides of 2^53, and a branch on that would be mispredicted.
    constexpr u8 EXACT_MANTISSAS = 1'000'000'000'000'000;
    constexpr s8 MAX_EXACT_POWER = 22;
    if (mantissa >= EXACT_MANTISSAS || exponent < -MAX_EXACT_POWER || exponent > MAX_EXACT_POWER)
        return decimal_by_product(negative, mantissa, exponent, result);
    // One operation on two exact numbers rounds once, and in the current mode.
    const auto magnitude = static_cast<double>(static_cast<s8>(mantissa));
    const double exact = negative ? -magnitude : magnitude;
    *result = exponent < 0 ? exact / EXACT_POWERS[-exponent] : exact * EXACT_POWERS[exponent];
    return true;
}

#endif
