// Bounded formatting: the result never exceeds the buffer and is always NUL-terminated.
#ifndef UTIL_EXPORT_STRINGUTIL_H
#define UTIL_EXPORT_STRINGUTIL_H

#include <stdarg.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

// Formats as vsnprintf() does, but returns a negative value when the text is cut.
//
//   buf  receives the text, cut to fit and NUL-terminated
//   len  size of `buf` in bytes; a value above INT_MAX means that any text fits
//
// Returns the length of the text when all of it fits. Returns a negative value when the text is cut
// (`buf` then holds its first len - 1 bytes), when a conversion fails (`buf` holds the text before
// it), or when `buf` is null or `len` is 0 (nothing is written). May be called from any thread.
int kestrum_util_vsnprintf(char* buf, size_t len, const char* fmt, va_list va)
    __attribute__((format(printf, 3, 0)));

// Formats as kestrum_util_vsnprintf() does, with the arguments in the call.
int kestrum_util_snprintf(char* buf, size_t len, const char* fmt, ...)
    __attribute__((format(printf, 3, 4)));

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
