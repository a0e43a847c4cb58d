// Suffixed numbers, durations and booleans.
//
// The platform's conversions decide what a number is: signs and white space that they accept by
// themselves, "0x" within hexadecimal digits, numbers beyond 64 bits, infinities, the locale's
// decimal point. Digits with a suffix, which people usually type, are read here instead. Everything
// else goes to the conversions, so that their rules are not repeated here. A fast reader either
// gives the result that they would give or declines.

#include "util/export/strparse.h"

#include "util/c/shared/decimal.h"
#include "util/c/shared/digits.h"
#include "util/c/shared/platform_numbers.h"
#include "util/export/posix/stringutil_pd.h"

#include <ctype.h>
#include <stdlib.h>
#include <string.h>
#include <bit>

// Always false, so that a parser returns it.
static bool fail(const char** error_msg, const char* message) {
    if (error_msg != nullptr)
        *error_msg = message;
    return false;
}

// Printable ASCII is no space in any locale, so isspace() is seldom called.
static inline bool is_space(char c) {
    const bool printable = c >= '!' && c <= '~';
    return !printable && c != '\0' && isspace(static_cast<unsigned char>(c)) != 0;
}

static inline const char* skip_space(const char* p) {
    while (is_space(*p))
        p++;
    return p;
}

// Letters that only a hexadecimal number has.
static bool is_hex_char(char c) {
    const int lower = tolower(static_cast<unsigned char>(c));
    return (lower >= 'a' && lower <= 'f') || lower == 'x';
}

struct Multipliers {
    unsigned char shift[256];
};

constexpr unsigned char NO_MULTIPLIER = 64;

// Multipliers are powers of two. NUL means that no multiplier was written, and counts as 1.
constexpr Multipliers MULTIPLIERS = [] {
    Multipliers m = {};
    for (unsigned c = 1; c < 256; c++) {
        const unsigned lower = c | 0x20;
        m.shift[c] = lower == 'k' ? 10 : lower == 'm' ? 20 : lower == 'g' ? 30 : NO_MULTIPLIER;
    }
    return m;
}();

static inline unsigned shift_of(char suffix) {
    return MULTIPLIERS.shift[static_cast<unsigned char>(suffix)];
}

// A number without a multiplier is not multiplied by 1: in a thread that treats subnormal numbers
// as zero, the product of such a number would be 0.
static inline double multiplied(double number, char suffix) {
    unsigned shift = shift_of(suffix);
    if (shift == 0)
        return number;
    __asm__("" : "+r"(shift));  // hides it: compilers would multiply by 1 instead of branching
    return number * static_cast<double>(u8{1} << shift);
}

bool strSuffixToMultiplier(int suffix, u8* multiplier) {
    if (suffix <= 0 || suffix > 'm' || shift_of(static_cast<char>(suffix)) == NO_MULTIPLIER)
        return false;
    *multiplier = u8{1} << shift_of(static_cast<char>(suffix));
    return true;
}

constexpr size_t MAX_HEX_DIGITS = 16;

static inline const char* read_hex(const char* p, u8* number) {
    u8 n = 0;
    for (unsigned digit; (digit = hex_digit(*p)) < 16; p++)
        n = n << 4 | digit;
    *number = n;
    return p;
}

// A number and up to two characters after it. `items` counts how many of the three are there; a
// missing character is NUL.
struct Scanned {
    u8 number = 0;
    int items = 0;
    char c1 = '\0', c2 = '\0';

    // Takes the characters after the number.
    void take_rest(const char* end) {
        items = 1;
        if (*end != '\0') {
            c1 = end[0];
            c2 = end[1];
            items = c2 == '\0' ? 2 : 3;
        }
    }
};

[[gnu::noinline, gnu::cold]] static Scanned scan_by_platform(const char* text, bool hex) {
    Scanned s;
    const char* const end = unsigned_by_platform(text, hex ? 16 : 10, &s.number);
    if (end != nullptr)
        s.take_rest(end);
    return s;
}

