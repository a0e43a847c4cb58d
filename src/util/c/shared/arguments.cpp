// Option strings, walked in place.
//
// `args` always stands on the first character of an item or on `end`, so every step starts with
// an item and ends by skipping delimiters. Each character is looked at a bounded number of times:
// one scan stops at whichever of '=' and the delimiter comes first, and no scan for '=' runs past
// the item.

#include "util/export/arguments.h"

#include "osal/export/osal_msmalloc.h"

#include <immintrin.h>
#include <string.h>

static inline void skip(ArgIterP iter) {
    while (iter->args < iter->end && *iter->args == iter->delim)
        iter->args++;
}

constexpr ptrdiff_t BLOCK_BYTES = 16;

// One bit for each byte of the block at p that equals `c`.
static inline unsigned matches(const char* p, char c) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(block, _mm_set1_epi8(c))));
}

// The first of two characters at or after p, or `end`.
static inline const char* find_either(const char* p, const char* end, char a, char b) {
    for (; end - p >= BLOCK_BYTES; p += BLOCK_BYTES)
        if (unsigned found = matches(p, a) | matches(p, b); found != 0)
            return p + __builtin_ctz(found);
    while (p < end && *p != a && *p != b)
        p++;
    return p;
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
    iter->args = args;
    iter->end = args + len;
    iter->delim = delim;
    skip(iter);
}

void argIterInitDefault(ArgIterP iter, const char* args) {
    argIterInit(iter, args, strlen(args), ',');
}

bool argIterDone(ArgIterP iter) {
    return iter->args >= iter->end;
}

void argIterNext(ArgIterP iter) {
    const char* const end = iter->end;
    const char* stop = find_either(iter->args, end, '=', iter->delim);
    iter->name = iter->args;
    iter->n_len = static_cast<size_t>(stop - iter->args);
    if (stop == end || *stop == iter->delim) {
        iter->value = stop;
        iter->v_len = 0;
    } else {
        const char* value = stop + 1;
        if (value < end && (*value == '"' || *value == '\'')) {
            stop = closing_quote(value + 1, end, *value);
            value++;
        } else {
            stop = find(value, end, iter->delim);
        }
        iter->value = value;
        iter->v_len = static_cast<size_t>(stop - value);
        stop = find(stop, end, iter->delim);
    }
    iter->args = stop;
    skip(iter);
}

// A fresh, terminated copy of `len` characters, or null when memory is exhausted.
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
