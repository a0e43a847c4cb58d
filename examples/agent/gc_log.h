// The log module of collections.
#ifndef EXAMPLES_AGENT_GC_LOG_H
#define EXAMPLES_AGENT_GC_LOG_H

#include <stddef.h>

// How many collections have ended, as "[   12]".
char* gc_write_collections(char* position, size_t* bytesLeft);

#define LOG_MODULES(MODULE) MODULE(DBG_GC, "gc", "collector", LOG_IS_DEFAULT, LOG_LEVEL_AND_MODULE)
#define LOG_OBSOLETES(OBSOLETE)                                  \
    OBSOLETE("verbosegc", "gc", DBG_GC, MSG_INFO, OBSOLETE_WARN) \
    OBSOLETE("memory", NULL, LOG_ALL_MODULES, MSG_QUIET, OBSOLETE_FAIL)
#define LOG_EXTENDED_DECORATORS(DECORATOR) \
    DECORATOR(DECORATION_COLLECTIONS, "collections", gc_write_collections)
#define LOG_MAX_DECORATION_SIZE 12
#include "util/export/logging_static_gen.h"

#endif
