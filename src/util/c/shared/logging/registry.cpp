// The registry: which components log, and the levels and decorations of their modules.
//
// Loggers form a chain, newest first, that only grows at its head. A logger is complete, with its
// links, before it becomes the head, so lookups may follow the chain without a lock; walks hold
// loggers_lock shared, which keeps registrations out until they are over.
//
// A walk goes from a module back along its links. A name means its newest module, so a setting for
// a name reaches every module of that name.

#include "util/c/shared/logging/logging_internal.h"

#include "osal/export/osal_threads.h"

static_assert(sizeof(logiter) == 40 && offsetof(logiter, link) == 8 &&
              offsetof(logiter, all) == 16 && offsetof(logiter, low) == 24 &&
              offsetof(logiter, high) == 32);

volatile int loggers_lock;
std::atomic<logger*> all_loggers;
std::atomic<size_t> num_modules;

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
