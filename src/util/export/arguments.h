// Option strings: items separated by a delimiter, each a bare name or name=value; typed values; and
// declared arguments, which option strings are parsed into.
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
KX_EXPORTED_INLINE bool argIterDone(ArgIterP iter) {
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

// Typed values. These four keep no state and may be called from any thread.

// Parses a value of the given type.
//
//   v          receives it in the type's member. A string is not copied: the value is `str` itself.
//              After a failure its contents mean nothing.
//   str        terminated, not null. The syntax is that of util/export/strparse.h: strToBool() for
//              TYPE_bool, strToSuffixInt() for TYPE_int, strToSuffixLong() for TYPE_s8,
//              strToSuffixULong() for TYPE_u8, strToSuffixSize(), strToSuffixDouble(),
//              strToSuffixNanoTime() and, for TYPE_pvoid, strToSuffixAddress(). Every text is a
//              TYPE_pcchar.
//   error_msg  may be null; receives the parser's reason, a constant string, when it fails
//
// Returns false when the text is no such value, or, with no reason stored, when there is no such
// type.
bool argConvert2(ArgType type, ArgVal* v, const char* str, const char** error_msg);

// Stores a value in the variable that `dst` points at. Nothing happens when there is no such type.
void argCopy(ArgType type, ArgPtr* dst, ArgVal* src);

// Parses as argConvert2() does and stores the value in the variable that `a` points at, which
// keeps its old value on failure.
bool argConvert(ArgType type, ArgPtr* a, const char* str, const char** error_msg);

// Compares a value with a minimum and a maximum, both allowed.
//
//   bounds    two values of the type itself, the minimum first. false is below true; addresses
//             compare as numbers, and so do strings, by where they are. Nothing is below or above
//             a NaN.
//   buf, len  receive the message when a bound is broken, such as "(1MB) is less than minimum
//             required (2MB)", cut to fit and terminated; untouched otherwise. A null `buf` or a
//             `len` of 0 asks for no message.
//
// Returns -1 below the minimum, which is compared first, 1 above the maximum, and otherwise 0, as
// when there is no such type.
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
// The order of calls: a zeroed context, all declarations, one argParse(), reading, argFree(). A
// context and its declarations belong to one thread at a time.

// Declares an argument.
//
//   name     the name that items have, compared exactly
//   pa       the context
//   arg      the declaration's record, filled in here but for `pos`, which an item sets; it must
//            live as long as the context is used. One that is declared already is declared anew,
//            in its old place.
//   v        the variable that receives the value. It is not written here: the caller stores the
//            result in it, and an argument that never occurs keeps that.
//   d        the default
//   desc     a description for the caller's own use, or null
//   aliases  other names, each followed by a comma ("v,verb,"; after the last one it may be
//            missing), or null
//   flags    _required, _multiple, both, or 0
//
// Strings are not copied and must live as long as the context is used. Returns `d`. When several
// arguments have the same name, the one declared first takes the items.
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

// Declares the catch-all, which takes the items that no other argument takes, wherever it stands
// among the declarations; of several the last one does.
//
//   np  receives the name of the last unknown item, or null when that is not wanted
//   vp  receives its value, likewise
//
// Both strings lie in the context's copy of the text. Returns null, the default for both.
pcchar argAddFallback(argsParse* a, argInfo* ai, pcchar* np, pcchar* vp);

// Parses a text into the declared arguments.
//
//   args   the text, `len` characters without NUL; for argGetValues() it must stay as it is
//   delim  separates the items; any character but '='
//
// Items are split as the iterator does it. Each one's value is stored in its argument's variable,
// counted in `handled`, and its name remembered in `pos`; a value that does not convert is counted,
// too. A bare name has the empty value, which is true for a bool. Strings and `pos` point into the
// context and live until argFree().
//
// Returns 0, or -1 at the first mistake, which argError() explains; items before it stay applied.
int argParse(argsParse* a, const char* args, size_t len, char delim);

// Reads out all values of an argument, in the order of the text, after an argParse() that returned
// 0 and while its text is still there.
//
//   dest   receives `count` elements of the argument's type: its values as far as they fit, and
//          zeros behind them
//
// A value that no longer converts is reported as a failed check and leaves a zero.
void argGetValues(argsParse* args, argInfo* a, void* dest, size_t count);

// The number of declared arguments, whether they occurred or not, without catch-alls.
int argCount(argsParse* args);

// The message of the last mistake, or "". It belongs to the context and has at most 127
// characters. When memory for a message runs out, the one before it stays.
const char* argError(argsParse* a);

// Releases the context's copy of the text and its message. The declarations stay as they are.
void argFree(argsParse* a);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
