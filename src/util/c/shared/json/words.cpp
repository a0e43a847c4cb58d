// Bare words. The platform's conversions decide what a word means: a word with a point or an "e" is
// tried as a double first, then every word as an integer. The fast code here gives the same
// results.

#include "util/c/shared/json/words.h"

#include "util/c/shared/decimal.h"
#include "util/c/shared/digits.h"
#include "util/c/shared/platform_numbers.h"
#include "util/export/posix/stringutil_pd.h"

#include <string.h>

const char* scan_word(json* js, const char* token) {
    const char* p = token;
    const char* end;
    while ((end = word_end_fast(js, p)) == nullptr)
        p += BITS_AT_ONCE;
    if (end == token)
        fail_at(js, token, "Missing value");
    js->extract = token;
    js->used = 0;
    append(js, token, static_cast<size_t>(end - token), end);
    terminate(js, end);
    return end;
}

static bool has_point(json* js) {
    if (js->decimal_point == json::UNKNOWN) [[unlikely]]
        js->decimal_point = locale_has_point() ? json::POINT : json::OTHER;
    return js->decimal_point == json::POINT;
}

// These functions deliver the number from `token` to `end` and return its end, or null for a number
// that is left to the platform. They are out of line, so that the code that reads the digits needs
// no stack frame.

// Leaves octal integers to the platform, and those that may not fit 64 bits.
[[gnu::noinline]] static const char* send_integer(json* js, const char* token, const char* end,
                                                  u8 magnitude) {
    constexpr ptrdiff_t SAFE_DIGITS = 18;  // any integer of that many fits
    const bool negative = *token == '-';
    const char* const digits = token + negative;
    if (end - digits > SAFE_DIGITS || (*digits == '0' && end - digits > 1))
        return nullptr;
    JSONVal value;
    value.int_value = static_cast<s8>(negative ? -magnitude : magnitude);
    deliver(js, token, end, JSON_INTEGER, &value);
    return end;
}

[[gnu::noinline]] static const char* send_float(json* js, const char* token, const char* end,
                                                double number) {
    JSONVal value;
    value.double_value = number;
    deliver(js, token, end, JSON_FLOAT, &value);
    return end;
}

// For numbers of any length and form.
[[gnu::noinline]] static const char* send_number(json* js, const char* token, const char* end) {
    Decimal decimal;
    if (read_decimal(token + (*token == '-'), &decimal) != end)
        return nullptr;
    if (decimal.integer_end == end)
        return send_integer(js, token, end, decimal.mantissa);
    double value;
    if (*decimal.integer_end == 'E' || !has_point(js) ||
        !decimal_to_double(*token == '-', decimal.mantissa, decimal.exponent, &value))
        return nullptr;
    return send_float(js, token, end, value);
}

#define VECTOR_KERNEL "util/c/shared/json/words_vectors.inl"
#include "util/c/shared/vector/widths.h"

SendNumber* number_sender() {
    return vector_bytes >= 64   ? width_64::send_number_fast
           : vector_bytes >= 32 ? width_32::send_number_fast
                                : width_16::send_number_fast;
}

// True when the word starts as a number, an infinity or a "nan" may. Other words, which are most,
// skip the platform's conversions. A locale may have a decimal point beyond ASCII.
static bool may_be_number(const char* word) {
    const char c = *word;
    if (is_digit(c) || c == '-' || c == '+' || c == '.' || byte_of(c) >= 0x80)
        return true;
    return kestrum_util_strnicmp(word, "inf", 3) == 0 || kestrum_util_strnicmp(word, "nan", 3) == 0;
}

// True when a number was found and the word ends with it.
static bool is_whole(const char* end) {
    return end != nullptr && *end == '\0';
}

static bool send_number_by_platform(json* js, const char* token, const char* end) {
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

const char* send_word(json* js, const char* token) {
    const char* const end = scan_word(js, token);
    if (kestrum_util_stricmp(js->buffer, "true") == 0)
        deliver(js, token, end, JSON_TRUE, nullptr);
    else if (kestrum_util_stricmp(js->buffer, "false") == 0)
        deliver(js, token, end, JSON_FALSE, nullptr);
    else if (kestrum_util_stricmp(js->buffer, "null") == 0)
        deliver(js, token, end, JSON_NULL, nullptr);
    else if (!send_number_by_platform(js, token, end))
        deliver_text(js, token, end, JSON_STRING);
    return end;
}
