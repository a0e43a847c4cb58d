// Formatting into buffers that is always bounded and always terminated.
#ifndef UTIL_EXPORT_STRINGUTIL_H
#define UTIL_EXPORT_STRINGUTIL_H

#include <stdarg.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

// Formats as vsnprintf() does.
//
//   buf  receives the text, cut to fit and always terminated
//   len  size of `buf` in bytes; one above INT_MAX means that the text fits, whatever its length
//
// Returns the length of the text when all of it fitted. Returns a negative value when it was cut
// (`buf` holds its first len - 1 bytes), when the conversion failed (`buf` holds what was written
// before), or when `buf` is null or `len` is 0 (nothing is touched). May be called from any
// thread.
int kestrum_util_vsnprintf(char* buf, size_t len, const char* fmt, va_list va)
    __attribute__((format(printf, 3, 0)));

// The same with the arguments in the call.
int kestrum_util_snprintf(char* buf, size_t len, const char* fmt, ...)
    __attribute__((format(printf, 3, 4)));

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
