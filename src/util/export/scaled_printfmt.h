// Sizes and times in the largest unit in which the number is still whole, for messages.
//
// Each pair gives the number and the suffix for the same input, to be printed side by side:
// 67108864 is 64 and "M", 2500000000 ns is 2500 and "ms". Suffixes are constant strings, never
// null. All functions are pure and may be called from any thread.
#ifndef UTIL_EXPORT_SCALED_PRINTFMT_H
#define UTIL_EXPORT_SCALED_PRINTFMT_H

#include "osal/export/osal_timing_types.h"
#include "sharedinc/inttype.h"

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

// Times: "s", "ms", "us" or "ns". Zero is 0 "s"; negative times stay in "ns".
nanotime scaledownNanotime(nanotime n);
const char* scaledDownNanotimeSuffix(nanotime n);

// Powers of 1024: "G", "M", "K", or "" when the number is no multiple of 1024.
u8 scaledownU8(u8 x);
const char* scaledDownU8Suffix(u8 x);

// The same for sizes.
size_t scaledownSize(size_t x);
const char* scaledDownSizeSuffix(size_t x);

// `x` divided by `scale_factor`, rounded to nearest, halves up. A factor of 0 counts as 1, and a
// sum that passes the largest size wraps around.
size_t scaledownSizeFixed(size_t x, size_t scale_factor);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
