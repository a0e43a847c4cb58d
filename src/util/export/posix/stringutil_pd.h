// Comparisons without case and bounded copies: the POSIX variant.
//
// The four functions are static: each source file that includes this header has its own copy. They
// keep no state and may be called from any thread. Strings are NUL-terminated.
#ifndef UTIL_EXPORT_POSIX_STRINGUTIL_PD_H
#define UTIL_EXPORT_POSIX_STRINGUTIL_PD_H

#include "osal/export/osal_assert.h"

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>
#include <strings.h>

#define STRINGUTIL_PD_PATH "src/util/export/posix/stringutil_pd"

// Compares without case: 0 when equal, negative when `s1` sorts before `s2`, else positive.
static inline int kestrum_util_stricmp(const char* s1, const char* s2) {
    return strcasecmp(s1, s2);
}

// Compares at most `count` characters without case, with the results of kestrum_util_stricmp().
static inline int kestrum_util_strnicmp(const char* s1, const char* s2, size_t count) {
    return strncasecmp(s1, s2, count);
}

// Copies `src`, cut to fit, and fills the rest of `dest` with NULs. The result is always
// NUL-terminated.
//
//   destSize  size of `dest` in bytes. 0 is an error of the caller: the failed check "destSize > 0"
//             is reported and nothing is written.
static inline void kestrum_util_strncpy(char* dest, const char* src, size_t destSize) {
    if (!OSAL_CHECK(destSize > 0, STRINGUTIL_PD_PATH))
        return;
#ifndef __clang__
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wstringop-truncation"  // cutting is what it is for
#endif
    strncpy(dest, src, destSize - 1);
#ifndef __clang__
#pragma GCC diagnostic pop
#endif
    dest[destSize - 1] = '\0';
}

// Copies the first `bytesToCopy` characters of `src` and a terminator when they fit. The order of
// the arguments differs from kestrum_util_strncpy().
//
//   destSize     size of `dest` in bytes
//   bytesToCopy  how many characters to copy; (size_t)-1 means as many as fit. 0 is an error of the
//                caller: the failed check "bytesToCopy > 0" is reported, and the copy is made.
//
// Returns true when all of them are copied; a shorter `src` counts as complete. Returns false when
// they do not fit with the terminator: `dest` then holds as many as fit for (size_t)-1, and the
// empty string otherwise. A `bytesToCopy` above `destSize` also reports the failed check
// "destSize >= bytesToCopy". With a `destSize` of 0 nothing is written.
__attribute__((unused)) static bool kestrum_util_strncpy_s(char* dest, size_t destSize,
                                                           const char* src, size_t bytesToCopy) {
    (void)OSAL_CHECK(bytesToCopy > 0, STRINGUTIL_PD_PATH);
    if (bytesToCopy < destSize) {
        kestrum_util_strncpy(dest, src, bytesToCopy + 1);
        return true;
    }
    if (bytesToCopy == SIZE_MAX) {
        kestrum_util_strncpy(dest, src, destSize);
        return strlen(src) < destSize;
    }
    if (destSize > 0)
        dest[0] = '\0';
    (void)OSAL_CHECK(destSize >= bytesToCopy, STRINGUTIL_PD_PATH);
    return false;
}

#endif
