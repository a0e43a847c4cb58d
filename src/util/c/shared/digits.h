// Reads the digits of numbers one after another: for numbers of any form, and for texts of unknown
// length.
#ifndef UTIL_C_SHARED_DIGITS_H
#define UTIL_C_SHARED_DIGITS_H

#include "sharedinc/inttype.h"

#include <stddef.h>

constexpr size_t DECIMAL_DIGITS = 19;  // any number of that many digits fits 64 bits

struct HexDigits {
    unsigned char value[256];  // 16 when the character is no digit
};

inline constexpr HexDigits HEX_DIGITS = [] {
    HexDigits digits = {};
    for (unsigned c = 0; c < 256; c++) {
        const unsigned letter = (c | 0x20) - 'a';
        const unsigned value = c - '0' <= 9 ? c - '0' : letter <= 5 ? letter + 10 : 16;
        digits.value[c] = static_cast<unsigned char>(value);
    }
    return digits;
}();

static inline unsigned hex_digit(char c) {
    return HEX_DIGITS.value[static_cast<unsigned char>(c)];
}

static inline bool has_hex_prefix(const char* p) {
    return p[0] == '0' && (p[1] == 'x' || p[1] == 'X');
}

// Appends the decimal digits at p to the number, modulo 2^64, and returns their end. Four digits
// are combined first, so that only one step in four waits for the number so far.
static inline const char* read_digits(const char* p, u8* number) {
    const auto digit = [&p](int i) { return static_cast<unsigned char>(p[i]) - unsigned{'0'}; };
    u8 n = *number;
    unsigned a, ab, abc, d;
    for (;; p += 4) {
        if ((a = digit(0)) > 9)
            break;
        if ((d = digit(1)) > 9) {
            n = 10 * n + a;
            p += 1;
            break;
        }
        ab = 10 * a + d;
        if ((d = digit(2)) > 9) {
            n = 100 * n + ab;
            p += 2;
            break;
        }
        abc = 10 * ab + d;
        if ((d = digit(3)) > 9) {
            n = 1000 * n + abc;
            p += 3;
            break;
        }
        n = 10000 * n + (10 * abc + d);
    }
    *number = n;
    return p;
}

// A number as it was written: mantissa * 10^exponent.
struct Decimal {
    u8 mantissa = 0;
    s8 exponent = 0;
    const char* integer_end = nullptr;  // of the digits before a point or an exponent
};

// Reads an exponent such as "e-7" at p, if there is one, and adds it. Null when it has no digits,
// or too many.
static inline const char* read_exponent(const char* p, s8* exponent) {
    constexpr ptrdiff_t MAX_EXPONENT_DIGITS = 4;
    if ((*p | 0x20) != 'e')
        return p;
    const bool negative = *++p == '-';
    if (negative || *p == '+')
        p++;
    u8 n = 0;
    const char* const end = read_digits(p, &n);
    if (end == p || end - p > MAX_EXPONENT_DIGITS)
        return nullptr;
    *exponent += static_cast<s8>(negative ? -n : n);
    return end;
}

// Reads the digits at p, with an optional point (before, among or after them) and an optional
// exponent, and returns the number's end. Null when there are no digits, too many for a mantissa,
// or the exponent is unusable.
static inline const char* read_decimal(const char* p, Decimal* decimal) {
    const char* const start = p;
    *decimal = {};
    p = read_digits(p, &decimal->mantissa);
    decimal->integer_end = p;
    size_t digits = static_cast<size_t>(p - start);
    if (*p == '.') {
        const char* const fraction = p + 1;
        p = read_digits(fraction, &decimal->mantissa);
        decimal->exponent = fraction - p;
        digits += static_cast<size_t>(p - fraction);
    }
    if (digits == 0)
        return nullptr;
    for (const char* zero = start; digits > DECIMAL_DIGITS && (*zero == '0' || *zero == '.');
         zero++)
        digits -= *zero == '0';
    return digits > DECIMAL_DIGITS ? nullptr : read_exponent(p, &decimal->exponent);
}

#endif
