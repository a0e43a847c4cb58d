// The registry: which components log, and the levels and decorations of their modules.
//
// Loggers form a chain, newest first, that only grows at its head. A logger is complete, with its
// links, before it becomes the head, so lookups may follow the chain without a lock; walks hold
// loggers_lock shared, which keeps registrations out until they are over.
//
// A linked module follows the newest module of its name among the components loaded before. Since
// a name means its newest module, and a walk goes from a module back along its links, a setting
// aimed at the name reaches every module of that name.

#include "util/c/shared/logging/logging_internal.h"

#include "osal/export/osal_threads.h"

#include <stdio.h>

static_assert(sizeof(logiter) == 40 && offsetof(logiter, link) == 8 &&
              offsetof(logiter, all) == 16 && offsetof(logiter, low) == 24 &&
              offsetof(logiter, high) == 32);

constexpr size_t LINK_ERROR_BYTES = 128;

volatile int loggers_lock;
std::atomic<logger*> all_loggers;
std::atomic<size_t> num_modules;

static bool is_registered(const logger* log) {
    for (const logger* l = all_loggers.load(std::memory_order_acquire); l != nullptr; l = l->next)
        if (l == log)
            return true;
    return false;
}

// Makes a linked module start as the one that it follows: with its levels and its stream. Without
// one it stays an ordinary module for good.
static void resolve_link(logmodule* m) {
    logger* log;
    size_t index;
    char error[LINK_ERROR_BYTES];
    if (find_logmodule(nullptr, m->names[0], &log, &index, error, sizeof error)) {
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
        all_loggers.store(log, std::memory_order_release);
        num_modules.fetch_add(log->num_loggers, std::memory_order_relaxed);
    }
    rwWriteUnlock(&loggers_lock);
    return joins;
}

void _log_add_logger(logger* log) {
    if (is_registered(log))
        return;  // a second time would make the chain endless
    for (size_t i = 0; i < log->num_loggers; i++) {
        log->loggers[i].out = stderr;
        if (log->loggers[i].is_linked)
            resolve_link(&log->loggers[i]);
    }
    if (join_chain(log))
        apply_remembered_decorations(log);
}

void logiter_init(logiter* iter, logger* l, LogModule m) {
    rwReadLock(&loggers_lock);
    iter->link = nullptr;
    iter->all = l == nullptr;
    iter->log = l;
    iter->low = 0;
    if (iter->all) {
        iter->log = all_loggers.load(std::memory_order_relaxed);
        iter->high = iter->log->num_loggers;  // this library's own logger is always there
    } else if (m == LOG_ALL_MODULES) {
        iter->high = l->num_loggers;
    } else {
        iter->low = static_cast<size_t>(m);
        iter->high = iter->low + 1;
    }
}

// The next module by index, or null at the end of the walk.
static logmodule* next_by_index(logiter* iter) {
    if (iter->low >= iter->high) {
        if (!iter->all)
            return nullptr;
        logger* log = iter->log->next;
        while (log != nullptr && log->num_loggers == 0)
            log = log->next;
        if (log == nullptr)
            return nullptr;
        iter->log = log;
        iter->low = 0;
        iter->high = log->num_loggers;
    }
    return &iter->log->loggers[iter->low++];
}

bool logiter_next(logiter* iter, logmodule** pm) {
    logmodule* m = iter->link != nullptr ? iter->link : next_by_index(iter);
    if (m == nullptr)
        return false;
    iter->link = m->link;
    *pm = m;
    return true;
}

void logiter_destroy(logiter*) {
    rwReadUnlock(&loggers_lock);
}

void _log_set_msglevel(logger* l, LogModule module, MsgLevel level) {
    for_each_module(l, module, [=](logmodule* m) { store_word(m->pMsgLevel, level); });
}

void _log_set_sanitylevel(logger* l, LogModule module, SanityLevel level) {
    for_each_module(l, module, [=](logmodule* m) { store_word(m->pSanityLevel, level); });
}

void _log_set_decorations(logger* l, LogModule module, unsigned int decorations) {
    for_each_module(l, module, [=](logmodule* m) {
        __atomic_fetch_or(&m->decorations, decorations, __ATOMIC_RELAXED);
    });
}

void _log_clear_decorations(logger* l, LogModule module, unsigned int decorations) {
    for_each_module(l, module, [=](logmodule* m) {
        __atomic_fetch_and(&m->decorations, ~decorations, __ATOMIC_RELAXED);
    });
}

unsigned int _log_get_decorations(logger* l, LogModule module) {
    return load_word(&l->loggers[module].decorations);
}

const char** _log_get_aliases(logger* l, LogModule module, int* pcount) {
    const char** names = l->loggers[module].names;
    *pcount = names[1] != nullptr ? 2 : 1;
    return names;
}

void logResetMsgLevels(void) {
    for_each_module(nullptr, LOG_ALL_MODULES,
                    [](logmodule* m) { store_word(m->pMsgLevel, m->log->msg_default); });
}

void logResetSanityLevels(void) {
    for_each_module(nullptr, LOG_ALL_MODULES,
                    [](logmodule* m) { store_word(m->pSanityLevel, m->log->sanity_default); });
}
