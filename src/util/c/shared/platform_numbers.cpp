// Where the GNU C library's sscanf() ends a number: it consumes characters that may begin the
// number's next part and then converts what it has, so it may end one or two characters after
// strtod() and strtol().

#include "util/c/shared/platform_numbers.h"

#include "util/c/shared/decimal.h"
#include "util/c/shared/digits.h"

#include <ctype.h>
#include <stdlib.h>
#include <string.h>
#include <algorithm>

// The first character after white space and a sign.
static const char* after_sign(const char* text) {
    while (isspace(static_cast<unsigned char>(*text)) != 0)
        text++;
    return text + (*text == '-' || *text == '+');
}

static bool is_letter(char c, char lower) {
    return (c | 0x20) == lower;
}

// The end of a number with digits from `start` to `end`, given the letter of its exponent.
static const char* after_unfinished_exponent(const char* start, const char* end, char letter) {
    const auto is_exponent = [=](char c) { return is_letter(c, letter); };
    if (!is_exponent(*end) || std::any_of(start, end, is_exponent))
        return end;
    end++;
    return end + (*end == '-' || *end == '+');
}

const char* double_by_platform(const char* text, double* value) {
    char* converted;
    double number = strtod(text, &converted);
    const char* const start = after_sign(text);
    const char* end = converted;
    if (end == text)
        return nullptr;
    if (is_letter(*start, 'n')) {
        // C libraries disagree on its sign, and accept a kind in parentheses.
        const double nan = __builtin_nan("");
        number = start > text && start[-1] == '-' ? -nan : nan;
        end = start + 3;
    } else if (is_letter(*start, 'i')) {
        if (end == start + 3 && is_letter(*end, 'i'))
            return nullptr;  // "infi" must go on as "infinity"
    } else if (!has_hex_prefix(start)) {
        end = after_unfinished_exponent(start, end, 'e');
    } else if (end == start + 1) {
        const char* const point = decimal_point();
        const size_t length = strlen(point);
        if (strncmp(start + 2, point, length) != 0)
            return nullptr;
        end = start + 2 + length;
    } else {
        end = after_unfinished_exponent(start, end, 'p');
    }
    *value = number;
    return end;
}

// `convert` is strtol() or strtoul(). A base of 0 is that of the prefix.
template <typename Value, typename Convert>
static const char* whole_number(const char* text, int base, Value* value, Convert convert) {
    const char* const digits = after_sign(text);
    const bool prefixed = has_hex_prefix(digits);
    if (base == 0)
        base = prefixed ? 16 : *digits == '0' ? 8 : 10;
    char* end;
    const Value number = convert(text, &end, base);
    if (end == text)
        return nullptr;
    *value = number;
    const bool bare = prefixed && base == 16 && end == digits + 1;
    return bare ? digits + 2 : end;
}

const char* integer_by_platform(const char* text, long* value) {
    return whole_number(text, 0, value, strtol);
}

const char* unsigned_by_platform(const char* text, int base, u8* value) {
    return whole_number(text, base, value, strtoul);
}
