// One line: decorations, message, write.
//
// The line is built in a buffer on the stack of the printing thread, outside every lock. Its layout
// bounds it: at most `size` - 1 bytes of decorations, a space, at most 1022 bytes of message and a
// newline. Standard decorations come first; an extended one gets the write position and the count
// of bytes left for decorations, terminator included, and returns the position of its terminator,
// which the next text overwrites. The count never drops below 1. A position or a count that a
// decorator returns is clamped to its room.

#include "util/c/shared/logging/logging_internal.h"

#include "osal/export/osal_threads.h"
#include "osal/export/osal_timing.h"
#include "sharedinc/pause.h"
#include "util/c/shared/logging/cancellation.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <time.h>
#include <algorithm>
#include <bit>
#include <type_traits>

static_assert(std::endian::native == std::endian::little, "columns are put together in words");

constexpr size_t DECORATION_BYTES = 100;  // of one line's standard ones; extended ones add theirs
constexpr size_t MESSAGE_BYTES = 1023;    // with its terminator, which the newline replaces
constexpr size_t LINE_EXTRA_BYTES = 1 + MESSAGE_BYTES;  // the space and the message
constexpr int LOCK_ATTEMPTS = 20;                       // two or three microseconds in all
constexpr int PAUSES_BETWEEN_ATTEMPTS = 4;
constexpr long FIRST_NAP_NANOS = 50'000;  // then twice as long each time
constexpr long LONGEST_NAP_NANOS = 800'000;
constexpr unsigned EXTENDED_BITS = ((1U << LOG_EXTENDED_SLOTS) - 1) << NUM_STD_DECORATIONS;

// The line has room for all standard decorations. They are written one by one and cut to their
// budget together.

// Left-justified in exactly seven columns.
static char* put_module(char* position, const char* name) {
    constexpr size_t WIDTH = 7;
    memcpy(position, "[       ]", WIDTH + 2);
    memcpy(position + 1, name, strnlen(name, WIDTH));
    return position + WIDTH + 2;
}

constexpr size_t LEVEL_COLUMN_BYTES = 7;

// The terminator is copied, too, so that a column is one copy of eight bytes. The last column is
// for levels without a name.
constexpr char LEVEL_COLUMNS[MSG_MAX + 1][LEVEL_COLUMN_BYTES + 1] = {
    "[QUIET]", "[ERROR]", "[WARN ]", "[INFO ]", "[DEBUG]", "[TRACE]", "[?    ]"};

static char* put_level(char* position, MsgLevel level) {
    memcpy(position, LEVEL_COLUMNS[std::min(level, MSG_MAX)], LEVEL_COLUMN_BYTES + 1);
    return position + LEVEL_COLUMN_BYTES;
}

static char* put_bracketed(char* position, s8 value, int min_digits) {
    *position = '[';
    position = put_number(position + 1, value, min_digits);
    *position = ']';
    return position + 1;
}

static char* put_timestamp(char* position) {
    char* const text = position + 1;
    if (!timingFormatCurrentTime(text))
        return position;
    *position = '[';
    char* const end = text + strnlen(text, sizeof(TimeBuffer) - 1);
    *end = ']';
    return end + 1;
}

static bool has(unsigned decorations, int decoration) {
    return (decorations & LOG_DECORATION_BIT(decoration)) != 0;
}

static char* put_standard(char* position, const logmodule* m, unsigned d, MsgLevel level) {
    if (has(d, DECORATION_LEVEL))
        position = put_level(position, level);
    if (has(d, DECORATION_MODULE))
        position = put_module(position, m->names[0]);
    if (has(d, DECORATION_TIMESTAMP))
        position = put_timestamp(position);
    if (has(d, DECORATION_MILLIS))
        position = put_bracketed(position, timingGetCurrentTimeMillis(), 1);
    if (has(d, DECORATION_NANOS))
        position = put_bracketed(position, timingGetCurrentTimeNanos(), 1);
    if (has(d, DECORATION_OSTHREADID))
        position = put_bracketed(position, threadGetCurrentID(), 5);
    if (has(d, DECORATION_PID))
        position = put_bracketed(position, osGetProcessID(), 5);
    return position;
}

