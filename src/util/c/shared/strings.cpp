// Bounded formatting: the platform's formatter, with a result that tells whether the text was cut.

#include "util/export/stringutil.h"

#include <limits.h>
#include <stdio.h>

int kestrum_util_vsnprintf(char* buf, size_t len, const char* fmt, va_list va) {
    if (buf == nullptr || len == 0)
        return -1;
    if (len > INT_MAX)  // a size like (size_t)-1 does not tell where the buffer ends
        return vsnprintf(buf, INT_MAX, fmt, va);
    const int needed = vsnprintf(buf, len, fmt, va);
    buf[len - 1] = '\0';
    return needed >= 0 && static_cast<size_t>(needed) >= len ? -1 : needed;
}

int kestrum_util_snprintf(char* buf, size_t len, const char* fmt, ...) {
    va_list va;
    va_start(va, fmt);
    const int result = kestrum_util_vsnprintf(buf, len, fmt, va);
    va_end(va);
    return result;
}
