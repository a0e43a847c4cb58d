// One line: decorations, message, write.
//
// The line is built in a buffer on the stack of the printing thread, outside every lock. Its
// layout bounds it: at most `size` - 1 bytes of decorations, a space, at most 1022 bytes of
// message and a newline. Every decoration writer gets the write position and the count of bytes
// left for decorations, terminator included, and returns the position of its terminator, which
// the next one overwrites; the count never drops below 1.
//
// Fixed decorations are copied, and so are messages without conversions: a formatted conversion
// costs more than all else here but the write itself.

#include "util/c/shared/logging/logging_internal.h"

#include "osal/export/osal_threads.h"
#include "osal/export/osal_timing.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <algorithm>

constexpr size_t DECORATION_BYTES =
    100;  // standard decorations of one line; extended ones add theirs
constexpr size_t MESSAGE_BYTES = 1023;  // with its terminator
constexpr size_t LINE_EXTRA_BYTES =
    1 + MESSAGE_BYTES;  // space and message; a newline replaces the terminator
constexpr unsigned EXTENDED_BITS = ((1U << LOG_EXTENDED_SLOTS) - 1) << NUM_STD_DECORATIONS;

// Copies `length` bytes, cut to leave room for the terminator, into `max` bytes of room.
static char* put_bounded(char* buf, size_t max, const char* text, size_t length) {
    const size_t fitting = std::min(length, max - 1);
    memcpy(buf, text, fitting);
    buf[fitting] = '\0';
    return buf + fitting;
}

// Formats into `max` bytes of room, at least 1, and returns the position of the terminator of
// what was written. A null `args` takes `fmt` as plain text.
static char* log_vsnprintf(char* buf, size_t max, const char* fmt, va_list args) {
    size_t plain = args != nullptr ? strcspn(fmt, "%") : strnlen(fmt, max);
    if (args == nullptr || fmt[plain] == '\0')
        return put_bounded(buf, max, fmt, plain);
    buf[0] = '\0';
    const int needed = vsnprintf(buf, max, fmt, args);
    if (needed < 0)  // the conversion failed; what came before it stands
        return buf + strnlen(buf, max - 1);
    return buf + std::min(static_cast<size_t>(needed), max - 1);
}

char* log_sprintf(char* buf, size_t* bytesLeft, const char* fmt, ...) {
    if (*bytesLeft == 0)
        return buf;
    va_list args;
    va_start(args, fmt);
    char* end = log_vsnprintf(buf, *bytesLeft, fmt, args);
    va_end(args);
    *bytesLeft -= static_cast<size_t>(end - buf);
    return end;
}

// Writes "[text]" within the budget.
static char* put_decoration(char* position, size_t* bytesLeft, const char* text, size_t length) {
    char* end = put_bounded(position, *bytesLeft, "[", 1);
    *bytesLeft -= static_cast<size_t>(end - position);
    char* after_text = put_bounded(end, *bytesLeft, text, length);
    *bytesLeft -= static_cast<size_t>(after_text - end);
    end = put_bounded(after_text, *bytesLeft, "]", 1);
    *bytesLeft -= static_cast<size_t>(end - after_text);
    return end;
}

// Left-justified in exactly `width` columns, as "%-7.7s" does.
template <size_t width>
static char* put_column(char* position, size_t* bytesLeft, const char* text) {
    char column[width];
    memset(column, ' ', width);
    memcpy(column, text, strnlen(text, width));
    return put_decoration(position, bytesLeft, column, width);
}

// A decimal number of at least `min_digits` digits.
static char* put_number(char* position, size_t* bytesLeft, s8 value, int min_digits) {
    char digits[24];
    char* const end = digits + sizeof digits;
    char* p = end;
    u8 rest = value < 0 ? -static_cast<u8>(value) : static_cast<u8>(value);
    for (; rest != 0 || end - p < min_digits; rest /= 10)
        *--p = static_cast<char>('0' + rest % 10);
    if (value < 0)
        *--p = '-';
    return put_decoration(position, bytesLeft, p, static_cast<size_t>(end - p));
}

static char* put_standard(char* position, size_t* bytesLeft, unsigned decoration,
                          const logmodule* m, MsgLevel level) {
    switch (decoration) {
        case DECORATION_LEVEL:
            return put_column<5>(position, bytesLeft,
                                 level < MSG_MAX ? msglevel_names[level] : "?");
        case DECORATION_MODULE: return put_column<7>(position, bytesLeft, m->names[0]);
        case DECORATION_TIMESTAMP: {
            TimeBuffer now;
            if (!timingFormatCurrentTime(now))
                return position;
            return put_decoration(position, bytesLeft, now, strnlen(now, sizeof now));
        }
        case DECORATION_MILLIS:
            return put_number(position, bytesLeft, timingGetCurrentTimeMillis(), 1);
        case DECORATION_NANOS:
            return put_number(position, bytesLeft, timingGetCurrentTimeNanos(), 1);
        case DECORATION_OSTHREADID: return put_number(position, bytesLeft, threadGetCurrentID(), 5);
        case DECORATION_PID: return put_number(position, bytesLeft, osGetProcessID(), 5);
        default: return position;
    }
}

static char* put_decorations(char* position, size_t bytesLeft, const logger* loggers,
                             const logmodule* m, unsigned d, MsgLevel level) {
    for (unsigned bits = d & ((1U << NUM_STD_DECORATIONS) - 1); bits != 0; bits &= bits - 1)
        position = put_standard(position, &bytesLeft, static_cast<unsigned>(__builtin_ctz(bits)), m,
                                level);
    for (unsigned bits = d & EXTENDED_BITS; bits != 0; bits &= bits - 1) {
        const int slot = __builtin_ctz(bits) - NUM_STD_DECORATIONS;
        if (log_decorator func = loggers->extended_decorators[slot].func; func != nullptr)
            position = func(position, &bytesLeft);
    }
    return position;
}

void logprint(logger* loggers, logmodule* m, int d, MsgLevel level, const char* fmt, va_list args) {
    const unsigned decorations = static_cast<unsigned>(d);
    size_t size = DECORATION_BYTES;
    if ((decorations >> NUM_STD_DECORATIONS) != 0)
        size += loggers->max_decoration_size;
    char* const line = static_cast<char*>(__builtin_alloca(size + LINE_EXTRA_BYTES));
    const int last_error = osGetLastError();

    char* end = put_decorations(line, size, loggers, m, decorations, level);
    if (decorations != 0)
        *end++ = ' ';
    if (fmt != nullptr) {
        end = log_vsnprintf(end, MESSAGE_BYTES, fmt, args);
        if (end == line || end[-1] != '\n')
            *end++ = '\n';
    }

    rwReadLock(&m->lock);
    fwrite(line, 1, static_cast<size_t>(end - line), m->out);
    fflush(m->out);
    rwReadUnlock(&m->lock);
    osSetLastError(last_error);
}

void _logforceprintdecorationsv(logger* loggers, LogModule module, MsgLevel level, int decorations,
                                const char* fmt, va_list args) {
    logprint(loggers, &loggers->loggers[module], decorations, level, fmt, args);
}

void _logforceprintv(logger* loggers, LogModule module, MsgLevel level, const char* fmt,
                     va_list args) {
    const unsigned decorations = _log_get_decorations(loggers, module);
    _logforceprintdecorationsv(loggers, module, level, static_cast<int>(decorations), fmt, args);
}

void _logforceprintdecorations(logger* loggers, LogModule module, MsgLevel level, int decorations,
                               const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    _logforceprintdecorationsv(loggers, module, level, decorations, fmt, args);
    va_end(args);
}
