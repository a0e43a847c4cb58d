// Clocks and the text of the current time.
//
// The counter is the monotonic clock in nanoseconds, so its factor is exactly 1. The text of the
// current time is the calendar text of its second, which each thread keeps until the second
// changes, with the milliseconds put in. Clocks are read through the vDSO, without a system call.

#include "osal/export/osal_timing.h"

#include <string.h>
#include <time.h>
#include <bit>

static_assert(sizeof(TimeBuffer) == 30 && sizeof(nanotime) == 8 && sizeof(counterfreq) == 8);
static_assert(std::endian::native == std::endian::little, "texts are put together in words");

constexpr nanotime NANOS_PER_SECOND = 1'000'000'000;
constexpr nanotime NANOS_PER_MILLI = 1'000'000;

// The calendar text of one second: "2026-03-29T14:05:09." and "+0200".
struct CalendarText {
    time_t second;
    size_t date_length;  // 0 while nothing is kept
    char date[sizeof(TimeBuffer)];
    u8 offset;  // five characters in the upper bytes, room for the milliseconds in the others
};
static thread_local CalendarText calendar;

constexpr size_t MILLIS_LENGTH = 3;
constexpr size_t OFFSET_LENGTH = 5;

static nanotime read_clock(clockid_t clock) {
    struct timespec now;
    if (clock_gettime(clock, &now) != 0)
        return 0;
    return now.tv_sec * NANOS_PER_SECOND + now.tv_nsec;
}

// Fills `text` for `second`; false when the text would not fit a TimeBuffer.
static bool make_calendar_text(CalendarText* text, time_t second) {
    struct tm local;
    if (localtime_r(&second, &local) == nullptr)
        return false;
    text->date_length = strftime(text->date, sizeof text->date, "%Y-%m-%dT%H:%M:%S.", &local);
    char tail[MILLIS_LENGTH + OFFSET_LENGTH + 1] = "\0\0\0";
    const size_t offset_length =
        strftime(tail + MILLIS_LENGTH, sizeof tail - MILLIS_LENGTH, "%z", &local);
    memcpy(&text->offset, tail, sizeof text->offset);
    text->second = second;
    if (offset_length != OFFSET_LENGTH || text->date_length + sizeof tail > sizeof(TimeBuffer))
        text->date_length = 0;
    return text->date_length != 0;
}

// The first conversion reads the time-zone files and allocates. It is done while the library is
// loaded, so that no log line has to do it.
__attribute__((constructor(102))) static void read_time_zone() {
    TimeBuffer ignored;
    tzset();
    timingFormatCurrentTime(ignored);
}

void _timing_get_vars(counterfreq* frequency, double* toNanos) {
    *frequency = NANOS_PER_SECOND;
    *toNanos = 1.0;
}

s8 timingGetCounterTime(void) {
    return read_clock(CLOCK_MONOTONIC);
}

s8 timingGetCurrentTimeMillis(void) {
    return read_clock(CLOCK_REALTIME) / NANOS_PER_MILLI;
}

nanotime timingGetCurrentTimeNanos(void) {
    return read_clock(CLOCK_REALTIME);
}

bool timingFormatCurrentTime(TimeBuffer buf) {
    struct timespec now;
    if (clock_gettime(CLOCK_REALTIME, &now) != 0)
        return false;
    CalendarText* text = &calendar;
    if ((text->second != now.tv_sec || text->date_length == 0) &&
        !make_calendar_text(text, now.tv_sec))
        return false;
    memcpy(buf, text->date, sizeof text->date);
    // "042" and "+0200" are stored together, as one word.
    const unsigned millis = static_cast<unsigned>(now.tv_nsec / NANOS_PER_MILLI);
    u8 tail = text->offset;
    tail |= '0' + millis / 100;
    tail |= ('0' + millis / 10 % 10) << 8;
    tail |= ('0' + millis % 10) << 16;
    memcpy(buf + text->date_length, &tail, sizeof tail);
    buf[text->date_length + sizeof tail] = '\0';
    return true;
}
