// Option strings for levels, sanity levels, log files and decorations, one after the other.
//
// The first byte of the input chooses the size of the error buffer; the rest is cut into strings
// at line breaks. Each goes to the parser that its first byte names, and fails with a terminated
// explanation or works; levels stay levels and decorations known ones. At the end every module is
// back on standard error and no file is left open. Log files are made in a folder that is removed.

#include "support/temp_folder.h"
#include "support/test_logger.h"

#include <unistd.h>
#include <sstream>

static FILE* const sink = fopen("/dev/null", "a");

static void require(bool condition) {
    if (!condition)
        __builtin_trap();
}

static logger* make_loggers() {
    make_logger({.modules = {{"gc", "collector", true}, {"debug"}, {"m,x"}}});
    return make_logger({.modules = {{"jit"}, {.name = "gc", .is_linked = true}},
                        .obsoletes = {{"old", "older", 0, MSG_INFO, OBSOLETE_WARN},
                                      {"older", "jit", 0, MSG_INFO, OBSOLETE_WARN},
                                      {"gone", nullptr, 0, MSG_INFO, OBSOLETE_FAIL},
                                      {"a", "a", 0, MSG_INFO, OBSOLETE_WARN}},
                        .decorators = {{"heap", empty_decorator}, {"pid", empty_decorator}}});
}

static void parse(unsigned char which, std::string option, std::string error) {
    constexpr decltype(&logParseMsgLevelsEx) PARSERS[] = {
        logParseMsgLevelsEx, logParseSanityLevelsEx, logParseLogFilesEx,
        [](auto text, auto, auto, auto) { return logParseLogDecorations(text); }};
    std::ranges::replace(option, '/', '.');  // would lead out of the folder
    char* const buffer = error.empty() ? nullptr : error.data();
    const int result =
        PARSERS[which % 4](option.c_str(), buffer, error.size(), [](auto) { return 0; });
    const bool explained = which % 4 == 3 || error.empty() || error.find('\0') < error.size();
    require(result == 0 || (result == -1 && explained));
}

static void check_modules(const logger* log) {
    _log_do_print_moduleinfo(nullptr, 0, sink);
    for (; log != nullptr; log = log->next)
        for (const logmodule* m = log->loggers; m < log->loggers + log->num_loggers; m++)
            require(*m->pMsgLevel < MSG_MAX && *m->pSanityLevel < SANITY_MAX &&
                    m->decorations < 0x200 && m->out != nullptr);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const logger* const newest = make_loggers();
    static const TempFolder folder;
    static const auto home = std::filesystem::current_path();
    const int unused = dup(0);  // the first free descriptor
    close(unused);
    std::filesystem::current_path(folder.file(""));
    std::istringstream lines(std::string(data, data + size));
    const std::string error(std::max(lines.get(), 0) % 64, '#');
    for (std::string line; std::getline(lines, line); check_modules(newest))
        if (!line.empty())
            parse(line[0], line.substr(1).c_str(), error);
    require(files("stderr") == 0 && dup(0) == unused && close(unused) == 0);
    for (const auto& file : std::filesystem::directory_iterator("."))
        std::filesystem::remove(file);
    std::filesystem::current_path(home);
    return 0;
}
