// The JSON reader: one pass over a text that has been checked to be UTF-8.
//
// A cursor travels through the functions below; the record of the parse keeps what a callback or
// an error may ask for. Every event and every error first stores the cursor and the place where
// an error's extract would begin; lines are counted only when an error names one.
//
// Text is looked at in blocks where nothing special occurs, and valid characters are copied as they
// are: decoding and encoding them again would give the same bytes. The terminating zero byte ends
// every scan. So does U+0000 in its two bytes, which counts as the end of the document; its first
// byte, C0, starts no other character, so scans look for that byte alone.
//
// Open containers are kept as one byte each in memory of the parse's own, so nesting costs no
// stack.

#include "util/export/json.h"

#include "osal/export/linux/osal_files_pd.h"
#include "osal/export/osal_msmalloc.h"
#include "util/c/shared/decimal.h"
#include "util/export/posix/stringutil_pd.h"
#include "util/export/scaled_printfmt.h"
#include "util/export/stacked_threadlocal.h"
#include "util/export/stringutil.h"
#include "util/export/utf8.h"

#include <immintrin.h>
#include <limits.h>
#include <setjmp.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>

static __slkey jsonkey = &jsonkey;  // finds the calling thread's innermost parse

constexpr size_t TOKEN_STEP = 256;      // the token buffer's first size, and by what it grows
constexpr size_t BUILT_IN_DEPTH = 256;  // containers; more need memory
constexpr int READ_EXISTING = FIO_READ | FIO_EXISTING;

struct json {
    jmp_buf jmp;  // where an error goes
    const char* start;
    const char* end;      // the terminating zero byte
    const char* pos;      // the cursor, stored before events and errors; gives the line
    const char* extract;  // the token, or else the character, that an error shows; null for none
    json_cb callback;
    void* arg;
    char* errbuf;
    size_t errlen;
    char* buffer;  // the token's bytes: static_buf until it has to grow
    size_t used;   // bytes of the token so far, without a terminator
    size_t size;   // of `buffer`; at least one byte always stays free
    char* open;    // what ends each open container, as JSONType: static_open until it has to grow
    size_t depth;
    size_t max_depth;
    enum { UNKNOWN, POINT, OTHER } decimal_point;  // the locale's, asked for when first needed
    char static_buf[TOKEN_STEP];
    char static_open[BUILT_IN_DEPTH];
};

static inline unsigned char byte_of(char c) {
    return static_cast<unsigned char>(c);
}

constexpr unsigned char ENCODED_ZERO = 0xC0;  // the first byte of U+0000

// What a byte means outside quoted strings. The end counts as an end of words, not as a blank.
struct CharTable {
    bool ends_word[256];
};

constexpr CharTable make_char_table() {
    CharTable table = {};
    for (int c = 0; c <= ' '; c++)
        table.ends_word[c] = true;
    for (const char* p = ",:]}/\\\"[{;=#"; *p != '\0'; p++)
        table.ends_word[static_cast<unsigned char>(*p)] = true;
    table.ends_word[ENCODED_ZERO] = true;
    return table;
}

constexpr CharTable CHARS = make_char_table();

static inline bool ends_word(char c) {
    return CHARS.ends_word[byte_of(c)];
}

static inline bool is_blank(char c) {
    return byte_of(c) - 1U < unsigned{' '};
}

static inline bool is_end(char c) {
    return c == '\0' || byte_of(c) == ENCODED_ZERO;
}

static inline bool is_digit(char c) {
    return byte_of(c) - unsigned{'0'} < 10U;
}

// Errors and events.

[[noreturn]] static void fail(json* js, const char* extract, const char* pos, const char* message) {
    js->extract = extract;
    js->pos = pos;
    jsonAbort("%s", message);
    abort();  // not reached: this parse is running
}

[[gnu::noinline]] [[noreturn]] static void out_of_memory(json* js, const char* extract,
                                                         const char* pos) {
    fail(js, extract, pos, "Out of memory");
}

// Delivers the event of the token at `token`, which ends before `pos`.
static inline void deliver(json* js, const char* token, const char* pos, JSONType type,
                           const JSONVal* value) {
    js->extract = token;
    js->pos = pos;
    js->callback(type, value, js->arg);
}

