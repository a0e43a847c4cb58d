// Loggers made at run time, as a component's generated part would lay them out. They are never
// freed: a registered logger stays for the life of the process.
#ifndef TESTS_SUPPORT_TEST_LOGGER_H
#define TESTS_SUPPORT_TEST_LOGGER_H

#include "util/export/logging.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <vector>

struct TestModule {
    const char* name;
    const char* alias = nullptr;
    bool is_default = false;
    unsigned decorations = 0;
};

struct TestLoggerParts {
    std::vector<TestModule> modules;
    std::vector<logobsolete> obsoletes = {};
    std::vector<log_extended_decorator> decorators = {};
    size_t max_decoration_size = 0;
    MsgLevel msg_default = MSG_WARN;
    SanityLevel sanity_default = SANITY_NONE;
};

// Makes and registers a logger; the names must outlive it.
inline logger* make_logger(const TestLoggerParts& parts) {
    const size_t count = parts.modules.size();
    const size_t num_obsoletes = parts.obsoletes.size();
    auto* obsoletes = static_cast<logobsolete*>(std::calloc(num_obsoletes, sizeof(logobsolete)));
    std::uninitialized_copy_n(parts.obsoletes.begin(), num_obsoletes, obsoletes);
    auto* levels = count > 0 ? new MsgLevel[count] : nullptr;
    auto* sanities = count > 0 ? new SanityLevel[count] : nullptr;
    std::fill_n(levels, count, parts.msg_default);
    std::fill_n(sanities, count, parts.sanity_default);
    void* memory = std::malloc(sizeof(logger) + count * sizeof(logmodule));
    logger* log = new (memory) logger{nullptr,
                                      count,
                                      parts.max_decoration_size,
                                      num_obsoletes,
                                      obsoletes,
                                      parts.msg_default,
                                      parts.sanity_default,
                                      {},
                                      {}};
    for (size_t i = 0; i < parts.decorators.size(); i++)
        log->extended_decorators[i] = parts.decorators[i];
    for (size_t i = 0; i < count; i++) {
        const TestModule& m = parts.modules[i];
        new (&log->loggers[i])
            logmodule{nullptr, {m.name, m.alias}, 0,     &levels[i],   &sanities[i], log,
                      nullptr, m.is_default,      false, m.decorations};
    }
    _log_add_logger(log);
    return log;
}

// Makes module `from` a link to `to`, as registration does for linked modules.
inline void link_modules(logger* from, size_t index, logmodule* to) {
    from->loggers[index].link = to;
}

inline MsgLevel level_of(const logger* log, size_t index) {
    return __atomic_load_n(log->loggers[index].pMsgLevel, __ATOMIC_RELAXED);
}

// Prints a message whatever the level is, as a component's generated _logforceprint does.
__attribute__((format(printf, 4, 5))) inline void print(logger* log, LogModule module,
                                                        MsgLevel level, const char* format, ...) {
    va_list args;
    va_start(args, format);
    _logforceprintv(log, module, level, format, args);
    va_end(args);
}

// The library's own logger: the oldest of the chain.
inline logger* library_logger(logger* newer) {
    while (newer->next != nullptr)
        newer = newer->next;
    return newer;
}

#endif