static inline Scanned scan(const char* text, bool hex) {
    Scanned s;
    const char* const end = hex ? read_hex(text, &s.number) : read_digits(text, &s.number);
    const auto digits = static_cast<size_t>(end - text);
    const bool maybe_prefix = hex && digits == 1 && *text == '0' && (*end == 'x' || *end == 'X');
    if (digits == 0 || maybe_prefix)
        return scan_by_platform(text, hex);
    if (digits > (hex ? MAX_HEX_DIGITS : DECIMAL_DIGITS))
        s.number = strtoul(text, nullptr, hex ? 16 : 10);  // saturates
    s.take_rest(end);
    return s;
}

static bool scan_number(const char* buffer, bool allow_undecorated_hex, bool allow_negative,
                        u8* number, const char** error_msg) {
    const char* p = skip_space(buffer);
    const bool negative = *p == '-';
    if (negative) {
        if (!allow_negative)
            return fail(error_msg, "negative value not allowed");
        p++;
    }
    bool hex = has_hex_prefix(p);
    if (hex)
        p += 2;

    Scanned s = scan(p, hex);
    if (!hex && ((s.items == 0 && is_hex_char(*p)) || (s.items >= 2 && is_hex_char(s.c1)))) {
        if (!allow_undecorated_hex)
            return fail(error_msg, "could not parse number");
        hex = true;
        s = scan(p, hex);
    }
    char suffix = s.c1;
    if (s.c1 == 'h' || s.c1 == 'H') {
        if (!hex)
            s = scan(p, true);
        suffix = s.c2;
    }
    const unsigned shift = shift_of(suffix);
    if (shift == NO_MULTIPLIER)
        return fail(error_msg, "illegal suffix");
    if (s.items <= 0)
        return fail(error_msg, "could not parse number");
    *number = (negative ? -s.number : s.number) << shift;
    return true;
}

// Reads what most people type: digits, with an optional "0x" before and an optional multiplier
// after them. Declines the rest.
static inline bool scan_number_fast(const char* text, u8* number) {
    u8 n = 0;
    const bool hex = has_hex_prefix(text);
    const char* const start = hex ? text + 2 : text;
    const char* const end = hex ? read_hex(start, &n) : read_digits(start, &n);
    const unsigned shift = shift_of(*end);
    const auto digits = static_cast<size_t>(end - start);
    *number = n << (shift & 63);
    return digits - 1 < (hex ? MAX_HEX_DIGITS : DECIMAL_DIGITS) && shift != NO_MULTIPLIER;
}

// Out of line, so that the fast path needs no stack frame.
template <typename Value>
[[gnu::noinline]] static bool scan_and_store(const char* str, Value* value,
                                             bool allow_undecorated_hex, bool allow_negative,
                                             const char** error_msg) {
    u8 number;
    if (!scan_number(str, allow_undecorated_hex, allow_negative, &number, error_msg))
        return false;
    *value = static_cast<Value>(number);
    return true;
}

// A narrower type keeps the low bits.
template <typename Value>
static inline bool read_integer(const char* str, Value* value, bool allow_undecorated_hex,
                                bool allow_negative, const char** error_msg) {
    u8 number;
    if (!scan_number_fast(str, &number))
        return scan_and_store(str, value, allow_undecorated_hex, allow_negative, error_msg);
    *value = static_cast<Value>(number);
    return true;
}

bool strToSuffixInt(const char* str, int* value, const char** error_msg) {
    return read_integer(str, value, false, true, error_msg);
}

bool strToSuffixUInt(const char* str, unsigned int* value, const char** error_msg) {
    return read_integer(str, value, false, false, error_msg);
}

bool strToSuffixLong(const char* str, s8* value, const char** error_msg) {
    return read_integer(str, value, false, true, error_msg);
}

bool strToSuffixULong(const char* str, u8* value, const char** error_msg) {
    return read_integer(str, value, false, false, error_msg);
}

bool strToSuffixSize(const char* str, size_t* value, const char** error_msg) {
    return read_integer(str, value, false, false, error_msg);
}

