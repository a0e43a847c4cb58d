// Numbers as sscanf() of the GNU C library reads them, on every C library.
//
// C libraries agree on strtod() and strtol(), but not on sscanf(): beyond 64 bits, after a bare
// "0x" and after an exponent without digits it differs between them. So strtod() and strtol()
// decide, and these functions add what sscanf() does beyond them.
//
// Each function skips white space, takes a sign, and returns the number's end. Without a number it
// returns null and does not change `value`. The locale counts as in the platform's conversions.
#ifndef UTIL_C_SHARED_PLATFORM_NUMBERS_H
#define UTIL_C_SHARED_PLATFORM_NUMBERS_H

#include "sharedinc/inttype.h"

// "%lf". An exponent may lack its digits, as in "7e" or "7e+"; "nan" ends after three letters.
const char* double_by_platform(const char* text, double* value);

// "%li". Beyond 64 bits the value saturates; a bare "0x" is 0, and "0b1" no binary number.
const char* integer_by_platform(const char* text, long* value);

// "%lu" for a base of 10 and "%lx" for one of 16, likewise.
const char* unsigned_by_platform(const char* text, int base, u8* value);

#endif
