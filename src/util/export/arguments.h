// Option strings: items separated by a delimiter, each a bare name or name=value.
#ifndef UTIL_EXPORT_ARGUMENTS_H
#define UTIL_EXPORT_ARGUMENTS_H

#include "util/export/arguments_types.h"

#include <stdbool.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

// The argument iterator.
//
// Items are separated by runs of the delimiter, so empty items never show up. An item without
// '=' is a bare name and has the empty value; otherwise the first '=' ends the name. A value that
// starts with a single or double quote runs to the next such quote that does not follow a
// backslash, delimiters included; without a closing quote it takes the rest of the text. The
// quotes are not part of the value, backslashes stay in it, and what follows a closing quote up
// to the next delimiter is ignored. White space is not trimmed. Every text splits into items:
// there is no such thing as a malformed one.
//
//     ArgIter iter;
//     for (argIterInitDefault(&iter, "heap=64m,verbose"); !argIterDone(&iter);) {
//         argIterNext(&iter);
//         printf("%.*s\n", (int)iter.n_len, iter.name);
//     }
//
// An iterator belongs to one thread; any number of them may walk the same text.

// Starts a walk over the `len` characters at `args`, which need not be terminated and hold no NUL.
// `delim` is any character but '='.
void argIterInit(ArgIterP iter, const char* args, size_t len, char delim);

// Starts a walk over a terminated string with the delimiter ','.
void argIterInitDefault(ArgIterP iter, const char* args);

// True when no item is left. Callers compile it in; the library exports it all the same.
__attribute__((gnu_inline)) extern inline bool argIterDone(ArgIterP iter) {
    return iter->args >= iter->end;
}

// Takes the next item into `name`, `n_len`, `value` and `v_len`. When no item is left, both
// lengths become 0 and the walk stays at its end.
void argIterNext(ArgIterP iter);

// Takes the next item as two fresh, terminated strings; a bare name yields the value "".
//
//   pname, pvalue  receive the strings, which the caller returns with gsFree(); untouched when
//                  the result is false
//
// Returns false when no item is left, or when memory ran out: the item is then lost, and
// whoever saw argIterDone() false before knows that this is what happened.
bool argIterGetNext(ArgIterP iter, char** pname, char** pvalue);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
