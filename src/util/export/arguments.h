// Option strings: the items of a text, typed values, and declared arguments that a text is parsed
// into.
#ifndef UTIL_EXPORT_ARGUMENTS_H
#define UTIL_EXPORT_ARGUMENTS_H

#include "sharedinc/compiler.h"
#include "util/export/arguments_types.h"

#include <stdbool.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

// The argument iterator.
//
// This is the grammar of items for every option string, that of logging included. Items are
// separated by one or more delimiters, so there are no empty items. An item is a bare name, or a
// name,
// '=' and a value. A value may be quoted with single or double quotes. Every text is valid.
//
//     text           name and value of each item, with ',' as delimiter
//     a,,b           a and the empty value; b and the empty value
//     a=1            a and 1
//     a=b=c          a and b=c: the first '=' ends the name
//      a = 1         " a " and " 1": white space is kept
//     a='x,y',b      a and x,y; b: a quoted value may hold delimiters
//     a="x"y,b       a and x; b: text between the closing quote and the delimiter is ignored
//     a='x\'y'       a and x\'y: no end at a quote after a backslash, which stays
//     a='x,b         a and x,b: without a closing quote the value takes the rest
//     a=x'y          a and x'y: only a quote at the start of the value counts
//     'a,b'=1        'a and the empty value; b' and 1: names cannot be quoted
//
//     ArgIter iter;
//     for (argIterInitDefault(&iter, "heap=64m,verbose"); !argIterDone(&iter);) {
//         argIterNext(&iter);
//         printf("%.*s\n", (int)iter.n_len, iter.name);
//     }
//
// An iterator belongs to one thread; any number of them may walk the same text.

// Starts a walk over the `len` characters at `args`, which need no terminator and hold no NUL.
// `delim` is any character except '='.
void argIterInit(ArgIterP iter, const char* args, size_t len, char delim);

// Starts a walk over a NUL-terminated string with the delimiter ','.
void argIterInitDefault(ArgIterP iter, const char* args);

// True when no item is left. It is inline; the library exports it, too.
KX_EXPORTED_INLINE bool argIterDone(ArgIterP iter) {
    return iter->args >= iter->end;
}

// Stores the next item in `name`, `n_len`, `value` and `v_len` of the iterator. When no item is
// left, both lengths become 0 and the walk stays at its end.
void argIterNext(ArgIterP iter);

// Copies the next item into two new NUL-terminated strings. A bare name has the value "".
//
//   pname, pvalue  receive the strings, which the caller frees with gsFree(); untouched when the
//                  result is false
//
// Returns false when no item is left or when memory runs out. In the second case the item is lost;
// argIterDone() before the call tells the two cases apart.
bool argIterGetNext(ArgIterP iter, char** pname, char** pvalue);

// Typed values. These four keep no state and may be called from any thread.

// Parses a value of the given type.
//
//   v          receives it in the type's member. A string is not copied: the value is `str` itself.
//              After a failure its contents mean nothing.
//   str        NUL-terminated, not null. The syntax is that of strparse.h: strToBool() for
//              TYPE_bool, strToSuffixInt() for TYPE_int, strToSuffixLong() for TYPE_s8,
//              strToSuffixULong() for TYPE_u8, strToSuffixSize(), strToSuffixDouble(),
//              strToSuffixNanoTime() and, for TYPE_pvoid, strToSuffixAddress(). Every text is a
//              TYPE_pcchar.
//   error_msg  may be null; receives the parser's reason, a constant string, when it fails
//
// Returns false when the text is no value of the type. Also returns false, and stores no reason,
// when there is no such type.
bool argConvert2(ArgType type, ArgVal* v, const char* str, const char** error_msg);

// Stores a value in the variable that `dst` points at. Nothing happens when there is no such type.
void argCopy(ArgType type, ArgPtr* dst, ArgVal* src);

// Parses as argConvert2() does and stores the value in the variable that `a` points at, which
// keeps its old value on failure.
bool argConvert(ArgType type, ArgPtr* a, const char* str, const char** error_msg);

// Compares a value with a minimum and a maximum; both bounds are allowed values.
//
//   bounds    two values of the type, the minimum first. false is less than true. Addresses compare
//             as numbers, and strings compare by their addresses. A NaN is within any bounds, and
//             every number is within a bound that is a NaN.
//   buf, len  receive the message when the value is out of bounds, such as
//             `(1MB) is less than minimum required (2MB)`, cut to fit and NUL-terminated; untouched
//             otherwise. A null `buf` or a `len` of 0 asks for no message.
//
// The minimum is compared first. Returns -1 for a value below it, 1 for a value above the maximum,
// and otherwise 0, also when there is no such type.
int argCheckBounds(ArgType type, ArgVal* v, const void* bounds, char* buf, size_t len);