// Writes the decorations `d` into at most `size` - 1 bytes.
static char* put_decorations(char* line, size_t size, const logger* loggers, const logmodule* m,
                             unsigned d, MsgLevel level) {
    char* const end = line + size;
    char* position = std::min(put_standard(line, m, d, level), end - 1);
    size_t bytesLeft = static_cast<size_t>(end - position);
    for (unsigned bits = d & EXTENDED_BITS; bits != 0; bits &= bits - 1) {
        const int slot = __builtin_ctz(bits) - NUM_STD_DECORATIONS;
        log_decorator func = loggers->extended_decorators[slot].func;
        if (func == nullptr)
            continue;
        char* const last = position + bytesLeft - 1;
        position = std::clamp(func(position, &bytesLeft), position, last);
        bytesLeft = std::clamp(bytesLeft, size_t{1}, static_cast<size_t>(end - position));
    }
    return position;
}

// Takes the stream's own lock, which keeps direct writers away and lines apart. Tries several
// times, because its holder usually finishes its one write before this thread could sleep and be
// woken.
static bool try_to_lock(FILE* stream) {
    for (int attempt = 0; attempt < LOCK_ATTEMPTS; attempt++) {
        if (ftrylockfile(stream) == 0)
            return true;
        for (int i = 0; i < PAUSES_BETWEEN_ATTEMPTS; i++)
            kx_pause();
    }
    return false;
}

// Takes the module's lock shared, and the stream's own recursive lock once for both calls. A thread
// that cannot get the stream's lock waits for it without the module's lock. Otherwise an option
// that moves the module would have to wait for all lines in the queue.
static void write_line(logmodule* m, const char* line, size_t length) {
    const CancellationOff cancellation_off;
    struct timespec nap = {0, FIRST_NAP_NANOS};
    rwReadLock(&m->lock);
    while (!try_to_lock(m->out)) {
        rwReadUnlock(&m->lock);
        nanosleep(&nap, nullptr);
        nap.tv_nsec = std::min(nap.tv_nsec * 2, LONGEST_NAP_NANOS);
        rwReadLock(&m->lock);
    }
    fwrite(line, 1, length, m->out);
    fflush(m->out);
    funlockfile(m->out);
    rwReadUnlock(&m->lock);
}

void logprint(logger* loggers, logmodule* m, int d, MsgLevel level, const char* fmt,
              va_list* args) {
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
        osSetLastError(last_error);  // decorations may have changed what "%m" prints
        end = log_vsnprintf(end, MESSAGE_BYTES, fmt, args);
        if (end == line || end[-1] != '\n')
            *end++ = '\n';
    }

    write_line(m, line, static_cast<size_t>(end - line));
    osSetLastError(last_error);
}

// Where a va_list is passed as a pointer, a caller may pass null.
template <typename List>
static bool is_missing(const List& args) {
    if constexpr (std::is_pointer_v<List>)
        return args == nullptr;
    else
        return false;
}

void _logforceprintdecorationsv(logger* loggers, LogModule module, MsgLevel level, int decorations,
                                const char* fmt, va_list args) {
    logmodule* m = &loggers->loggers[module];
    if (is_missing(args)) {
        logprint(loggers, m, decorations, level, fmt, nullptr);
        return;
    }
    va_list own;  // where a va_list is an array, &args is not its address
    va_copy(own, args);
    logprint(loggers, m, decorations, level, fmt, &own);
    va_end(own);
}

void _logforceprintv(logger* loggers, LogModule module, MsgLevel level, const char* fmt,
                     va_list args) {
    const unsigned decorations = load_word(&loggers->loggers[module].decorations);
    _logforceprintdecorationsv(loggers, module, level, static_cast<int>(decorations), fmt, args);
}

void _logforceprintdecorations(logger* loggers, LogModule module, MsgLevel level, int decorations,
                               const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    _logforceprintdecorationsv(loggers, module, level, decorations, fmt, args);
    va_end(args);
}
