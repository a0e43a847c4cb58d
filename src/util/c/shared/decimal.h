// From a decimal number to the nearest double, for parsers that have read the digits themselves
// and leave to the platform what is unusual.
#ifndef UTIL_C_SHARED_DECIMAL_H
#define UTIL_C_SHARED_DECIMAL_H

#include "sharedinc/inttype.h"

constexpr int DECIMAL_DIGITS = 19;  // any number of that many digits fits a mantissa

// The platform's conversions take the calling thread's locale's decimal point. True when that is
// the point.
bool decimal_point_is_usual();

// decimal_to_double() for mantissas and powers that doubles do not hold exactly.
bool decimal_by_product(bool negative, u8 mantissa, s8 exponent, double* result);

// The powers of ten that a double holds exactly.
inline constexpr double EXACT_POWERS[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                          1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                          1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// Sets `result` to the double nearest to mantissa * 10^exponent with its sign, ties to even.
// Returns false, and sets nothing, for what is better left to the platform: values near or beyond
// the ends of the range of normal doubles, and the rare one that 128 bits cannot decide.
static inline bool decimal_to_double(bool negative, u8 mantissa, s8 exponent, double* result) {
    constexpr int SIGNIFICAND_BITS = 53;
    constexpr s8 MAX_EXACT_POWER = 22;
    if (mantissa >> SIGNIFICAND_BITS != 0 || exponent < -MAX_EXACT_POWER ||
        exponent > MAX_EXACT_POWER)
        return decimal_by_product(negative, mantissa, exponent, result);
    // One operation on two exact numbers rounds once, and in the current mode.
    const auto magnitude = static_cast<double>(static_cast<s8>(mantissa));
    const double exact = negative ? -magnitude : magnitude;
    *result = exponent < 0 ? exact / EXACT_POWERS[-exponent] : exact * EXACT_POWERS[exponent];
    return true;
}

#endif
