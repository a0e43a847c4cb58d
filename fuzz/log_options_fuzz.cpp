// Option strings for levels, sanity levels, log files and decorations, one after the other.
//
// The first byte of the input chooses the size of the error buffer; the rest is cut into strings
// at line breaks. Each string goes to the parser that its first byte names. After each: the result
// is 0 or -1, a failure is explained in a terminated text within the buffer, levels are levels, and
// decorations are known ones. At the end every module is back on standard error and no file is left
// open.

#include "support/test_logger.h"

#include <dlfcn.h>
#include <cstdint>
#include <cstring>
#include <string_view>

static int open_files;

// Files are not really made: log files go to a null device, and names with '!' cannot be opened.
// Only the library opens with mode "we".
extern "C" FILE* fopen(const char* path, const char* mode) {
    static const auto real =
        reinterpret_cast<FILE* (*)(const char*, const char*)>(dlsym(RTLD_NEXT, "fopen"));
    if (std::strcmp(mode, "we") != 0)
        return real(path, mode);
    if (std::strchr(path, '!') != nullptr || *path == '\0')
        return nullptr;
    FILE* file = real("/dev/null", mode);
    open_files += file != nullptr;
    return file;
}

extern "C" int fclose(FILE* file) {
    static const auto real = reinterpret_cast<int (*)(FILE*)>(dlsym(RTLD_NEXT, "fclose"));
    open_files--;
    return real(file);
}

static char* nothing(char* position, size_t*) {
    return position;
}

static int ignore(const char*) {
    return 0;
}

static void require(bool condition) {
    if (!condition)
        __builtin_trap();
}

constexpr unsigned KNOWN_DECORATIONS = 0x7f | 0x180;

static logger* make_loggers() {
    logger* older = make_logger({.modules = {{"gc", "collector", true}, {"debug"}, {"m,x"}}});
    logger* newer = make_logger({.modules = {{"jit"}, {.name = "gc", .is_linked = true}},
                                 .obsoletes = {{"old", "older", 0, MSG_INFO, OBSOLETE_WARN},
                                               {"older", "jit", 0, MSG_INFO, OBSOLETE_WARN},
                                               {"gone", nullptr, 0, MSG_QUIET, OBSOLETE_FAIL},
                                               {"no", "jit", 0, MSG_INFO, OBSOLETE_FAIL},
                                               {"a", "b", 0, MSG_INFO, OBSOLETE_WARN},
                                               {"b", "a", 0, MSG_INFO, OBSOLETE_WARN}},
                                 .decorators = {{"heap", nothing}, {"pid", nothing}}});
    require(newer->loggers[1].link == &older->loggers[0]);
    return newer;
}

static void check_modules(logger* newest) {
    static FILE* const sink = fopen("/dev/null", "a");
    _log_do_print_moduleinfo(nullptr, 0, sink);
    for (logger* log = newest; log != nullptr; log = log->next)
        for (size_t i = 0; i < log->num_loggers; i++) {
            const logmodule& m = log->loggers[i];
            require(*m.pMsgLevel < MSG_MAX && *m.pSanityLevel < SANITY_MAX);
            require((m.decorations & ~KNOWN_DECORATIONS) == 0);
            require(m.out != nullptr);
        }
}

static void parse(char which, const char* option, std::string& error) {
    using Parser = int (*)(const char*, char*, size_t, int (*)(const char*));
    constexpr Parser PARSERS[] = {logParseMsgLevelsEx, logParseSanityLevelsEx, logParseLogFilesEx};
    const unsigned choice = static_cast<unsigned char>(which) % 4;
    if (choice == 3) {
        const int result = logParseLogDecorations(option);
        require(result == 0 || result == -1);
        return;
    }
    std::fill(error.begin(), error.end(), '#');
    char* const buffer = error.empty() ? nullptr : error.data();
    const int result = PARSERS[choice](option, buffer, error.size(), ignore);
    require(result == 0 || result == -1);
    require(result == 0 || error.empty() || error.find('\0') < error.size());
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static logger* const newest = make_loggers();
    if (size == 0)
        return 0;
    std::string error(data[0] % 64, '#');
    open_files = 0;
    std::string_view rest(reinterpret_cast<const char*>(data) + 1, size - 1);
    while (!rest.empty()) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(rest.size(), line.size() + 1));
        if (line.empty())
            continue;
        parse(line[0], std::string(line.substr(1)).c_str(), error);
        check_modules(newest);
    }
    require(logParseLogFilesEx("stderr", nullptr, 0, nullptr) == 0);
    require(open_files == 0);
    return 0;
}
