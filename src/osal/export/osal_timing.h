// Wall-clock time and the high-resolution counter. Every function may be called from any thread.
#ifndef OSAL_EXPORT_OSAL_TIMING_H
#define OSAL_EXPORT_OSAL_TIMING_H

#include "osal/export/osal_timing_types.h"

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

// The utility library's timing variables, filled while it is loaded and constant afterwards.
extern counterfreq counterFrequency;    // ticks per second of timingGetCounterTime()
extern double counterToNanoMultiplier;  // nanoseconds per tick

// The current time as text with its terminator.
typedef char TimeBuffer[30];

// Stores the counter's ticks per second and its nanoseconds per tick. Never fails.
void _timing_get_vars(counterfreq* frequency, double* toNanos);

// The high-resolution counter, in ticks. It never runs backwards, and changes of the wall clock do
// not move it. Its start is unspecified: use differences.
s8 timingGetCounterTime(void);

// Milliseconds since the start of 1970, UTC.
s8 timingGetCurrentTimeMillis(void);

// Nanoseconds since the start of 1970, UTC.
nanotime timingGetCurrentTimeNanos(void);

// Writes the local time as "2026-03-29T14:05:09.042+0200": date, time to the millisecond, and
// the offset from UTC in hours and minutes.
//
// Returns false when the clock cannot be read or the year needs more than five digits; `buf` is
// then unspecified. The time zone is that of the process when the library was loaded, or at its
// last call of tzset(). Each thread keeps the calendar text until the second is over.
bool timingFormatCurrentTime(TimeBuffer buf);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

// Ticks per second of timingGetCounterTime(), as read when the library was loaded.
static inline counterfreq timingGetCounterFreq(void) {
    return counterFrequency;
}

#endif
