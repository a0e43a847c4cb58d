// The level test in front of every log statement, inline in each component.
#ifndef UTIL_EXPORT_LOGGING_FUNCS_H
#define UTIL_EXPORT_LOGGING_FUNCS_H

#include "util/export/logging_types.h"

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

// The component's own levels, one per module. They are hidden, so that the tests read them directly
// and never use those of another component.
extern MsgLevel _logLevels[] __attribute__((visibility("hidden")));
extern SanityLevel _sanityLevels[] __attribute__((visibility("hidden")));

#ifdef __cplusplus
}
#endif

// The message level of a module of the calling component. `module` is a real index. May be called
// from any thread: a level is one word, which options and Java change without a lock, so the test
// sees either the old or the new level.
static inline MsgLevel logGetMsgLevel(LogModule module) {
    return __atomic_load_n(&_logLevels[module], __ATOMIC_RELAXED);
}

// True when a message of `level` to that module is to be printed.
static inline bool logEnabled(LogModule module, MsgLevel level) {
    return logGetMsgLevel(module) >= level;
}

// The sanity level of a module of the calling component, read as logGetMsgLevel() reads its level.
static inline SanityLevel logGetSanityLevel(LogModule module) {
    return __atomic_load_n(&_sanityLevels[module], __ATOMIC_RELAXED);
}

#endif
