// Types of times and durations.
#ifndef OSAL_EXPORT_OSAL_TIMING_TYPES_H
#define OSAL_EXPORT_OSAL_TIMING_TYPES_H

#include "sharedinc/inttype.h"

typedef s8 nanotime;     // a duration or a time stamp in nanoseconds
typedef u8 counterfreq;  // ticks per second of the high-resolution counter

#endif
