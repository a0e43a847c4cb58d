// A failed check becomes one line on standard error. The line is built on the stack, because the
// heap may be what is broken. For the same reason it bypasses the buffered streams.

#include "osal/export/osal_assert.h"

#include <errno.h>
#include <stdarg.h>
#include <stdio.h>
#include <unistd.h>
#include <algorithm>

constexpr size_t LINE_BYTES = 1024;  // with the newline and the formatter's terminator

// The length of the text that the formatter left in a buffer of `room` bytes. Its result counts the
// whole text, also when that was cut.
static size_t written(int result, size_t room) {
    return result < 0 ? 0 : std::min(static_cast<size_t>(result), room - 1);
}

static void write_all(const char* p, size_t left) {
    while (left > 0) {
        ssize_t n = write(STDERR_FILENO, p, left);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return;  // there is no other place to report this
        p += n;
        left -= static_cast<size_t>(n);
    }
}

void assertReport(const char* expression, const char* file, int line, const char* function,
                  const char* format, ...) {
    const int saved_errno = errno;
    char text[LINE_BYTES];
    constexpr size_t room = LINE_BYTES - 1;  // the last byte is for the newline
    size_t length = written(snprintf(text, room, "Assertion failed: %s, at %s:%d in %s", expression,
                                     file, line, function),
                            room);
    if (format != nullptr && *format != '\0') {
        length += written(snprintf(text + length, room - length, ": "), room - length);
        va_list args;
        va_start(args, format);
        length += written(vsnprintf(text + length, room - length, format, args), room - length);
        va_end(args);
    }
    std::replace_if(
        text, text + length, [](char c) { return c == '\n' || c == '\r'; }, ' ');
    text[length] = '\n';
    write_all(text, length + 1);
    errno = saved_errno;
}