// Declared arguments.
//
//     argsParse pa = {0};
//     argInfo size_arg, verbose_arg;
//     size_t size;
//     bool verbose;
//     size = argAddsize_t("size", &pa, &size_arg, &size, 1 << 20, "bytes", NULL, 0);
//     verbose = argAddbool("verbose", &pa, &verbose_arg, &verbose, false, "says more", "v,", 0);
//     if (argParse(&pa, text, strlen(text), ',') != 0)
//         fprintf(stderr, "%s\n", argError(&pa));
//     argFree(&pa);
//
// The order of calls: zero the context, declare all arguments, call argParse() once, read the
// values, call argFree(). A context and its declarations belong to one thread at a time.

// Declares an argument of the type in the function's name.
//
//   name     the name that items have, compared exactly
//   pa       the context
//   arg      the record of the declaration. This call fills it in except `pos`, which an item sets.
//            It must live as long as the context is used. A record that is declared already is
//            declared anew in its old place.
//   v        the variable that receives the value. It is not written here: the caller stores the
//            result of this call in it, which is its value when no item sets it.
//   d        the default
//   desc     a description for the caller's own use, or null
//   aliases  other names, each followed by a comma ("v,verb,"; the last comma is optional), or null
//   flags    _required, _multiple, both, or 0
//
// Strings are not copied and must live as long as the context is used. Returns `d`. When several
// arguments have the same name, the one that was declared first takes the items.
bool argAddbool(const char* name, argsParse* pa, argInfo* arg, bool* v, bool d, const char* desc,
                const char* aliases, unsigned int flags);
int argAddint(const char* name, argsParse* pa, argInfo* arg, int* v, int d, const char* desc,
              const char* aliases, unsigned int flags);
s8 argAdds8(const char* name, argsParse* pa, argInfo* arg, s8* v, s8 d, const char* desc,
            const char* aliases, unsigned int flags);
double argAdddouble(const char* name, argsParse* pa, argInfo* arg, double* v, double d,
                    const char* desc, const char* aliases, unsigned int flags);
size_t argAddsize_t(const char* name, argsParse* pa, argInfo* arg, size_t* v, size_t d,
                    const char* desc, const char* aliases, unsigned int flags);
u8 argAddu8(const char* name, argsParse* pa, argInfo* arg, u8* v, u8 d, const char* desc,
            const char* aliases, unsigned int flags);
nanotime argAddnanotime(const char* name, argsParse* pa, argInfo* arg, nanotime* v, nanotime d,
                        const char* desc, const char* aliases, unsigned int flags);
pcchar argAddpcchar(const char* name, argsParse* pa, argInfo* arg, pcchar* v, pcchar d,
                    const char* desc, const char* aliases, unsigned int flags);
pvoid argAddpvoid(const char* name, argsParse* pa, argInfo* arg, pvoid* v, pvoid d,
                  const char* desc, const char* aliases, unsigned int flags);

// Declares the catch-all, which takes the items that no other argument takes. Its place among the
// declarations does not matter. Of several catch-alls the last one takes the items.
//
//   np  receives the name of the last unknown item; may be null
//   vp  receives the value of that item; may be null
//
// Both strings lie in the context's copy of the text. Returns null, the default for both.
pcchar argAddFallback(argsParse* a, argInfo* ai, pcchar* np, pcchar* vp);

// Parses a text into the declared arguments.
//
//   args   the text, `len` characters without NUL; for argGetValues() it must stay as it is
//   delim  separates the items; any character except '='
//
// Items are split as the iterator does. The value of an item is stored in its argument's variable,
// the item is counted in `handled`, and its name is stored in `pos`. An item whose value does not
// convert is counted, too. A bare name has the empty value, which is true for a bool. Strings and
// `pos` point into the context and live until argFree().
//
// Returns 0, or -1 at the first mistake, which argError() explains. Items before the mistake stay
// applied.
int argParse(argsParse* a, const char* args, size_t len, char delim);

// Stores all values of an argument in the order of the text. Call it after an argParse() that
// returned 0, while the text is still there.
//
//   dest   receives `count` elements of the argument's type: as many values as fit, then zeros
//
// A value that no longer converts is reported as a failed check, and its element is zero.
void argGetValues(argsParse* args, argInfo* a, void* dest, size_t count);

// The number of declared arguments without catch-alls, whether they occurred or not.
int argCount(argsParse* args);

// The message of the last mistake, or "". It belongs to the context and has at most 127
// characters. When there is no memory for a message, the earlier one stays.
const char* argError(argsParse* a);

// Frees the context's copy of the text and its message. The declarations stay as they are.
void argFree(argsParse* a);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
