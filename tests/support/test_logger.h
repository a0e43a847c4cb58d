// Loggers made at run time, as a component's generated part would lay them out. They are never
// freed: a registered logger stays for the life of the process.
#ifndef TESTS_SUPPORT_TEST_LOGGER_H
#define TESTS_SUPPORT_TEST_LOGGER_H

#include "util/export/logging.h"

#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#pragma GCC diagnostic ignored "-Wpedantic"  // a record with a trailing array is made here

struct TestModule {
    const char *name, *alias = nullptr;
    bool is_default = false, is_linked = false;
};

struct TestLoggerParts {
    std::vector<TestModule> modules;
    std::vector<logobsolete> obsoletes = {};
    std::vector<log_extended_decorator> decorators = {};
    size_t max_decoration_size = 0;
    MsgLevel msg_default = MSG_WARN;
    SanityLevel sanity_default = SANITY_NONE;
};

// Makes and, unless told otherwise, registers a logger; the names must outlive it.
inline logger* make_logger(const TestLoggerParts& given, bool registers = true) {
    const size_t count = given.modules.size();
    const size_t size = sizeof(logger) + count * sizeof(logmodule);
    char* memory = static_cast<char*>(std::malloc(size + sizeof given));
    const auto& parts = *new (memory + size) TestLoggerParts(given);  // its tables stay in use
    auto* log = new (memory) logger{nullptr,
                                    count,
                                    parts.max_decoration_size,
                                    parts.obsoletes.size(),
                                    parts.obsoletes.data(),
                                    parts.msg_default,
                                    parts.sanity_default,
                                    {}};
    std::copy(parts.decorators.begin(), parts.decorators.end(), log->extended_decorators);
    for (size_t i = 0; i < count; i++) {
        const TestModule& m = parts.modules[i];
        auto* level = new MsgLevel(parts.msg_default);
        auto* sanity = new SanityLevel(parts.sanity_default);
        new (&log->loggers[i])
            logmodule{nullptr, {m.name, m.alias}, 0,           level, sanity, log,
                      nullptr, m.is_default,      m.is_linked, 0};
    }
    if (registers)
        _log_add_logger(log);
    return log;
}

// Prints a message whatever the level is, as a component's generated _logforceprint does.
inline void print(logger* log, LogModule module, MsgLevel level, const char* format, ...) {
    va_list args;
    va_start(args, format);
    _logforceprintv(log, module, level, format, args);
    va_end(args);
}

inline int files(const std::string& option) {
    return logParseLogFilesEx(option.c_str(), nullptr, 0, nullptr);
}

inline char* empty_decorator(char* position, size_t*) {
    return position;
}

// The library's own module, "util", whose logger is the oldest of the chain.
inline logmodule* util_module(const logger* newer) {
    while (newer->next != nullptr)
        newer = newer->next;
    return const_cast<logmodule*>(newer->loggers);
}

#endif
