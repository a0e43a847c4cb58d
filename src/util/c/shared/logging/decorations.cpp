// The option string that sets decorations.
//
// An item of that string names a standard decoration, an extended one of some component, or both.
// The whole string is kept for components that are loaded later.

#include "util/c/shared/logging/logging_internal.h"

#include "osal/export/osal_msmalloc.h"
#include "osal/export/osal_threads.h"
#include "util/export/arguments.h"
#include "util/export/posix/stringutil_pd.h"

#include <stdlib.h>
#include <string.h>

constexpr unsigned ALL_DECORATIONS = ~0U;
constexpr unsigned DEFAULT_DECORATIONS = LOG_DECORATION_BIT(DECORATION_MODULE) |
                                         LOG_DECORATION_BIT(DECORATION_TIMESTAMP) |
                                         LOG_DECORATION_BIT(DECORATION_PID);

static volatile int remembered_lock;    // no other lock is taken while this one is held
static char* default_decorations_args;  // the latest option, or null; guarded by the lock

static bool apply_standard(logger* the_logger, const char* name) {
    for (int i = 0; i < NUM_STD_DECORATIONS; i++)
        if (kestrum_util_stricmp(decoration_names[i], name) == 0) {
            _log_set_decorations(the_logger, LOG_ALL_MODULES, LOG_DECORATION_BIT(i));
            return true;
        }
    return false;
}

bool apply_extended_log_decorations(logger* l, char* token) {
    for (int i = 0; i < LOG_EXTENDED_SLOTS; i++) {
        const log_extended_decorator& slot = l->extended_decorators[i];
        if (slot.func != nullptr && slot.name != nullptr &&
            kestrum_util_stricmp(slot.name, token) == 0) {
            _log_set_decorations(l, LOG_ALL_MODULES, LOG_DECORATION_BIT(NUM_STD_DECORATIONS + i));
            return true;
        }
    }
    return false;
}

// Offers the name to the given logger, or to one logger after the other until one takes it. Takes
// loggers_lock shared.
static bool apply_extended(logger* the_logger, char* name) {
    bool applied = false;
    rwReadLock(&loggers_lock);
    if (the_logger != nullptr) {
        applied = apply_extended_log_decorations(the_logger, name);
    } else {
        for (logger* l = all_loggers.load(std::memory_order_relaxed); l != nullptr && !applied;
             l = l->next)
            applied = apply_extended_log_decorations(l, name);
    }
    rwReadUnlock(&loggers_lock);
    return applied;
}

int apply_log_decorations(logger* the_logger, const char* args) {
    _log_clear_decorations(the_logger, LOG_ALL_MODULES, ALL_DECORATIONS);
    if (args == nullptr || *args == '\0') {
        _log_set_decorations(the_logger, LOG_ALL_MODULES, DEFAULT_DECORATIONS);
        return 0;
    }
    ArgIter iter;
    argIterInitDefault(&iter, args);
    bool known = true;
    while (!argIterDone(&iter) && known) {
        char* name;
        char* value;
        if (!argIterGetNext(&iter, &name, &value))
            return -1;
        const bool standard = apply_standard(the_logger, name);
        const bool extended = apply_extended(the_logger, name);
        known = standard || extended;
        gsFree(name);
        gsFree(value);
    }
    return known ? 0 : -1;
}

int logParseLogDecorations(const char* args) {
    if (args == nullptr)
        args = "";
    char* const remembered = strdup(args);
    if (remembered == nullptr)
        return -1;
    rwWriteLock(&remembered_lock);
    char* const before = default_decorations_args;
    default_decorations_args = remembered;
    rwWriteUnlock(&remembered_lock);
    free(before);
    return apply_log_decorations(nullptr, args);
}

// An option that is set at the same time reaches every logger: it is remembered before it is
// applied, and the logger joins the chain before it looks here.
void apply_remembered_decorations(logger* log) {
    rwReadLock(&remembered_lock);
    char* const option =
        default_decorations_args != nullptr ? strdup(default_decorations_args) : nullptr;
    rwReadUnlock(&remembered_lock);
    if (option != nullptr)
        apply_log_decorations(log, option);
    free(option);
}