// The token buffer.

// Makes room for `count` more bytes beside the one that stays free.
static void make_room(json* js, size_t count, const char* extract, const char* pos) {
    while (js->used + count >= js->size) {
        char* old = js->buffer == js->static_buf ? nullptr : js->buffer;
        char* block = static_cast<char*>(gsRealloc(old, js->size + TOKEN_STEP));
        if (block == nullptr)
            out_of_memory(js, extract, pos);
        if (old == nullptr)
            memcpy(block, js->static_buf, js->used);
        js->buffer = block;
        js->size += TOKEN_STEP;
    }
}

static inline void append(json* js, const char* bytes, size_t count, const char* token,
                          const char* pos) {
    make_room(js, count, token, pos);
    memcpy(js->buffer + js->used, bytes, count);
    js->used += count;
}

static inline void terminate(json* js, const char* token, const char* pos) {
    make_room(js, 1, token, pos);
    js->buffer[js->used] = '\0';
}

static inline void deliver_text(json* js, const char* token, const char* pos, JSONType type) {
    JSONVal value;
    value.str.utf8 = js->buffer;
    value.str.length = js->used;
    deliver(js, token, pos, type, &value);
}

// Blocks. Those of the wide path are compiled for processors that have them.

#define WIDE [[gnu::target("avx2")]]

constexpr ptrdiff_t NARROW_BYTES = 16;
constexpr ptrdiff_t WIDE_BYTES = 32;

#ifdef KX_NARROW
constexpr bool processor_is_wide = false;  // the tests run this path on any processor
#else
static const bool processor_is_wide = __builtin_cpu_supports("avx2");
#endif

static inline __m128i load_narrow(const char* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

static inline void store_narrow(char* p, __m128i block) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), block);
}

// One bit for each byte that needs a look in a string: its quote, a backslash, the start of
// U+0000, and the control characters up to carriage return, most of which turn out harmless.
static inline unsigned special_narrow(__m128i block, char quote) {
    const __m128i controls = _mm_cmpeq_epi8(_mm_min_epu8(block, _mm_set1_epi8('\r')), block);
    const __m128i quotes = _mm_or_si128(_mm_cmpeq_epi8(block, _mm_set1_epi8(quote)),
                                        _mm_cmpeq_epi8(block, _mm_set1_epi8('\\')));
    const __m128i zeros = _mm_cmpeq_epi8(block, _mm_set1_epi8(static_cast<char>(ENCODED_ZERO)));
    return static_cast<unsigned>(
        _mm_movemask_epi8(_mm_or_si128(_mm_or_si128(controls, zeros), quotes)));
}

WIDE static inline unsigned special_wide(__m256i block, char quote) {
    const __m256i controls =
        _mm256_cmpeq_epi8(_mm256_min_epu8(block, _mm256_set1_epi8('\r')), block);
    const __m256i quotes = _mm256_or_si256(_mm256_cmpeq_epi8(block, _mm256_set1_epi8(quote)),
                                           _mm256_cmpeq_epi8(block, _mm256_set1_epi8('\\')));
    const __m256i zeros =
        _mm256_cmpeq_epi8(block, _mm256_set1_epi8(static_cast<char>(ENCODED_ZERO)));
    return static_cast<unsigned>(
        _mm256_movemask_epi8(_mm256_or_si256(_mm256_or_si256(controls, zeros), quotes)));
}

// The index of the lowest bit, or `none` without one.
static inline size_t first_of(unsigned bits, ptrdiff_t none) {
    return static_cast<size_t>(bits != 0 ? __builtin_ctz(bits) : none);
}

static inline bool is_special(char c, char quote) {
    return c == quote || c == '\\' || byte_of(c) <= '\r' || byte_of(c) == ENCODED_ZERO;
}

// White space and comments.

// One bit for each byte of the block that is no blank.
static inline unsigned significant(__m128i block) {
    const __m128i less_one = _mm_sub_epi8(block, _mm_set1_epi8(1));
    const __m128i blanks = _mm_cmpeq_epi8(_mm_min_epu8(less_one, _mm_set1_epi8(' ' - 1)), less_one);
    return static_cast<unsigned>(_mm_movemask_epi8(blanks)) ^ 0xFFFF;
}

