// Option strings, walked in place.
//
// `args` always points to the first character of an item or to `end`, so every step starts with an
// item and ends by skipping delimiters. Each character is read a bounded number of times: one scan
// stops at the first '=' or delimiter, and no scan for '=' runs past the item.

#define KX_EMIT_BODIES  // of argIterDone()
#include "util/export/arguments.h"

#include "osal/export/osal_msmalloc.h"
#include "util/c/shared/vector/block.h"

#include <string.h>
#include <algorithm>

static_assert(sizeof(ArgIter) == 56 && offsetof(ArgIter, delim) == 16 &&
              offsetof(ArgIter, name) == 24 && offsetof(ArgIter, value) == 40);

// Continues with the first character at or after p that is no delimiter.
static inline void continue_at(ArgIterP iter, const char* p) {
    const char* const end = iter->end;
    const char delim = iter->delim;
    while (p < end && *p == delim)
        p++;
    iter->args = p;
}

// One bit for each byte of the block at p that equals `c`.
static inline unsigned matches(const char* p, char c) {
    return bits_of(equal_to(load_block(p), c));
}

// The position of the lowest bit that is set.
static inline unsigned lowest(unsigned bits) {
    return static_cast<unsigned>(__builtin_ctz(bits));
}

// The first of two characters at or after p, or `end`.
static inline const char* find_either(const char* p, const char* end, char a, char b) {
    if (end - p < BLOCK_BYTES) {
        while (p < end && *p != a && *p != b)
            p++;
        return p;
    }
    while (true) {
        if (unsigned found = matches(p, a) | matches(p, b); found != 0)
            return p + lowest(found);
        if (end - p <= BLOCK_BYTES)
            return end;
        // The last block overlaps the one before, so that it does not pass the end.
        p = std::min(p + BLOCK_BYTES, end - BLOCK_BYTES);
    }
}

static inline const char* find(const char* p, const char* end, char c) {
    return find_either(p, end, c, c);
}

// The closing quote of the text at p, or `end` when it is missing: an unclosed quote takes the
// rest. p[-1] is the opening quote, so looking one character back is always safe.
static const char* closing_quote(const char* p, const char* end, char quote) {
    p = find(p, end, quote);
    while (p < end && p[-1] == '\\')
        p = find(p + 1, end, quote);
    return p;
}

void argIterInit(ArgIterP iter, const char* args, size_t len, char delim) {
    *iter = ArgIter{};
    iter->end = args + len;
    iter->delim = delim;
    continue_at(iter, args);
}

void argIterInitDefault(ArgIterP iter, const char* args) {
    argIterInit(iter, args, strlen(args), ',');
}

static inline bool is_quote(char c) {
    return c == '"' || c == '\'';
}

// Takes the item that starts at iter->args and whose first '=' or delimiter is at `stop`.
[[gnu::noinline]] static void finish_item(ArgIterP iter, const char* stop) {
    const char* const end = iter->end;
    const char delim = iter->delim;
    iter->name = iter->args;
    iter->n_len = static_cast<size_t>(stop - iter->args);
    const char* value = stop;
    if (stop < end && *stop == '=') {
        value++;
        if (value < end && is_quote(*value)) {
            stop = closing_quote(value + 1, end, *value);
            value++;
        } else {
            stop = find(value, end, delim);
        }
    }
    iter->value = value;
    iter->v_len = static_cast<size_t>(stop - value);
    continue_at(iter, find(stop, end, delim));
}

static void take_item(ArgIterP iter) {
    finish_item(iter, find_either(iter->args, iter->end, '=', iter->delim));
}

// Takes the last item, which ends with the text; `equals` has a bit for each '=' in it.
[[gnu::noinline]] static void take_last(ArgIterP iter, unsigned equals) {
    const char* const end = iter->end;
    const char* const name_end = equals != 0 ? iter->args + lowest(equals) : end;
    const char* const value = name_end < end ? name_end + 1 : end;
    if (value < end && is_quote(*value))
        return finish_item(iter, name_end);
    iter->name = iter->args;
    iter->n_len = static_cast<size_t>(name_end - iter->args);
    iter->value = value;
    iter->v_len = static_cast<size_t>(end - value);
    iter->args = end;
}

void argIterNext(ArgIterP iter) {
    // Most items end within one block or two, where vector comparisons find the delimiter and '='.
    const char* const p = iter->args;
    const ptrdiff_t left = iter->end - p;
    if (left < BLOCK_BYTES)
        return take_item(iter);
    unsigned delimiters = matches(p, iter->delim);
    unsigned equals = matches(p, '=');
    if (delimiters == 0) {
        // The second block may overlap the first, so that it does not pass the end.
        const ptrdiff_t second = std::min(left, 2 * BLOCK_BYTES) - BLOCK_BYTES;
        delimiters = matches(p + second, iter->delim) << second;
        equals |= matches(p + second, '=') << second;
        if (delimiters == 0)
            return left <= 2 * BLOCK_BYTES ? take_last(iter, equals) : take_item(iter);
    }
    const char* const stop = p + lowest(delimiters);
    const char* name_end = stop;
    const char* value = stop;
    if ((equals & (delimiters - 1) & ~delimiters) != 0) {  // an '=' before the delimiter
        name_end = p + lowest(equals);
        value = name_end + 1;
        if (is_quote(*value))
            return finish_item(iter, name_end);
    }
    iter->name = p;
    iter->n_len = static_cast<size_t>(name_end - p);
    iter->value = value;
    iter->v_len = static_cast<size_t>(stop - value);
    continue_at(iter, stop + 1);
}

// A new, NUL-terminated copy of `len` characters, or null when memory is exhausted.
static char* copy(const char* text, size_t len) {
    char* result = static_cast<char*>(gsMalloc(len + 1));
    if (result == nullptr)
        return nullptr;
    memcpy(result, text, len);
    result[len] = '\0';
    return result;
}

bool argIterGetNext(ArgIterP iter, char** pname, char** pvalue) {
    if (argIterDone(iter))
        return false;
    argIterNext(iter);
    char* name = copy(iter->name, iter->n_len);
    char* value = copy(iter->value, iter->v_len);
    if (name != nullptr && value != nullptr) {
        *pname = name;
        *pvalue = value;
        return true;
    }
    if (name != nullptr)
        gsFree(name);
    if (value != nullptr)
        gsFree(value);
    return false;
}
