// The benchmarks as a component of their own: the modules that they print to.
#ifndef BENCH_BENCH_LOG_H
#define BENCH_BENCH_LOG_H

#define LOG_MODULES(MODULE)                                          \
    MODULE(DBG_ALLOC, "alloc", NULL, 0, LOG_LEVEL_AND_MODULE)        \
    MODULE(DBG_GC, "gc", NULL, LOG_IS_DEFAULT, LOG_LEVEL_AND_MODULE) \
    MODULE(DBG_SWEEP, "sweep", NULL, 0, LOG_LEVEL_AND_MODULE)

#include "util/export/logging_static_gen.h"

#endif
