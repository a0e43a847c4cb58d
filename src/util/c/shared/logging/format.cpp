// Formatted text of bounded length, for messages and decorations.
//
// The platform's formatter costs more than everything else in a line except the write, and most
// messages need little of it: integers and strings without flags or width. Those are formatted here
// in one pass. At the first other conversion, or a null string, the whole text goes to the
// platform's formatter, which starts from the beginning with the unused argument list. So the
// result is always what that formatter would write.

#include "util/c/shared/logging/logging_internal.h"

#include <limits.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <algorithm>

constexpr size_t MOST_ROOM = INT_MAX;  // keeps the end of a room like (size_t)-1 a valid address

// Copies up to `limit`, where there is still room for a terminator.
static inline char* put(char* end, char* limit, const char* text, size_t length) {
    length = std::min(length, static_cast<size_t>(limit - end));
    memcpy(end, text, length);
    return end + length;
}

// clang-format off
constexpr u8 POWERS_OF_TEN[] = {
    1, 10, 100, 1'000, 10'000, 100'000, 1'000'000, 10'000'000, 100'000'000, 1'000'000'000,
    10'000'000'000, 100'000'000'000, 1'000'000'000'000, 10'000'000'000'000, 100'000'000'000'000,
    1'000'000'000'000'000, 10'000'000'000'000'000, 100'000'000'000'000'000,
    1'000'000'000'000'000'000, 10'000'000'000'000'000'000U};
// clang-format on

// At least 1, also for 0.
static int count_digits(u8 value) {
    // 1233 / 4096 is nearly log10(2): the estimate from the number of bits is right or one too low.
    const int estimate = (64 - __builtin_clzll(value | 1)) * 1233 >> 12;
    return estimate + ((value | 1) >= POWERS_OF_TEN[estimate]);
}

struct DigitPairs {
    char text[200];
};

// "00" to "99".
constexpr DigitPairs DIGIT_PAIRS = [] {
    DigitPairs pairs = {};
    for (size_t i = 0; i < 100; i++) {
        pairs.text[2 * i] = static_cast<char>('0' + i / 10);
        pairs.text[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

// Writes two digits at a time, from the last to the first.
static char* put_digits(char* position, u8 value, int digits) {
    char* const end = position + digits;
    char* p = end;
    for (; p - position >= 2; value /= 100) {
        p -= 2;
        memcpy(p, DIGIT_PAIRS.text + 2 * (value % 100), 2);
    }
    if (p > position)
        *position = static_cast<char>('0' + value % 10);
    return end;
}

char* put_number(char* position, s8 value, int min_digits) {
    u8 magnitude = static_cast<u8>(value);
    if (value < 0) {
        *position++ = '-';
        magnitude = -magnitude;
    }
    return put_digits(position, magnitude, std::max(count_digits(magnitude), min_digits));
}

static char* put_hexadecimal(char* position, u8 value) {
    const int digits = (67 - __builtin_clzll(value | 1)) / 4;
    for (int i = digits; i-- > 0; value /= 16)
        position[i] = "0123456789abcdef"[value % 16];
    return position + digits;
}

// Puts what `write` produces, at most NUMBER_BYTES, cut at `limit`.
template <typename Write>
static inline char* put_bounded(char* end, char* limit, Write write) {
    if (limit - end >= static_cast<ptrdiff_t>(NUMBER_BYTES))
        return write(end);
    char scratch[NUMBER_BYTES];
    return put(end, limit, scratch, static_cast<size_t>(write(scratch) - scratch));
}

// Formats the conversions that the first comment names. Returns the end of the text, or null at the
// first other conversion.
static char* format_plainly(char* end, char* limit, const char* fmt, va_list args) {
    while (true) {
        const char* const stop = strchrnul(fmt, '%');
        end = put(end, limit, fmt, static_cast<size_t>(stop - fmt));
        if (*stop == '\0')
            return end;
        fmt = stop + 1;
        if (*fmt == '%') {
            end = put(end, limit, fmt++, 1);
            continue;
        }
        // On this platform long, long long and size_t are all of 64 bits.
        bool wide = false;
        if (*fmt == 'l' || *fmt == 'z') {
            wide = true;
            fmt += fmt[0] == 'l' && fmt[1] == 'l' ? 2 : 1;
        }
        switch (*fmt++) {
            case 'd':
            case 'i': {
                const s8 value = wide ? va_arg(args, s8) : va_arg(args, int);
                end = put_bounded(end, limit, [=](char* p) { return put_number(p, value, 1); });
                break;
            }
            case 'u': {
                const u8 value = wide ? va_arg(args, u8) : va_arg(args, unsigned);
                end = put_bounded(
                    end, limit, [=](char* p) { return put_digits(p, value, count_digits(value)); });
                break;
            }
            case 'x': {
                const u8 value = wide ? va_arg(args, u8) : va_arg(args, unsigned);
                end = put_bounded(end, limit, [=](char* p) { return put_hexadecimal(p, value); });
                break;
            }
            case 's': {
                const char* string = wide ? nullptr : va_arg(args, const char*);
                if (string == nullptr)
                    return nullptr;
                end = put(end, limit, string, strnlen(string, static_cast<size_t>(limit - end)));
                break;
            }
            default: return nullptr;
        }
    }
}

char* log_vsnprintf(char* buf, size_t max, const char* fmt, va_list* args) {
    max = std::min(max, MOST_ROOM);
    char* const limit = buf + max - 1;
    char* end;
    if (args == nullptr) {
        end = put(buf, limit, fmt, strnlen(fmt, max));
    } else {
        va_list first_attempt;
        va_copy(first_attempt, *args);
        end = format_plainly(buf, limit, fmt, first_attempt);
        va_end(first_attempt);
    }
    if (end == nullptr) {
        buf[0] = '\0';
        const int needed = vsnprintf(buf, max, fmt, *args);
        // When a conversion fails, the text before it stays.
        end = needed < 0 ? buf + strnlen(buf, max - 1) : std::min(buf + needed, limit);
    }
    *end = '\0';
    return end;
}

char* log_sprintf(char* buf, size_t* bytesLeft, const char* fmt, ...) {
    if (*bytesLeft == 0)
        return buf;
    va_list args;
    va_start(args, fmt);
    char* end = log_vsnprintf(buf, *bytesLeft, fmt, &args);
    va_end(args);
    *bytesLeft -= static_cast<size_t>(end - buf);
    return end;
}
