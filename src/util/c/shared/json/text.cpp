// Comments and strings of all kinds.
//
// A comment may start wherever white space is allowed, also directly after another comment. A block
// comment ends at the first "*/"; an unclosed one takes the rest of the document.

#include "util/c/shared/json/text.h"

#include "util/c/shared/decimal.h"
#include "util/c/shared/digits.h"
#include "util/c/shared/platform_numbers.h"
#include "util/export/utf8.h"

#include <wchar.h>
#include <algorithm>

// The end of the comment whose slash is at p; p itself when none starts there.
static const char* skip_comment(const char* p) {
    if (p[1] == '/') {
        while (*p != '\n' && !is_end(*p))
            p++;
    } else if (p[1] == '*') {
        for (p += 2; !is_end(*p); p++)
            if (p[0] == '*' && p[1] == '/')
                return p + 2;
    }
    return p;
}

const char* skip_comments(json* js, const char* p) {
    while (*p == '/') {
        const char* const after = skip_comment(p);
        if (after == p)
            break;
        p = skip_blanks(js, after);
    }
    return p;
}

struct EscapeTable {
    char character[256];  // 0 when the letter is no escape
};

constexpr EscapeTable make_escape_table() {
    EscapeTable table = {};
    for (int i = 0; i < 5; i++)
        table.character[static_cast<unsigned char>("bfnrt"[i])] = "\b\f\n\r\t"[i];
    return table;
}

constexpr EscapeTable ESCAPES = make_escape_table();

// The value of `count` hexadecimal digits, or -1 when one of them is no such digit.
static inline int read_hex_fast(const char* p, int count) {
    unsigned value = 0;
    for (int i = 0; i < count; i++) {
        const unsigned digit = hex_digit(p[i]);
        if (digit > 0xF)
            return -1;
        value = value << 4 | digit;
    }
    return static_cast<int>(value);
}

// White space beyond ASCII, which counts in locales that have such characters. iswspace() is not
// used, because C libraries disagree on it.
static bool is_wide_space(wchar_t c) {
    return !locale_is_ascii() && (c == 0x1680 || (c >= 0x2000 && c <= 0x200A && c != 0x2007) ||
                                  c == 0x2028 || c == 0x2029 || c == 0x205F || c == 0x3000);
}

// A character for the platform's conversions, which read numbers in ASCII only.
static char narrowed(wchar_t c) {
    if (c < 0x80)
        return static_cast<char>(c);
    return is_wide_space(c) ? ' ' : '?';
}

// The value of any `count` characters as the platform reads them; moves the cursor past them.
static wchar_t read_hex_by_platform(json* js, const char** cursor, int count) {
    char text[5] = {};
    for (int i = 0; i < count; i++) {
        text[i] = narrowed(next_utf2wchar(cursor));
        if (text[i] == '\0')
            fail(js, js->extract, *cursor, "Unexpected end of input");
    }
    u8 value;
    if (unsigned_by_platform(text, 16, &value) == nullptr)
        fail(js, js->extract, *cursor, "Bad format number");
    return static_cast<wchar_t>(value);
}

// The end of the escape whose backslash is at p; its character goes to the token buffer.
static const char* scan_escape(json* js, const char* p) {
    const char name = p[1];
    p += 2;
    if (name == 'u' || name == 'x') {
        const int count = name == 'u' ? 4 : 2;
        const int value = read_hex_fast(p, count);  // a wchar_t may be unsigned
        if (value >= 0)
            p += count;
        const wchar_t c =
            value >= 0 ? static_cast<wchar_t>(value) : read_hex_by_platform(js, &p, count);
        char bytes[3];
        const unsigned length = wchar2utf8(bytes, c);
        append(js, bytes, length, p);
    } else {
        const char character = ESCAPES.character[byte_of(name)];
        if (character == '\0')
            fail(js, js->extract, p, "Bad escape sequence");
        append(js, &character, 1, p);
    }
    return p;
}

// Copies what stopped a scan at p, other than the closing quote.
static const char* scan_special(json* js, const char* p) {
    if (*p == '\\')
        return scan_escape(js, p);
    if (is_end(*p) || *p == '\n' || *p == '\r')
        fail(js, js->extract, p + 1, "Unterminated string");
    append(js, p, 1, p);
    return p + 1;
}

// Copies characters and the escapes above until the text or the token buffer is near its end.
// Returns where that, or another character, stopped it.
static const char* copy_fast(json* js, const char* p) {
    constexpr ptrdiff_t BLOCK = 64;          // BITS_AT_ONCE of them count; the size is a constant
    constexpr ptrdiff_t MARGIN = BLOCK + 4;  // a block, an escape, and the byte that stays free
    char* out = js->buffer + js->used;
    char* const last_out = js->buffer + js->size - MARGIN;
    const char* const last = js->end - MARGIN;
    while (p <= last && out <= last_out) {
        const u8 stops = bits_at(&js->index, js->index.string_stops, p, js->end);
        memcpy(out, p, BLOCK);
        if (stops == 0) {
            p += BITS_AT_ONCE;
            out += BITS_AT_ONCE;
            continue;
        }
        const int length = std::countr_zero(stops);
        const char* const stop = p + length;
        p = stop;
        out += length;
        if (*stop != '\\')
            break;
        if (const char character = ESCAPES.character[byte_of(stop[1])]; character != '\0') {
            *out++ = character;
            p = stop + 2;
            continue;
        }
        const int value = stop[1] == 'u' ? read_hex_fast(stop + 2, 4) : -1;
        if (value < 0)
            break;
        out += wchar2utf8(out, static_cast<wchar_t>(value));
        p = stop + 6;
    }
    js->used = static_cast<size_t>(out - js->buffer);
    return p;
}

// How many bytes from p on are copied as they are.
static size_t count_copied(json* js, const char* p, char quote) {
    if (quote == '"') {
        const u8 stops = bits_at(&js->index, js->index.string_stops, p, js->end);
        return static_cast<size_t>(std::min(std::countr_zero(stops), BITS_AT_ONCE));
    }
    const char* stop = p;
    while (*stop != quote && *stop != '\\' && byte_of(*stop) >= ' ' && !is_end(*stop))
        stop++;
    return static_cast<size_t>(stop - p);
}

const char* scan_string(json* js, const char* token) {
    const char quote = *token;
    const char* p = token + 1;
    js->extract = token;
    js->used = 0;
    while (true) {
        if (quote == '"')
            p = copy_fast(js, p);
        const size_t count = count_copied(js, p, quote);
        append(js, p, count, p);
        p += count;
        if (*p == quote)
            break;
        if (count == 0)
            p = scan_special(js, p);
    }
    terminate(js, p);
    return p + 1;
}
