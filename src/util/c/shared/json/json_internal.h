// What the reader's files share: the record of a parse, its errors and events, its token buffer.
#ifndef UTIL_C_SHARED_JSON_JSON_INTERNAL_H
#define UTIL_C_SHARED_JSON_JSON_INTERNAL_H

#include "util/c/shared/json/index.h"
#include "util/export/json.h"
#include "util/export/stacked_threadlocal.h"

#include <setjmp.h>
#include <stddef.h>
#include <string.h>

constexpr size_t TOKEN_STEP = 256;       // the token buffer's first size, and by what it grows
constexpr size_t BUILT_IN_DEPTH = 1024;  // open containers; more need memory

struct json;

// Delivers the word from `token` to `end` when it is a number that needs none of the platform's
// conversions and returns its end, else null.
using SendNumber = const char*(json* js, const char* token, const char* end);

struct json {
    const char* end;      // the text's terminating zero byte
    const char* pos;      // the cursor, stored before events and errors; gives the line
    const char* extract;  // the token, or else the character, that an error shows; null for none
    json_cb callback;
    void* arg;
    char* buffer;  // the token's bytes: static_buf until it has to grow
    size_t used;   // bytes of the token so far
    size_t size;   // of `buffer`; at least one byte always stays free
    char* open;    // what ends each open container, a JSONType: static_open until it has to grow
    size_t depth;
    size_t max_depth;
    SendNumber* send_number;
    enum { UNKNOWN, POINT, OTHER } decimal_point;  // the locale's, asked for when first needed
    const char* start;
    char* errbuf;
    size_t errlen;
    jmp_buf jmp;  // where an error goes
    Index index;
    char static_buf[TOKEN_STEP];
    char static_open[BUILT_IN_DEPTH];
};

static inline unsigned char byte_of(char c) {
    return static_cast<unsigned char>(c);
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

// record.cpp

extern __slkey jsonkey;  // finds the calling thread's innermost parse

// Resizes a block of the record that is the built-in one, of which `used` bytes count, or memory
// of its own.
char* resize(json* js, char* block, const char* built_in, size_t used, size_t size);

// Ends the parse with an error: the cursor has come to `pos`, and the text from `extract` on is
// shown.
[[noreturn]] void fail(json* js, const char* extract, const char* pos, const char* message);

// The same for a character that should not be where it is.
[[noreturn]] static inline void fail_at(json* js, const char* p, const char* message) {
    fail(js, p, p, message);
}

// Delivers the event of the token at `token`, which ends before `pos`.
static inline void deliver(json* js, const char* token, const char* pos, JSONType type,
                           const JSONVal* value) {
    js->extract = token;
    js->pos = pos;
    js->callback(type, value, js->arg);
}

// Delivers the text in the token buffer, terminated by the caller.
static inline void deliver_text(json* js, const char* token, const char* pos, JSONType type) {
    JSONVal value;
    value.str.utf8 = js->buffer;
    value.str.length = js->used;
    deliver(js, token, pos, type, &value);
}

// The token buffer. Whoever fills it has stored the token's start in `extract`, which errors then
// show; `pos` is where the cursor is.

// Grows the buffer for `count` more bytes beside the one that stays free.
void grow_buffer(json* js, size_t count, const char* pos);

static inline void make_room(json* js, size_t count, const char* pos) {
    if (js->used + count >= js->size) [[unlikely]]
        grow_buffer(js, count, pos);
}

static inline void append(json* js, const char* bytes, size_t count, const char* pos) {
    make_room(js, count, pos);
    memcpy(js->buffer + js->used, bytes, count);
    js->used += count;
}

static inline void terminate(json* js, const char* pos) {
    make_room(js, 1, pos);
    js->buffer[js->used] = '\0';
}

#endif
