// The garbage collector's log modules.
#ifndef EXAMPLES_HOST_GC_LOG_H
#define EXAMPLES_HOST_GC_LOG_H

#include <stddef.h>

// How full the calling worker's region is, as "[ 25%]".
char* gc_write_occupancy(char* position, size_t* bytesLeft);

#define LOG_MODULES(MODULE)                                                 \
    MODULE(DBG_GC, "gc", "collector", LOG_IS_DEFAULT, LOG_LEVEL_AND_MODULE) \
    MODULE(DBG_HEAP, "heap", NULL, 0, LOG_LEVEL_AND_MODULE)                 \
    MODULE(DBG_SWEEP, "sweep", NULL, 0, LOG_LEVEL_AND_MODULE)
#define LOG_OBSOLETES(OBSOLETE)                                  \
    OBSOLETE("verbosegc", "gc", DBG_GC, MSG_INFO, OBSOLETE_WARN) \
    OBSOLETE("compact", NULL, LOG_ALL_MODULES, MSG_QUIET, OBSOLETE_FAIL)
#define LOG_EXTENDED_DECORATORS(DECORATOR) \
    DECORATOR(DECORATION_OCCUPANCY, "occupancy", gc_write_occupancy)
#define LOG_MAX_DECORATION_SIZE 6
#include "util/export/logging_static_gen.h"

#endif
