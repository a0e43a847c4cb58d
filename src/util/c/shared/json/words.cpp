// Bare words in general. What a word means is decided by the platform's conversions, to a double
// for words with a point or an "e" and then to an integer; what is read here is read as they would.

#include "util/c/shared/json/words.h"

#include "util/c/shared/platform_numbers.h"
#include "util/export/posix/stringutil_pd.h"

#include <string.h>

const char* scan_word(json* js, const char* token) {
    const char* p = token;
    const char* end;
    while ((end = near_word_end(js, p)) == nullptr)
        p += BITS_AT_ONCE;
    if (end == token)
        fail_at(js, token, "Missing value");
    js->extract = token;
    js->used = 0;
    append(js, token, static_cast<size_t>(end - token), end);
    terminate(js, end);
    return end;
}

// The end of the digits at p, which `value` takes on at its end, modulo 2^64.
static inline const char* read_digits(const char* p, const char* end, u8* value) {
    for (; end - p >= 8; p += 8) {
        const u8 bytes = last_bytes(p + 8, 8);
        if (!are_digits(bytes))
            break;
        *value = *value * 100'000'000 + value_of_digits(bytes);
    }
    for (; is_digit(*p); p++)
        *value = *value * 10 + (byte_of(*p) - static_cast<u8>('0'));
    return p;
}

// Reads "e", a sign or none, and digits at p into `exponent`. Null for anything unusual.
static const char* read_exponent(const char* p, int* exponent) {
    constexpr int MAX_DIGITS = 4;
    const bool negative = *++p == '-';
    if (*p == '-' || *p == '+')
        p++;
    int value = 0;
    const char* const digits = p;
    for (; is_digit(*p) && p - digits < MAX_DIGITS; p++)
        value = value * 10 + (*p - '0');
    *exponent += negative ? -value : value;
    return p == digits ? nullptr : p;
}

// How many of the `count` digits at p, among them a point, are left without the leading zeros.
static ptrdiff_t significant_digits(const char* p, ptrdiff_t count) {
    for (; *p == '0' || *p == '.'; p++)
        count -= *p == '0';
    return count;
}

static bool send_ordinary_integer(json* js, const char* token, const char* end, u8 magnitude) {
    constexpr ptrdiff_t SAFE_DIGITS = 18;  // any integer of that many fits
    const bool negative = *token == '-';
    const char* const digits = token + negative;
    const bool octal = *digits == '0' && end - digits > 1;
    if (octal || end - digits > SAFE_DIGITS)
        return false;
    JSONVal value;
    value.int_value = static_cast<s8>(negative ? -magnitude : magnitude);
    deliver(js, token, end, JSON_INTEGER, &value);
    return true;
}

bool send_ordinary_number(json* js, const char* token, const char* end) {
    const char* const digits = token + (*token == '-');
    u8 mantissa = 0;
    const char* p = read_digits(digits, end, &mantissa);
    ptrdiff_t count = p - digits;
    if (count == 0)
        return false;
    if (p == end)
        return send_ordinary_integer(js, token, end, mantissa);
    const bool has_point = *p == '.';
    int exponent = 0;
    if (has_point) {
        const char* const fraction = p + 1;
        p = read_digits(fraction, end, &mantissa);
        if (p == fraction)
            return false;
        count += p - fraction;
        exponent = static_cast<int>(fraction - p);
    }
    if (*p == 'e' || (*p == 'E' && has_point))
        p = read_exponent(p, &exponent);
    if (p != end)
        return false;
    if (count > DECIMAL_DIGITS && significant_digits(digits, count) > DECIMAL_DIGITS)
        return false;
    JSONVal value;
    if (!decimal_point_is_point(js) ||
        !decimal_to_double(digits != token, mantissa, exponent, &value.double_value))
        return false;
    deliver(js, token, end, JSON_FLOAT, &value);
    return true;
}

// Spares most words the platform's conversions: how a number, an infinity or a "nan" may start.
// A locale may have a decimal point beyond ASCII.
static bool may_be_number(const char* word) {
    const char c = *word;
    if (is_digit(c) || c == '-' || c == '+' || c == '.' || byte_of(c) >= 0x80)
        return true;
    return kestrum_util_strnicmp(word, "inf", 3) == 0 || kestrum_util_strnicmp(word, "nan", 3) == 0;
}

// True when a number was found that ends with its word.
static bool is_whole(const char* end) {
    return end != nullptr && *end == '\0';
}

static bool try_send_number(json* js, const char* token, const char* end) {
    const char* const word = js->buffer;
    JSONVal value;
    if (!may_be_number(word))
        return false;
    if (strpbrk(word, ".e") != nullptr && is_whole(double_by_platform(word, &value.double_value))) {
        deliver(js, token, end, JSON_FLOAT, &value);
        return true;
    }
    long integer;
    if (!is_whole(integer_by_platform(word, &integer)))
        return false;
    value.int_value = integer;
    deliver(js, token, end, JSON_INTEGER, &value);
    return true;
}

const char* send_any_word(json* js, const char* token) {
    const char* const end = scan_word(js, token);
    if (kestrum_util_stricmp(js->buffer, "true") == 0)
        deliver(js, token, end, JSON_TRUE, nullptr);
    else if (kestrum_util_stricmp(js->buffer, "false") == 0)
        deliver(js, token, end, JSON_FALSE, nullptr);
    else if (kestrum_util_stricmp(js->buffer, "null") == 0)
        deliver(js, token, end, JSON_NULL, nullptr);
    else if (!try_send_number(js, token, end))
        deliver_text(js, token, end, JSON_STRING);
    return end;
}
