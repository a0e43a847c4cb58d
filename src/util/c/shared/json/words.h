// Bare words: numbers, literals and keys.
#ifndef UTIL_C_SHARED_JSON_WORDS_H
#define UTIL_C_SHARED_JSON_WORDS_H

#include "util/c/shared/json/json_internal.h"

// The end of the word at `token`, whose bytes go to the token buffer.
const char* scan_word(json* js, const char* token);

// Delivers the word at `token`, of any kind, and returns its end.
const char* send_word(json* js, const char* token);

// Chooses the function that delivers numbers on this processor.
SendNumber* number_sender();

// The end of the word at p, or null when it is further than one look at the index shows.
static inline const char* word_end_fast(json* js, const char* p) {
    const u8 stops = bits_at(&js->index, js->index.word_stops, p, js->end);
    return stops != 0 ? p + std::countr_zero(stops) : nullptr;
}

// Four characters as a number; letters are made lower case.
static inline unsigned four_letters(const char* text) {
    unsigned letters;
    memcpy(&letters, text, sizeof letters);
    return letters | 0x20202020;
}

// Delivers the literal at `token` and returns its end. Null for any other word, and when the next
// character is neither a blank nor one of ",}]".
static inline const char* send_literal_fast(json* js, const char* token) {
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
