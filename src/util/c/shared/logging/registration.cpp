// Registration: what happens when a component is loaded.
//
// The component's logger gets its links before it joins the chain. A linked module follows the
// newest module of its name among the components loaded before. After joining, the logger gets the
// decorations of the latest option.

#include "util/c/shared/logging/logging_internal.h"

#include "osal/export/osal_threads.h"

#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

constexpr size_t LINK_ERROR_BYTES = 128;

static bool is_registered(const logger* log) {
    for (const logger* l = all_loggers.load(std::memory_order_acquire); l != nullptr; l = l->next)
        if (l == log)
            return true;
    return false;
}

// The chain refers to the logger forever, so closing the object that holds it must not unload it. A
// logger on the heap must be kept by its maker. A main program stays loaded anyway; its name here
// has no slash or is not the name of a loaded object.
static void keep_object_loaded(const logger* log) {
    Dl_info object;
    if (dladdr(log, &object) != 0 && strchr(object.dli_fname, '/') != nullptr)
        (void)dlopen(object.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
}

// Gives a linked module the levels and the stream of the module that it follows. If there is none,
// it stays without a link.
static void resolve_link(logmodule* m) {
    logger* log;
    size_t index;
    char error[LINK_ERROR_BYTES];
    if (find_logmodule(m->names[0], nullptr, &log, &index, error, sizeof error)) {
        logmodule* const target = &log->loggers[index];
        m->link = target;
        store_word(m->pMsgLevel, load_word(target->pMsgLevel));
        store_word(m->pSanityLevel, load_word(target->pSanityLevel));
        redirect_logmodule(target, m);
    } else if (logEnabled(DBG_UTIL, MSG_ERROR)) {
        _logforceprint(&_loggers, DBG_UTIL, MSG_ERROR,
                       "Could not locate linked log module %s (%s)\n", m->names[0], error);
    }
}

// Puts a logger at the head of the chain; false when another thread has done so already. Takes
// loggers_lock exclusively.
static bool join_chain(logger* log) {
    rwWriteLock(&loggers_lock);
    const bool joins = !is_registered(log);
    if (joins) {
        log->next = all_loggers.load(std::memory_order_relaxed);
        // Counted before it is in the chain, because a fork may copy the state in between.
        num_modules.fetch_add(log->num_loggers, std::memory_order_relaxed);
        all_loggers.store(log, std::memory_order_release);
    }
    rwWriteUnlock(&loggers_lock);
    return joins;
}

static void warn(const char* format, const char* name) {
    if (logEnabled(DBG_UTIL, MSG_WARN))
        _logforceprintdecorations(&_loggers, DBG_UTIL, MSG_WARN,
                                  static_cast<int>(_log_get_decorations(&_loggers, DBG_UTIL)),
                                  format, name);
}

// How many modules before the given one have the name.
static size_t earlier_uses(const logger* log, size_t module, const char* name) {
    size_t uses = 0;
    for (size_t i = 0; i < module; i++)
        for (const char* other : log->loggers[i].names)
            uses += other != nullptr && strcmp(other, name) == 0;
    return uses;
}

// Warns about names that the compiler accepts, but that options do not reach, or may read as a
// target or a quoted value.
static void check_names(const logger* log) {
    for (size_t i = 0; i < log->num_loggers; i++)
        for (const char* name : log->loggers[i].names) {
            if (name == nullptr || *name == '\0')
                continue;
            if (strpbrk(name, ",=") != nullptr || strchr(">\"'", *name) != nullptr)
                warn("Options may misread the log module name %s", name);
            if (earlier_uses(log, i, name) == 1)
                warn("Several log modules are named %s: options reach the first one only", name);
        }
}

void _log_add_logger(logger* log) {
    if (is_registered(log))
        return;  // a second time would make the chain a cycle
    keep_object_loaded(log);
    for (size_t i = 0; i < log->num_loggers; i++) {
        log->loggers[i].out = stderr;
        if (log->loggers[i].is_linked)
            resolve_link(&log->loggers[i]);
    }
    if (!join_chain(log))
        return;
    apply_remembered_decorations(log);
    check_names(log);
}