static const char* skip_blanks(const json* js, const char* p) {
    for (; js->end - p >= NARROW_BYTES; p += NARROW_BYTES)
        if (const unsigned found = significant(load_narrow(p)); found != 0)
            return p + __builtin_ctz(found);
    while (is_blank(*p))
        p++;
    return p;
}

// The end of the comment whose slash is at p, past whatever closes it; p itself when none starts
// there.
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

static const char* skip_comments(const json* js, const char* p) {
    while (*p == '/') {
        const char* const after = skip_comment(p);
        if (after == p)
            break;
        p = skip_blanks(js, after);
    }
    return p;
}

// The first significant character at or after p, or the end.
static inline const char* next_clean(const json* js, const char* p) {
    if (is_blank(*p) && is_blank(*++p))  // most gaps are of one blank, or none
        p = skip_blanks(js, p + 1);
    return *p == '/' ? skip_comments(js, p) : p;
}

// Quoted strings.

struct HexTable {
    signed char value[256];  // -1 for what is no digit
};

constexpr HexTable make_hex_table() {
    HexTable table = {};
    for (int c = 0; c < 256; c++)
        table.value[c] = static_cast<signed char>(c >= '0' && c <= '9'   ? c - '0'
                                                  : c >= 'a' && c <= 'f' ? c - 'a' + 10
                                                  : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                                                         : -1);
    return table;
}

constexpr HexTable HEX = make_hex_table();

// The value of `count` plain digits, or -1.
static inline int plain_hex(const char* p, int count) {
    int value = 0;
    for (int i = 0; i < count; i++) {
        const int digit = HEX.value[byte_of(p[i])];
        if (digit < 0)
            return -1;
        value = value << 4 | digit;
    }
    return value;
}

// The value of any `count` characters as the platform reads them; moves the cursor past them.
static wchar_t scanned_hex(json* js, const char* token, const char** cursor, int count) {
    wchar_t text[5] = {};
    for (int i = 0; i < count; i++) {
        text[i] = next_utf2wchar(cursor);
        if (text[i] == 0)
            fail(js, token, *cursor, "Unexpected end of input");
    }
    unsigned value;
    if (swscanf(text, L"%x", &value) != 1)
        fail(js, token, *cursor, "Bad format number");
    return static_cast<wchar_t>(value);
}

// The end of the escape whose backslash is at p; its character goes to the token buffer.
static const char* scan_escape(json* js, const char* token, const char* p) {
    constexpr char NAMES[] = "bfnrt";
    constexpr char VALUES[] = "\b\f\n\r\t";
    const char name = p[1];
    p += 2;
    if (name == 'u' || name == 'x') {
        const int count = name == 'u' ? 4 : 2;
        wchar_t c = plain_hex(p, count);
        if (c >= 0)
            p += count;
        else
            c = scanned_hex(js, token, &p, count);
        char bytes[3];
        const unsigned length = wchar2utf8(bytes, c);
        append(js, bytes, length, token, p);
    } else {
        const char* const found = static_cast<const char*>(memchr(NAMES, name, sizeof NAMES - 1));
        if (found == nullptr)
            fail(js, token, p, "Bad escape sequence");
        append(js, VALUES + (found - NAMES), 1, token, p);
    }
    return p;
}

// Copies a byte or an escape that the block scan stopped at; p is not at the closing quote.
static const char* scan_special(json* js, const char* token, const char* p) {
    if (*p == '\\')
        return scan_escape(js, token, p);
    if (is_end(*p) || *p == '\n' || *p == '\r')
        fail(js, token, p + 1, "Unterminated string");
    append(js, p, 1, token, p);
    return p + 1;
}

// The next special byte at or after p; the bytes before it go to the token buffer.
static inline const char* copy_plain_narrow(json* js, const char* token, const char* p) {
    while (js->end - p >= NARROW_BYTES) {
        const __m128i block = load_narrow(p);
        const unsigned found = special_narrow(block, *token);
        const size_t count = first_of(found, NARROW_BYTES);
        if (js->used + NARROW_BYTES < js->size) {
            store_narrow(js->buffer + js->used, block);
            js->used += count;
        } else {
            append(js, p, count, token, p);
        }
        p += count;
        if (found != 0)
            return p;
    }
    for (; !is_special(*p, *token); p++)
        append(js, p, 1, token, p);
    return p;
}

