// Numbers, durations and booleans from text, as people type them in option values.
//
// Every parser returns true and stores the value, or returns false and stores the reason in
// `*error_msg`, a constant string. `error_msg` may be null and is written on failure only. The text
// is NUL-terminated and not null. The functions keep no state and may be called from any thread.
// They allocate nothing, except what the C library's scanner takes for a number of more than a
// thousand characters.
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
// k, m or g in either case, for 1024 and its powers. The number is decimal, or hexadecimal with
// "0x" in front or 'h' behind; digits a to f need "0x". What follows the multiplier is ignored.
//
//     text           result
//     "64m"          67108864
//     " -2k"         -2048; "negative value not allowed" from a parser without a sign
//     "0x10k"        16384
//     "10hk"         16384
//     "+7"           7
//     "12kb"         12288
//     "12 k"         "illegal suffix"
//     "5t"           "illegal suffix"
//     "ff", ""       "could not parse number"
//
// The digits are read as the GNU C library's sscanf() reads them with %lu or %lx, on every
// platform. Overflow of 64 bits is not reported; the value is then unspecified. On failure `*value`
// is untouched.

// Reads an integer with an optional sign. strToSuffixInt() stores the low 32 bits of the 64-bit
// result, so "4g" gives 0.
bool strToSuffixInt(const char* str, int* value, const char** error_msg);
bool strToSuffixLong(const char* str, s8* value, const char** error_msg);

// Reads an integer without a minus sign. strToSuffixUInt() stores the low 32 bits.
bool strToSuffixUInt(const char* str, unsigned int* value, const char** error_msg);
bool strToSuffixULong(const char* str, u8* value, const char** error_msg);
bool strToSuffixSize(const char* str, size_t* value, const char** error_msg);

// Reads an address: an integer without a minus sign. With a letter from a to f it is hexadecimal
// also without "0x": "1e3" gives 0x1e3. Digits alone are decimal: "10" gives 0xa.
bool strToSuffixAddress(const char* str, void** value, const char** error_msg);

// Reads a floating-point number as that sscanf() does with %lf, with the decimal point of the
// process's locale. At most one multiplier, as above, directly follows it; the rest is ignored.
//
//     text           result in the C locale
//     "1.5k"         1536
//     "1e3"          1000
//     "0x1p4"        16
//     "1.5x"         "illegal suffix", and `*value` is 1.5
//     "1.5 k"        "illegal suffix", and `*value` is 1.5
//     "abc"          "illegal floating point value", and `*value` is untouched
bool strToSuffixDouble(const char* str, double* value, const char** error_msg);

// Reads a time in nanoseconds: a decimal integer and a unit, which is ns, us, ms, s, m (minutes), h
// or d in lower case. White space may stand before either. Only two characters of the unit are
// read. 0 needs no unit.
//
//     text           result
//     "500ms"        500000000
//     " 5 us"        5000
//     "-3s"          -3000000000
//     "0"            0
//     "5msx"         5000000
//     "5"            "unit required"
//     "5sec", "5S"   "illegal unit"
//     "x", ""        "syntax error"
//
// Overflow of 64 bits is not reported; the value is then unspecified. On failure `*pvalue` is
// untouched.
bool strToSuffixNanoTime(const char* str, nanotime* pvalue, const char** error_msg);

// Reads a boolean: "", "1", "true" and "on" are true, "0", "false" and "off" are false, in any
// case. Otherwise fails with "illegal boolean value" and leaves `*value` untouched. The empty text
// is true because a bare option name has the empty value.
bool strToBool(const char* str, bool* value, const char** error_msg);

// Stores the multiplier of the character k, K, m, M, g or G and returns true. For any other
// character returns false and leaves `*multiplier` untouched.
bool strSuffixToMultiplier(int suffix, u8* multiplier);

// True when `instr` begins with `prefix`, case-sensitively. Every string begins with the empty one.
bool strStartsWith(const char* instr, const char* prefix);

// Splits `str` in place at the first character `at`, which becomes NUL.
//
//   sub1  receives `str`
//   sub2  receives the rest after the character, or null when `str` has none. A NUL as `at`
//         is never found.
//
// Always returns 0.
int strSplitAt(char* str, char** sub1, char** sub2, int at);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
