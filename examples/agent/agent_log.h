// The agent's log modules. "gc" follows the module of the component that times collections.
#ifndef EXAMPLES_AGENT_AGENT_LOG_H
#define EXAMPLES_AGENT_AGENT_LOG_H

#define LOG_MODULES(MODULE)                                                    \
    MODULE(DBG_MACHINE, "machine", NULL, LOG_IS_DEFAULT, LOG_LEVEL_AND_MODULE) \
    MODULE(DBG_CLASS, "class", "loading", 0, LOG_LEVEL_AND_MODULE)             \
    MODULE(DBG_JIT, "jit", "compiler", 0, LOG_LEVEL_AND_MODULE)                \
    MODULE(DBG_THREAD, "thread", NULL, 0, LOG_LEVEL_AND_MODULE)                \
    MODULE(DBG_EXCEPT, "except", "exceptions", 0, LOG_LEVEL_AND_MODULE)        \
    MODULE(DBG_GC, "gc", NULL, LOG_IS_LINKED, LOG_LEVEL_AND_MODULE)
#define LOG_OBSOLETES(OBSOLETE) OBSOLETE("codegen", "jit", DBG_JIT, MSG_INFO, OBSOLETE_FAIL)
#include "util/export/logging_static_gen.h"

#endif
