// White space and quoted strings.
#ifndef UTIL_C_SHARED_JSON_TEXT_H
#define UTIL_C_SHARED_JSON_TEXT_H

#include "util/c/shared/json/json_internal.h"

// The first character at or after p that is neither blank nor in a comment; *p is a slash.
const char* skip_comments(json* js, const char* p);

// The first character at or after p that is no blank.
static inline const char* skip_blanks(json* js, const char* p) {
    u8 found;
    while ((found = bits_at(&js->index, js->index.significant, p, js->end)) == 0)
        p += BITS_AT_ONCE;
    return p + std::countr_zero(found);
}

// The first significant character at or after p, or the end. Most gaps have one blank or none. The
// result is then p plus a constant, so what follows need not wait for a scan.
static inline const char* next_clean(json* js, const char* p) {
    const char* clean = !is_blank(p[0]) ? p : !is_blank(p[1]) ? p + 1 : skip_blanks(js, p + 2);
    return *clean == '/' ? skip_comments(js, clean) : clean;
}

static inline bool begins_string(char c) {
    return c == '"' || c == '\'';
}

// The end of the string whose opening quote is at `token`; its characters go to the token buffer.
const char* scan_string(json* js, const char* token);

// The same, for a string between double quotes that is short and has no escapes.
static inline const char* scan_string_fast(json* js, const char* token) {
    constexpr ptrdiff_t MAX_BYTES = 64;  // always copied, so that no branch depends on the length
    const char* const text = token + 1;
    const u8 stops = bits_at(&js->index, js->index.string_stops, text, js->end);
    const size_t length = static_cast<size_t>(std::countr_zero(stops));
    if (stops == 0 || text[length] != '"' || *token != '"') [[unlikely]]
        return scan_string(js, token);
    if (js->end - text >= MAX_BYTES) [[likely]]
        memcpy(js->buffer, text, MAX_BYTES);
    else
        memcpy(js->buffer, text, length);
    js->buffer[length] = '\0';
    js->used = length;
    return text + length + 1;
}

#endif
