// Scaled numbers: a size or a time for a message, in the largest unit in which it is a whole
// number.
//
// Each pair gives the number and its suffix, to be printed side by side:
//
//     value             number and suffix
//     67108864          64 "M"
//     1536              1536 ""
//     2500000000 ns     2500 "ms"
//
// Suffixes are constant strings, never null. The functions keep no state and may be called from any
// thread.
#ifndef UTIL_EXPORT_SCALED_PRINTFMT_H
#define UTIL_EXPORT_SCALED_PRINTFMT_H

#include "osal/export/osal_timing_types.h"
#include "sharedinc/inttype.h"

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

// The number and the suffix of a time: "s", "ms", "us" or "ns". Zero is 0 "s"; negative times stay
// in "ns".
nanotime scaledownNanotime(nanotime n);
const char* scaledDownNanotimeSuffix(nanotime n);

// The number and the suffix of an integer: "G", "M", "K" for powers of 1024, or "" when it is no
// multiple of 1024 or is 0.
u8 scaledownU8(u8 x);
const char* scaledDownU8Suffix(u8 x);

// The number and the suffix of a size, as those of an integer.
size_t scaledownSize(size_t x);
const char* scaledDownSizeSuffix(size_t x);

// The size `x` divided by `scale_factor`, rounded to the nearest integer, halves up. A factor of 0
// counts as 1. The sum for rounding wraps around when it exceeds the largest size.
size_t scaledownSizeFixed(size_t x, size_t scale_factor);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
