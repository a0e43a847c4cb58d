// The compiler of the demo, a component in C++: compiles one method per round, inlines its small
// callees, and takes every fourth method back.

#define LOG_DEFINE_COMPONENT
#include "jit_log.h"

#include "component.h"

namespace {

constexpr unsigned METHOD_BYTECODES = 40;
constexpr unsigned CALLEE_BYTECODES[] = {8, 20, 60};
constexpr unsigned INLINE_LIMIT = 35;  // bytecodes; longer callees are called

// Returns the bytecodes that inlining adds.
unsigned inline_callees(unsigned worker) {
    unsigned added = 0;
    for (unsigned callee : CALLEE_BYTECODES) {
        if (callee <= INLINE_LIMIT) {
            added += callee;
            logPrint(DBG_INLINE, MSG_DEBUG, "worker %u: inlined a callee of %u bytecodes", worker,
                     callee);
        } else {
            logPrint(DBG_INLINE, MSG_TRACE, "worker %u: left a call, %u bytecodes are too many",
                     worker, callee);
        }
    }
    return added;
}

}  // namespace

void component_work(unsigned worker, unsigned round) {
    const unsigned bytecodes = METHOD_BYTECODES + inline_callees(worker);
    logPrint(DBG_JIT, MSG_INFO, "worker %u: compiled method%u, %u bytecodes", worker, round,
             bytecodes);
    if (round % 4 == 3)
        logPrint(DBG_DEOPT, MSG_WARN, "worker %u: method%u deoptimised, a callee was overridden",
                 worker, round);
}

logger* component_logger() {
    return &_loggers;
}
