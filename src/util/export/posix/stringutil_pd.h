// Comparisons without case and bounded copies: the POSIX variant.
//
// Every source file that includes this header has its own copy of the four functions. They keep
// no state and may be called from any thread. Strings are NUL-terminated.
#ifndef UTIL_EXPORT_POSIX_STRINGUTIL_PD_H
#define UTIL_EXPORT_POSIX_STRINGUTIL_PD_H

#include "osal/export/osal_assert.h"

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>
#include <strings.h>

#define STRINGUTIL_PD_PATH "src/util/export/posix/stringutil_pd"

// Compares ignoring case: 0 when equal, negative or positive as `s1` sorts before or after `s2`.
static inline int kestrum_util_stricmp(const char* s1, const char* s2) {
    return strcasecmp(s1, s2);
}

// The same over at most `count` characters.
static inline int kestrum_util_strnicmp(const char* s1, const char* s2, size_t count) {
    return strncasecmp(s1, s2, count);
}

// Copies `src`, cut to fit, and fills the rest of `dest` with NULs, so the result is always
// terminated.
//
//   destSize  size of `dest` in bytes. 0 is a caller's error: the failed check "destSize > 0" is
//             reported and nothing is written.
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

// Copies the first `bytesToCopy` characters of `src` and a terminator, or says that they do not
// fit. Mind the order of the arguments, which is not that of kestrum_util_strncpy().
//
//   destSize     size of `dest` in bytes
//   bytesToCopy  how many characters are asked for; (size_t)-1 asks for as much as fits. 0 is a
//                caller's error: the failed check "bytesToCopy > 0" is reported, and the copy is
//                then made as asked.
//
// Returns true when the characters asked for were copied (a shorter `src` counts as complete),
// false when they do not fit with their terminator: `dest` then holds what fits when
// (size_t)-1 was passed, and the empty string otherwise. A request of more than `destSize` also
// reports the failed check "destSize >= bytesToCopy". With a `destSize` of 0 nothing is written.
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
