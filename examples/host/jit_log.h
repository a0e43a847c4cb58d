// The compiler's log modules.
#ifndef EXAMPLES_HOST_JIT_LOG_H
#define EXAMPLES_HOST_JIT_LOG_H

#define LOG_MODULES(MODULE)                                                  \
    MODULE(DBG_JIT, "jit", "compiler", LOG_IS_DEFAULT, LOG_LEVEL_AND_MODULE) \
    MODULE(DBG_INLINE, "inline", "inlining", 0, LOG_LEVEL_AND_MODULE)        \
    MODULE(DBG_DEOPT, "deopt", NULL, 0, LOG_LEVEL_AND_MODULE)
#define LOG_OBSOLETES(OBSOLETE) OBSOLETE("codegen", "jit", DBG_JIT, MSG_DEBUG, OBSOLETE_FAIL)
#include "util/export/logging_static_gen.h"

#endif