WIDE static inline const char* copy_plain_wide(json* js, const char* token, const char* p) {
    while (js->end - p >= WIDE_BYTES) {
        const __m256i block = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
        const unsigned found = special_wide(block, *token);
        const size_t count = first_of(found, WIDE_BYTES);
        if (js->used + WIDE_BYTES < js->size) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(js->buffer + js->used), block);
            js->used += count;
        } else {
            append(js, p, count, token, p);
        }
        p += count;
        if (found != 0)
            return p;
    }
    return copy_plain_narrow(js, token, p);
}

// The rest of the string from p on, which is not yet in the buffer.
static const char* scan_rest_narrow(json* js, const char* token, const char* p) {
    while (*(p = copy_plain_narrow(js, token, p)) != *token)
        p = scan_special(js, token, p);
    terminate(js, token, p);
    return p + 1;
}

WIDE static const char* scan_rest_wide(json* js, const char* token, const char* p) {
    while (*(p = copy_plain_wide(js, token, p)) != *token)
        p = scan_special(js, token, p);
    terminate(js, token, p);
    return p + 1;
}

// The end of the string whose opening quote is at `token`. Its characters go to the token buffer,
// those of a short one in a single block.
static inline const char* scan_string(json* js, const char* token) {
    const char* const p = token + 1;
    js->used = 0;
    if (js->end - p >= NARROW_BYTES) {
        const __m128i block = load_narrow(p);
        const unsigned found = special_narrow(block, *token);
        store_narrow(js->buffer, block);
        const size_t count = first_of(found, 0);
        if (found != 0 && p[count] == *token) {
            js->buffer[count] = '\0';
            js->used = count;
            return p + count + 1;
        }
    }
    return processor_is_wide ? scan_rest_wide(js, token, p) : scan_rest_narrow(js, token, p);
}

// Numbers.

// True when the eight bytes at p are digits; they are then read into `value`.
static inline bool read_eight_digits(const char* p, u8* value) {
    u8 v;
    memcpy(&v, p, sizeof v);
    constexpr u8 UPPER_HALVES = 0xF0F0F0F0F0F0F0F0;
    if (((v & UPPER_HALVES) | ((v + 0x0606060606060606) & UPPER_HALVES) >> 4) != 0x3333333333333333)
        return false;
    // Neighbours are joined: bytes to pairs, pairs to fours, fours to eight.
    v = (v & 0x0F0F0F0F0F0F0F0F) * (10 << 8 | 1) >> 8;
    v = (v & 0x00FF00FF00FF00FF) * (100 << 16 | 1) >> 16;
    *value = (v & 0x0000FFFF0000FFFF) * (static_cast<u8>(10000) << 32 | 1) >> 32;
    return true;
}

// The end of the digits at p, which `value` takes on at its end, modulo 2^64.
static inline const char* read_digits(const json* js, const char* p, u8* value) {
    u8 eight;
    while (js->end - p >= 8 && read_eight_digits(p, &eight)) {
        *value = *value * 100'000'000 + eight;
        p += 8;
    }
    for (; is_digit(*p); p++)
        *value = *value * 10 + (byte_of(*p) - static_cast<u8>('0'));
    return p;
}

// The platform's conversions take the locale's decimal point, and ours only a point.
static inline bool decimal_point_is_point(json* js) {
    if (js->decimal_point == json::UNKNOWN) [[unlikely]]
        js->decimal_point = strtod("0.5", nullptr) == 0.5 ? json::POINT : json::OTHER;
    return js->decimal_point == json::POINT;
}

