// Bare words: numbers, literals and keys, the usual ones in place.
#ifndef UTIL_C_SHARED_JSON_WORDS_H
#define UTIL_C_SHARED_JSON_WORDS_H

#include "util/c/shared/decimal.h"
#include "util/c/shared/json/json_internal.h"
#include "util/c/shared/vector/block.h"

#include <algorithm>

// The end of the word at `token`, whose bytes go to the token buffer.
const char* scan_word(json* js, const char* token);

// Delivers the word at `token`, whatever it is, and returns its end.
const char* send_any_word(json* js, const char* token);

// Delivers the number from `token` to `end` when it is an ordinary one and returns true. All others
// are left to the platform's conversions.
bool send_ordinary_number(json* js, const char* token, const char* end);

static inline bool decimal_point_is_point(json* js) {
    if (js->decimal_point == json::UNKNOWN) [[unlikely]]
        js->decimal_point = decimal_point_is_usual() ? json::POINT : json::OTHER;
    return js->decimal_point == json::POINT;
}

// The end of the word at p, or null when it is not near.
static inline const char* near_word_end(json* js, const char* p) {
    const u8 stops = bits_at(&js->index, js->index.word_stops, p, js->end);
    return stops != 0 ? p + std::countr_zero(stops) : nullptr;
}

constexpr u8 EIGHT_ZEROS = 0x3030303030303030;  // "00000000"

// The `count` (1 to 8) bytes before `end`, of which eight are readable, with '0' for the others.
static inline u8 last_bytes(const char* end, int count) {
    u8 bytes;
    memcpy(&bytes, end - 8, sizeof bytes);
    const u8 mask = ~static_cast<u8>(0) << 8 * (8 - count);
    return (bytes & mask) | (EIGHT_ZEROS & ~mask);
}

static inline bool are_digits(u8 bytes) {
    return (((bytes + 0x4646464646464646) | (bytes - EIGHT_ZEROS)) & 0x8080808080808080) == 0;
}

// Neighbours are joined: bytes to pairs, pairs to fours, fours to eight.
static inline u8 value_of_digits(u8 bytes) {
    bytes = (bytes & 0x0F0F0F0F0F0F0F0F) * (10 << 8 | 1) >> 8;
    bytes = (bytes & 0x00FF00FF00FF00FF) * (100 << 16 | 1) >> 16;
    return (bytes & 0x0000FFFF0000FFFF) * (static_cast<u8>(10000) << 32 | 1) >> 32;
}

// Delivers the decimal at `token`, given its up to eight bytes as last_bytes() does, when it is
// digits with a point among them.
static inline bool send_short_decimal(json* js, const char* token, const char* end, u8 bytes) {
    constexpr u8 ONES = 0x0101010101010101, POINTS = ONES * '.';
    const u8 others = bytes ^ POINTS;
    const u8 points = (others - ONES) & ~others & ONES << 7;
    if (points == 0 || points >> 63 != 0)
        return false;
    // The digits before the point take its place.
    const int point = std::countr_zero(points) / 8;
    const u8 before = (static_cast<u8>(1) << 8 * point) - 1;
    const u8 digits = (bytes & ~(before << 8 | 0xFF)) | (bytes & before) << 8 | '0';
    if (!are_digits(digits) || !decimal_point_is_point(js))
        return false;
    JSONVal value;
    (void)decimal_to_double(*token == '-', value_of_digits(digits), point - 7, &value.double_value);
    deliver(js, token, end, JSON_FLOAT, &value);
    return true;
}

constexpr int SHORT_DIGITS = BLOCK_BYTES;

// Which of sixteen bytes are among the last n: all of them, from TAKEN + n on.
alignas(16) inline constexpr signed char TAKEN[2 * SHORT_DIGITS] = {
    0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,
    -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1};

// Reads the `count` (1 to 16) characters before `end`, with 16 of them readable, when they are
// digits.
static inline bool read_short_integer(const char* end, int count, u8* value) {
    const Block digits = (load_block(end - SHORT_DIGITS) - '0') & load_block(TAKEN + count);
    if (bits_of(digits > 9) != 0)
        return false;
    *value = number_of(digits);
    return true;
}

// Delivers the number at `token` when it is an ordinary one near by and returns its end, else null.
// Short numbers take the same time whatever their length: branches on it would be mispredicted.
static inline const char* send_usual_number(json* js, const char* token) {
    const bool negative = *token == '-';
    const char* const end = near_word_end(js, token);
    if (end == nullptr)
        return nullptr;
    const int count = static_cast<int>(end - token) - negative;
    const bool is_short = count >= 1 && count <= SHORT_DIGITS && end - js->start >= SHORT_DIGITS;
    u8 magnitude;
    if (!is_short || !read_short_integer(end, count, &magnitude)) {
        if (is_short && count <= 8 && send_short_decimal(js, token, end, last_bytes(end, count)))
            return end;
        return send_ordinary_number(js, token, end) ? end : nullptr;
    }
    if (token[negative] == '0' && count > 1)
        return nullptr;  // octal
    JSONVal value;
    value.int_value = static_cast<s8>(negative ? -magnitude : magnitude);
    deliver(js, token, end, JSON_INTEGER, &value);
    return end;
}

// Four letters as a number, in lower case when `text` is letters.
static inline unsigned four_letters(const char* text) {
    unsigned letters;
    memcpy(&letters, text, sizeof letters);
    return letters | 0x20202020;
}

// Delivers the literal at `token` and returns its end; null when it is another word, or is
// followed by something unusual.
static inline const char* send_usual_literal(json* js, const char* token) {
    constexpr ptrdiff_t LONGEST = 5;
    if (js->end - token < LONGEST)
        return nullptr;
    const unsigned letters = four_letters(token);
    const char* end = token + 4;
    JSONType type;
    if (letters == four_letters("true"))
        type = JSON_TRUE;
    else if (letters == four_letters("null"))
        type = JSON_NULL;
    else if (letters == four_letters("fals") && (*end++ | 0x20) == 'e')
        type = JSON_FALSE;
    else
        return nullptr;
    if (*end != ',' && *end != '}' && *end != ']' && !is_blank(*end))
        return nullptr;
    deliver(js, token, end, type, nullptr);
    return end;
}

#endif
