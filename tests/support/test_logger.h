// Loggers made at run time, as a component's generated part would lay them out. They are never
// freed: a registered logger stays for the life of the process.
#ifndef TESTS_SUPPORT_TEST_LOGGER_H
#define TESTS_SUPPORT_TEST_LOGGER_H

#include "util/export/logging.h"

#include <algorithm>
#include <cstdlib>
#include <list>
#include <string>
#include <vector>

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
    static auto& made = *new std::list<TestLoggerParts>;  // whose tables stay in use
    const auto& [modules, obsoletes, decorators, size, level, sanity] = made.emplace_back(given);
    void* const memory = std::malloc(sizeof(logger) + modules.size() * sizeof(logmodule));
    auto* log = new (memory) logger{nullptr,          modules.size(), size,   obsoletes.size(),
                                    obsoletes.data(), level,          sanity, {}};
    std::ranges::copy(decorators, log->extended_decorators);
    logmodule* next = log->loggers;
    for (const auto& [name, alias, is_default, is_linked] : modules)
        new (next++) logmodule{
            nullptr, {name, alias}, 0,          new MsgLevel(level), new SanityLevel(sanity),
            log,     nullptr,       is_default, is_linked,           0};
    if (registers)
        _log_add_logger(log);
    return log;
}

// Prints to a logger's first module whatever its level is.
__attribute__((format(printf, 3, 4))) inline void print(logger* log, MsgLevel level,
                                                        const char* format, ...) {
    va_list args;
    va_start(args, format);
    _logforceprintv(log, 0, level, format, args);
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
