// Numbers, durations and booleans from text, as people type them in option values.
//
// Every parser returns true with the value stored, or false with the reason in `*error_msg`, a
// constant string that nobody frees. `error_msg` may be null and is written only on failure. The
// text is terminated and may not be null. All functions keep no state, allocate nothing (but what
// the C library's scanner takes for a number of more than a thousand characters) and may be called
// from any thread.
#ifndef UTIL_EXPORT_STRPARSE_H
#define UTIL_EXPORT_STRPARSE_H

#include "osal/export/osal_timing_types.h"
#include "sharedinc/inttype.h"

#include <stdbool.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

// Integers.
//
// White space, a minus sign where the parser allows one, the number, and at most one multiplier:
// k, m or g in either case, for 1024 and its powers. The number is decimal; "0x" before or 'h'
// behind the digits makes it hexadecimal: "0x10k" and "10hk" are both 16384, and digits beyond 9
// need "0x". What follows the multiplier is ignored: "12kb" is "12k". The digits are read as
// the GNU C library's sscanf() reads them with %lu or %lx, on every platform; they accept a '+' of
// their own, for example. A number or
// product beyond 64 bits is not noticed: it gives some number.
//
// On failure `*value` is untouched and the reason is one of
//   "could not parse number"       no digits, or letters of hexadecimal digits without "0x"
//   "illegal suffix"               the character after the number is no multiplier
//   "negative value not allowed"   a minus sign

// Signed. strToSuffixInt() stores the low 32 bits of the 64-bit result, so "4g" is 0.
bool strToSuffixInt(const char* str, int* value, const char** error_msg);
bool strToSuffixLong(const char* str, s8* value, const char** error_msg);

// Without a sign. strToSuffixUInt() stores the low 32 bits.
bool strToSuffixUInt(const char* str, unsigned int* value, const char** error_msg);
bool strToSuffixULong(const char* str, u8* value, const char** error_msg);
bool strToSuffixSize(const char* str, size_t* value, const char** error_msg);

// Without a sign. A number with a letter from a to f is hexadecimal even without "0x": "1e3" is
// 0x1e3. Digits alone stay decimal.
bool strToSuffixAddress(const char* str, void** value, const char** error_msg);

// A floating-point number as that sscanf() reads it with %lf, so the decimal point is that of the
// process's locale, and directly behind it at most one multiplier as above; what follows that is
// ignored. Fails with "illegal floating point value", or with "illegal suffix": `*value` then
// already holds the number.
bool strToSuffixDouble(const char* str, double* value, const char** error_msg);

// A decimal integer and a unit, in nanoseconds: ns, us, ms, s, m (minutes), h or d, in lower case.
// White space may stand before either. Only two characters of the unit are looked at: "5msx" is
// 5 ms, but "5sec" is no unit. 0 needs no unit. A product beyond 64 bits is not noticed. On
// failure `*pvalue` is untouched and the reason is "unit required", "illegal unit" or, when there
// is no number, "syntax error".
bool strToSuffixNanoTime(const char* str, nanotime* pvalue, const char** error_msg);

// True for "", "1", "true" and "on", false for "0", "false" and "off", in any case. Otherwise
// fails with "illegal boolean value" and leaves `*value` untouched. The empty text counts as true
// because that is the value of an option that is only named.
bool strToBool(const char* str, bool* value, const char** error_msg);

// The multiplier of one of the characters k, K, m, M, g and G. For any other the result is false
// and `*multiplier` untouched.
bool strSuffixToMultiplier(int suffix, u8* multiplier);

// Whether `instr` begins with `prefix`, case-sensitively; the empty prefix begins everything.
bool strStartsWith(const char* instr, const char* prefix);

// Cuts `str` in two, in place, at the first character `at`.
//
//   sub1  receives `str`
//   sub2  receives what follows the character, or null when it does not occur. NUL, which ends
//         the string, is never found.
//
// Always returns 0.
int strSplitAt(char* str, char** sub1, char** sub2, int at);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
