// The level test that stands before every log statement, inline in each component.
#ifndef UTIL_EXPORT_LOGGING_FUNCS_H
#define UTIL_EXPORT_LOGGING_FUNCS_H

#include "util/export/logging_types.h"

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

// The component's own levels, one per module. Hidden: the tests address the arrays directly, and
// never those of another component.
extern MsgLevel _logLevels[] __attribute__((visibility("hidden")));
extern SanityLevel _sanityLevels[] __attribute__((visibility("hidden")));

#ifdef __cplusplus
}
#endif

// The message level of a module of the calling component. `module` is a real index. May be called
// from any thread: levels are single words, changed by options and by Java without a lock, and
// the test sees the old or the new one.
static inline MsgLevel logGetMsgLevel(LogModule module) {
    return __atomic_load_n(&_logLevels[module], __ATOMIC_RELAXED);
}

// True when a message of `level` to that module is to be printed.
static inline bool logEnabled(LogModule module, MsgLevel level) {
    return logGetMsgLevel(module) >= level;
}

// The sanity level of a module of the calling component, likewise.
static inline SanityLevel logGetSanityLevel(LogModule module) {
    return __atomic_load_n(&_sanityLevels[module], __ATOMIC_RELAXED);
}

#endif