bool strToSuffixAddress(const char* str, void** value, const char** error_msg) {
    u8 address;
    if (!read_integer(str, &address, true, false, error_msg))
        return false;
    *value = std::bit_cast<void*>(address);
    return true;
}

// Reads a number with an optional multiplier after it, and stores their product. Declines any other
// text, and numbers that are not easily rounded.
static inline bool read_double_fast(const char* p, double* value) {
    const bool negative = *p == '-';
    if (negative || *p == '+')
        p++;
    Decimal decimal;
    const char* const end = read_decimal(p, &decimal);
    if (end == nullptr || shift_of(*end) == NO_MULTIPLIER ||
        (*decimal.integer_end == '.' && !locale_has_point()))
        return false;
    double number;
    if (!decimal_to_double(negative, decimal.mantissa, decimal.exponent, &number))
        return false;
    *value = multiplied(number, *end);
    return true;
}

bool strToSuffixDouble(const char* str, double* value, const char** error_msg) {
    if (read_double_fast(str, value))
        return true;
    const char* const end = double_by_platform(str, value);
    if (end == nullptr)
        return fail(error_msg, "illegal floating point value");
    if (shift_of(*end) == NO_MULTIPLIER)
        return fail(error_msg, "illegal suffix");
    *value = multiplied(*value, *end);
    return true;
}

constexpr ptrdiff_t MAX_SIGNED_DIGITS = 18;

// A unit of one or two characters as a number to compare with.
static constexpr unsigned unit(char first, char second = '\0') {
    return static_cast<unsigned char>(first) | unsigned{static_cast<unsigned char>(second)} << 8;
}

// The unit's nanoseconds, or 0 when there is no such unit.
static inline s8 nanoseconds(unsigned name) {
    switch (name) {
        case unit('n', 's'): return 1;
        case unit('u', 's'): return 1'000;
        case unit('m', 's'): return 1'000'000;
        case unit('s'): return 1'000'000'000;
        case unit('m'): return 60'000'000'000;
        case unit('h'): return 3'600'000'000'000;
        case unit('d'): return 86'400'000'000'000;
        default: return 0;
    }
}

bool strToSuffixNanoTime(const char* str, nanotime* pvalue, const char** error_msg) {
    const char* p = skip_space(str);
    const bool negative = *p == '-';
    if (negative || *p == '+')
        p++;
    u8 number = 0;
    const char* const end = read_digits(p, &number);
    if (end == p)
        return fail(error_msg, "syntax error");
    s8 v = static_cast<s8>(negative ? -number : number);
    if (end - p > MAX_SIGNED_DIGITS)
        v = strtol(str, nullptr, 10);  // saturates
    p = skip_space(end);
    if (*p == '\0') {
        if (v != 0)
            return fail(error_msg, "unit required");
        *pvalue = 0;
        return true;
    }
    const s8 factor = nanoseconds(unit(p[0], is_space(p[1]) ? '\0' : p[1]));
    if (factor == 0)
        return fail(error_msg, "illegal unit");
    *pvalue = static_cast<nanotime>(static_cast<u8>(v) * static_cast<u8>(factor));
    return true;
}

bool strToBool(const char* str, bool* value, const char** error_msg) {
    if (*str == '\0' || strcmp(str, "1") == 0 || kestrum_util_stricmp(str, "true") == 0 ||
        kestrum_util_stricmp(str, "on") == 0)
        *value = true;
    else if (strcmp(str, "0") == 0 || kestrum_util_stricmp(str, "false") == 0 ||
             kestrum_util_stricmp(str, "off") == 0)
        *value = false;
    else
        return fail(error_msg, "illegal boolean value");
    return true;
}

bool strStartsWith(const char* instr, const char* prefix) {
    return strncmp(instr, prefix, strlen(prefix)) == 0;
}

int strSplitAt(char* str, char** sub1, char** sub2, int at) {
    *sub1 = str;
    *sub2 = nullptr;
    char* const found = static_cast<char>(at) != '\0' ? strchr(str, at) : nullptr;
    if (found != nullptr) {
        *found = '\0';
        *sub2 = found + 1;
    }
    return 0;
}
