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

// Delivers the word from `token` to `end` and returns its end, if it is a number that does not need
// the platform's conversions; returns null otherwise.
using SendNumber = const char*(json* js, const char* token, const char* end);

struct json {
    const char* end;      // the text's terminating zero byte
    const char* pos;      // the cursor, stored before events and errors; gives the line
    const char* extract;  // the token or the character that an error shows; null for none
    json_cb callback;
    void* arg;
    char* buffer;  // the token's bytes: static_buf until it has to grow
    size_t used;   // bytes of the token so far
    size_t size;   // of `buffer`; at least one byte always stays free
    char* open;    // the closing JSONType of each open container: static_open until it has to grow
    size_t depth;
    size_t max_depth;
    SendNumber* send_number;
    enum { UNKNOWN, POINT, OTHER } decimal_point;  // the locale's, read when first needed
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

// Resizes a block of the record. It is the built-in block, whose first `used` bytes are kept, or a
// block of the heap.
char* resize(json* js, char* block, const char* built_in, size_t used, size_t size);

// Ends the parse with an error. `pos` is the cursor; the error shows the text from `extract` on.
[[noreturn]] void fail(json* js, const char* extract, const char* pos, const char* message);

// The same for an unexpected character.
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

// The token buffer. Code that fills it has stored the token's start in `extract` before, because
// errors show it; `pos` is the cursor.

// Grows the buffer to hold `count` more bytes and the one that stays free.
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
