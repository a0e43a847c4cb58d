// From a decimal number to the nearest double, for parsers that have read the digits themselves.
#ifndef UTIL_C_SHARED_DECIMAL_H
#define UTIL_C_SHARED_DECIMAL_H

#include "sharedinc/inttype.h"

constexpr int DECIMAL_DIGITS = 19;  // any number of that many digits fits a mantissa

// Sets `result` to the double nearest to mantissa * 10^exponent, ties to even. Returns false, and
// sets nothing, for what is better left to the platform: values near or beyond the ends of the
// range of normal doubles, and the rare one that 128 bits cannot decide.
bool decimal_to_double(u8 mantissa, int exponent, double* result);

#endif