// Reads "e", a sign or none, and digits at p into `exponent`. Null for anything unusual.
static inline const char* read_exponent(const char* p, int* exponent) {
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

// Delivers the decimal at `token`, of which `digits` up to p have been read into `mantissa`. Null
// when it is unusual.
static inline const char* send_decimal(json* js, const char* token, const char* digits,
                                       const char* p, u8 mantissa) {
    ptrdiff_t count = p - digits;
    int exponent = 0;
    bool has_point = *p == '.';
    if (count == 0)
        return nullptr;
    if (has_point) {
        const char* const fraction = p + 1;
        p = read_digits(js, fraction, &mantissa);
        if (p == fraction)
            return nullptr;
        count += p - fraction;
        exponent = static_cast<int>(fraction - p);
    }
    if (*p == 'e' || (*p == 'E' && has_point))
        p = read_exponent(p, &exponent);
    if (p == nullptr || !ends_word(*p) || p - token >= ptrdiff_t{TOKEN_STEP} - 1)
        return nullptr;
    if (count > DECIMAL_DIGITS && significant_digits(digits, count) > DECIMAL_DIGITS)
        return nullptr;
    JSONVal value;
    if (!decimal_point_is_point(js) || !decimal_to_double(mantissa, exponent, &value.double_value))
        return nullptr;
    if (digits != token)
        value.double_value = -value.double_value;
    deliver(js, token, p, JSON_FLOAT, &value);
    return p;
}

// Delivers the number at `token` when it is an ordinary one and returns its end. Null leaves it to
// the platform's conversions, which decide about everything else.
static inline const char* send_ordinary_number(json* js, const char* token) {
    constexpr ptrdiff_t SAFE_DIGITS = 18;  // any integer of that many fits
    const char* const digits = token + (*token == '-');
    u8 magnitude = 0;
    const char* const p = read_digits(js, digits, &magnitude);
    if (!ends_word(*p))
        return send_decimal(js, token, digits, p, magnitude);
    const bool octal = *digits == '0' && p - digits > 1;
    if (p == digits || p - digits > SAFE_DIGITS || octal)
        return nullptr;
    JSONVal value;
    value.int_value = static_cast<s8>(digits != token ? -magnitude : magnitude);
    deliver(js, token, p, JSON_INTEGER, &value);
    return p;
}

// Bare words.

// Spares most words the platform's conversions: how a number, an infinity or a "nan" may start.
// A locale may have a decimal point beyond ASCII.
static bool may_be_number(const char* word) {
    const char c = *word;
    if (is_digit(c) || c == '-' || c == '+' || c == '.' || byte_of(c) >= 0x80)
        return true;
    return kestrum_util_strnicmp(word, "inf", 3) == 0 || kestrum_util_strnicmp(word, "nan", 3) == 0;
}

static bool try_send_number(json* js, const char* token, const char* pos) {
    const char* const word = js->buffer;
    JSONVal value;
    char rest;
    if (!may_be_number(word))
        return false;
    if (strpbrk(word, ".e") != nullptr && sscanf(word, "%lf%c", &value.double_value, &rest) == 1) {
        deliver(js, token, pos, JSON_FLOAT, &value);
        return true;
    }
    long integer;
    if (sscanf(word, "%li%c", &integer, &rest) != 1)
        return false;
    value.int_value = integer;
    deliver(js, token, pos, JSON_INTEGER, &value);
    return true;
}

// The end of the word at `token`, which is copied to the token buffer.
static const char* scan_word(json* js, const char* token) {
    const char* p = token;
    while (!ends_word(*p))
        p++;
    if (p == token)
        fail(js, token, token, "Missing value");
    js->used = 0;
    append(js, token, static_cast<size_t>(p - token), token, p);
    terminate(js, token, p);
    return p;
}

// Delivers the word at `token` as whatever it is.
static const char* send_word(json* js, const char* token) {
    const char* const p = scan_word(js, token);
    if (kestrum_util_stricmp(js->buffer, "true") == 0)
        deliver(js, token, p, JSON_TRUE, nullptr);
    else if (kestrum_util_stricmp(js->buffer, "false") == 0)
        deliver(js, token, p, JSON_FALSE, nullptr);
    else if (kestrum_util_stricmp(js->buffer, "null") == 0)
        deliver(js, token, p, JSON_NULL, nullptr);
    else if (!try_send_number(js, token, p))
        deliver_text(js, token, p, JSON_STRING);
    return p;
}

// Four letters as a number, in lower case when `text` is letters.
static inline unsigned four_letters(const char* text) {
    unsigned letters;
    memcpy(&letters, text, sizeof letters);
    return letters | 0x20202020;
}

// Delivers the literal at `token` and returns its end; null when it is another word, or so near
// the end of the text that the general way is taken.
static inline const char* send_literal(json* js, const char* token) {
    constexpr ptrdiff_t LONGEST = 5;
    if (js->end - token < LONGEST)
        return nullptr;
    const unsigned letters = four_letters(token);
    const char* p = token + 4;
    JSONType type;
    if (letters == four_letters("true"))
        type = JSON_TRUE;
    else if (letters == four_letters("null"))
        type = JSON_NULL;
    else if (letters == four_letters("fals") && (*p++ | 0x20) == 'e')
        type = JSON_FALSE;
    else
        return nullptr;
    if (!ends_word(*p))
        return nullptr;
    deliver(js, token, p, type, nullptr);
    return p;
}

static inline const char* send_scalar(json* js, const char* token) {
    const char c = *token;
    const char* p = nullptr;
    if (c == '"' || c == '\'') {
        p = scan_string(js, token);
        deliver_text(js, token, p, JSON_STRING);
        return p;
    }
    if (is_digit(c) || c == '-')
        p = send_ordinary_number(js, token);
    else
        p = send_literal(js, token);
    return p != nullptr ? p : send_word(js, token);
}

// Containers.

static void deepen(json* js, const char* bracket) {
    char* old = js->open == js->static_open ? nullptr : js->open;
    char* block = static_cast<char*>(gsRealloc(old, js->max_depth * 2));
    if (block == nullptr)
        out_of_memory(js, bracket, bracket + 1);
    if (old == nullptr)
        memcpy(block, js->static_open, js->depth);
    js->open = block;
    js->max_depth *= 2;
}

static inline const char* begin_container(json* js, const char* bracket) {
    if (js->depth == js->max_depth)
        deepen(js, bracket);
    const bool is_array = *bracket == '[';
    js->open[js->depth++] = is_array ? JSON_ARRAY_END : JSON_OBJECT_END;
    deliver(js, bracket, bracket + 1, is_array ? JSON_ARRAY_BEGIN : JSON_OBJECT_BEGIN, nullptr);
    return bracket + 1;
}

static inline bool in_object(const json* js) {
    return js->depth > 0 && js->open[js->depth - 1] == JSON_OBJECT_END;
}

// What follows a member's value at p: the next member's start, or the closing brace.
static inline const char* read_separator(json* js, const char* p) {
    p = next_clean(js, p);
    if (*p == ',' || *p == ';')
        return p + 1;
    if (*p != '}')
        fail(js, p, p, "Bad character");
    return p;
}

static inline const char* end_container(json* js, const char* bracket) {
    const JSONType end = static_cast<JSONType>(js->open[--js->depth]);
    deliver(js, bracket, bracket + 1, end, nullptr);
    return in_object(js) ? read_separator(js, bracket + 1) : bracket + 1;
}

// Reads up to the next member's start, or up to the first event of a container that is its value.
static inline const char* read_member(json* js, const char* p) {
    p = next_clean(js, p);
    if (*p == '}')
        return end_container(js, p);
    if (is_end(*p))
        fail(js, p, p, "Object must end with '}'");
    const char* const key = p;
    p = *key == '"' || *key == '\'' ? scan_string(js, key) : scan_word(js, key);
    deliver_text(js, key, p, JSON_KEY);

    p = next_clean(js, p);
    if (*p != ':' && *p != '=')
        fail(js, p, p, "Unexpected char");
    p = next_clean(js, p + 1);
    if (*p == '{' || *p == '[')
        return begin_container(js, p);
    return read_separator(js, send_scalar(js, p));
}

static inline const char* read_element(json* js, const char* p) {
    p = next_clean(js, p);
    if (*p == ',')
        return p + 1;
    if (*p == ']')
        return end_container(js, p);
    if (*p == '{' || *p == '[')
        return begin_container(js, p);
    return send_scalar(js, p);
}

static void read_document(json* js) {
    const char* p = next_clean(js, js->start);
    if (*p != '{' && *p != '[')
        fail(js, p, p, "Object must start with '{'");
    p = begin_container(js, p);
    while (js->depth > 0)
        p = in_object(js) ? read_member(js, p) : read_element(js, p);
}

// The parse itself; errors come back here. The record belongs to the caller's frame, so its fields
// are sure to be as they were left.
static int run(json* js) {
    if (setjmp(js->jmp) != 0)
        return -1;
    if (!utf8_validate(js->start, static_cast<size_t>(js->end - js->start), false))
        jsonAbort("Illegal UTF8 text stream");
    read_document(js);
    return 0;
}

int jsonParse(const char* str, json_cb cb, void* arg, char* errbuf, size_t errlen) {
    json js;
    js.start = js.pos = str;
    js.end = str + strlen(str);
    js.extract = nullptr;
    js.callback = cb;
    js.arg = arg;
    js.errbuf = errbuf;
    js.errlen = errlen;
    js.buffer = js.static_buf;
    js.used = 0;
    js.size = sizeof js.static_buf;
    js.open = js.static_open;
    js.depth = 0;
    js.max_depth = sizeof js.static_open;
    js.decimal_point = json::UNKNOWN;

    __tlnode node;
    stackedLocalPush(&node, &js, jsonkey);
    const int result = run(&js);
    stackedLocalPop(&node);
    if (js.buffer != js.static_buf)
        gsFree(js.buffer);
    if (js.open != js.static_open)
        gsFree(js.open);
    return result;
}

// Reads the `size` bytes of the open file into memory and parses them.
static int parse_open_file(fio_fd fd, filesize size, const char* path, json_cb cb, void* arg,
                           char* errbuf, size_t errlen) {
    if (size > INT_MAX) {
        kestrum_util_snprintf(errbuf, errlen, "Too large file: %s", path);
        return -1;
    }
    const size_t bytes = size < 0 ? 0 : static_cast<size_t>(size);
    char* const text = static_cast<char*>(gsMalloc(bytes + 1));
    if (text == nullptr) {
        kestrum_util_snprintf(errbuf, errlen, "Could not allocate %lu%sB bytes",
                              scaledownSize(bytes), scaledDownSizeSuffix(bytes));
        return -1;
    }
    int result = -1;
    if (fio_read_fully(fd, text, static_cast<int>(bytes)) != size) {
        kestrum_util_snprintf(errbuf, errlen, "Could not read %s", path);
    } else {
        text[bytes] = '\0';
        result = jsonParse(text, cb, arg, errbuf, errlen);
    }
    gsFree(text);
    return result;
}

int jsonParseFile(const char* path, json_cb cb, void* arg, char* errbuf, size_t errlen) {
    const fio_fd fd = fio_open(path, READ_EXISTING);
    if (fd == -1) {
        kestrum_util_snprintf(errbuf, errlen, "Could not open %s", path);
        return -1;
    }
    const int result = parse_open_file(fd, fio_fdsize(fd), path, cb, arg, errbuf, errlen);
    fio_close(fd);
    return result;
}

static unsigned line_of(const json* js, const char* pos) {
    unsigned line = 1;
    for (const char* p = js->start; p < pos && p < js->end; p++)
        line += *p == '\n';
    return line;
}

// Appends the line and what the rest of the line holds from the extract's start. A closing quote
// is kept room for; when there is none, nothing more is appended.
static void append_place(const json* js) {
    char* out = js->errbuf + strlen(js->errbuf);
    size_t room = js->errlen - static_cast<size_t>(out - js->errbuf);
    kestrum_util_snprintf(out, room, ", line %u, \"", line_of(js, js->pos));
    const size_t added = strlen(out);
    out += added;
    room -= added;
    for (const char* p = js->extract; room > 2 && *p != '\0' && *p != '\n'; room--)
        *out++ = *p++;
    if (room >= 2)
        memcpy(out, "\"", 2);
}

void jsonAbort(const char* fmt, ...) {
    json* const js = static_cast<json*>(stackedLocalGet(jsonkey));
    if (js == nullptr)
        return;
    if (js->errbuf != nullptr && js->errlen > 0) {
        js->errbuf[0] = '\0';
        va_list args;
        va_start(args, fmt);
        kestrum_util_vsnprintf(js->errbuf, js->errlen, fmt, args);
        va_end(args);
        if (js->extract != nullptr)
            append_place(js);
    }
    longjmp(js->jmp, 1);
}
