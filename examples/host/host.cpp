// Stands in for the virtual machine: loads the components beside it, hands the logging options to
// the library and lets several threads work in all components at once.

#include "component.h"
#include "config.h"
#include "util/export/globmatch.h"
#include "util/export/logging.h"

#include <dlfcn.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <latch>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

constexpr const char* USAGE =
    "usage: host [option]...\n"
    "  --log STR          message levels, such as gc=debug,jit; empty for the default modules\n"
    "  --sanity STR       sanity levels, such as heap=check\n"
    "  --log-file STR     log files, such as 'gc=gc.log,jit=>gc,heap=stdout'\n"
    "  --decorations STR  decorations of each line, such as level,module,occupancy; empty for\n"
    "                     module, timestamp and pid\n"
    "  --config FILE      levels and log files from a file, such as { gc: { level: debug } }\n"
    "  --gc-options STR   the collector's own, such as region=128m,pause=40ms,verify,phase=mark\n"
    "  --trace-modules STR\n"
    "                     traces the modules that patterns choose by component and name, such as\n"
    "                     '-gc.sweep,+gc*,jit.in*': the first that fits decides, '-' leaves the\n"
    "                     module alone, without '+' a module that is QUIET stays so\n"
    "  --threads N        workers, 1 to 64; 2 by default\n"
    "  --forever          works until killed, telling each finished \"worker round\" on stdout\n"
    "STR may also follow an equals sign: --log=gc";
constexpr const char* COMPONENTS[] = {"gc", "jit"};  // the collector first
constexpr unsigned ROUNDS = 4;
constexpr unsigned MAX_THREADS = 64;
constexpr int EXIT_REJECTED = 2;

struct Component {
    const char* name;
    decltype(&component_work) work;
    logger* log;
    decltype(&component_configure) configure;  // null when it has no options
};

std::vector<Component> components;
unsigned threads = 2;
bool forever = false;

int parse_decorations(const char* args, char* errbuf, size_t errlen, int (*)(const char*)) {
    if (logParseLogDecorations(args) == 0)
        return 0;
    std::snprintf(errbuf, errlen, "No such decoration in \"%s\"", args);
    return -1;
}

int parse_config(const char* args, char* errbuf, size_t errlen, int (*)(const char*)) {
    return apply_config(args, errbuf, errlen);
}

int parse_gc_options(const char* args, char* errbuf, size_t errlen, int (*)(const char*)) {
    return components.front().configure(args, errbuf, errlen);
}

void trace(const Component& component, patternset* chosen) {
    for (size_t i = 0; i < component.log->num_loggers; i++) {
        const logmodule& m = component.log->loggers[i];
        const char* name[] = {component.name, m.names[0]};
        const MatchType match = patternSetMatchArray(chosen, name, 2, ".");
        if (match == FORCE || (match == MATCH && *m.pMsgLevel != MSG_QUIET))
            _log_set_msglevel(component.log, static_cast<LogModule>(i), MSG_TRACE);
    }
}

int parse_trace_modules(const char* args, char* errbuf, size_t errlen, int (*)(const char*)) {
    patternset chosen;
    if (patternSetCreate(&chosen, args) != 0) {
        std::snprintf(errbuf, errlen, "Out of memory");
        return -1;
    }
    for (const Component& component : components)
        trace(component, &chosen);
    patternSetFree(&chosen);
    return 0;
}

int parse_threads(const char* args, char* errbuf, size_t errlen, int (*)(const char*)) {
    const std::string_view text = args;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), threads);
    if (error == std::errc() && *end == '\0' && threads >= 1 && threads <= MAX_THREADS)
        return 0;
    std::snprintf(errbuf, errlen, "\"%s\" is not a number from 1 to %u", args, MAX_THREADS);
    return -1;
}

struct Option {
    std::string_view name;
    int (*parse)(const char* args, char* errbuf, size_t errlen, int (*warn)(const char*));
};

constexpr Option OPTIONS[] = {
    {"--log", logParseMsgLevelsEx},
    {"--sanity", logParseSanityLevelsEx},
    {"--log-file", logParseLogFilesEx},
    {"--decorations", parse_decorations},
    {"--config", parse_config},
    {"--gc-options", parse_gc_options},
    {"--trace-modules", parse_trace_modules},
    {"--threads", parse_threads},
};

int reject(std::string_view option, const char* message) {
    std::fprintf(stderr, "host: %.*s: %s\n", static_cast<int>(option.size()), option.data(),
                 message);
    return EXIT_REJECTED;
}

// Applies the options in their order. Returns the exit status when one of them ends the program.
std::optional<int> apply_options(std::span<char*> args) {
    for (size_t i = 0; i < args.size(); i++) {
        const std::string_view arg = args[i];
        if (arg == "--help") {
            std::puts(USAGE);
            return 0;
        }
        if (arg == "--forever") {
            forever = true;
            continue;
        }
        const std::string_view name = arg.substr(0, arg.find('='));
        const Option* option = std::ranges::find(OPTIONS, name, &Option::name);
        if (option == std::end(OPTIONS))
            return reject(arg, "No such option, see --help");
        const char* value = nullptr;
        if (name.size() < arg.size())
            value = args[i] + name.size() + 1;
        else if (++i < args.size())
            value = args[i];
        if (value == nullptr)
            return reject(name, "Value missing");
        char message[256];
        if (option->parse(value, message, sizeof message, nullptr) != 0)
            return reject(name, message);
    }
    return std::nullopt;
}

// Loads a component, whose log modules are known from then on. It is never unloaded.
bool load(const std::filesystem::path& folder, const char* name) {
    const auto file = folder / (std::string("lib") + name + ".so");
    void* library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* work = library != nullptr ? dlsym(library, "component_work") : nullptr;
    void* log = work != nullptr ? dlsym(library, "component_logger") : nullptr;
    if (log == nullptr) {
        std::fprintf(stderr, "host: %s\n", dlerror());
        return false;
    }
    components.push_back(
        {name, reinterpret_cast<decltype(&component_work)>(work),
         reinterpret_cast<decltype(&component_logger)>(log)(),
         reinterpret_cast<decltype(&component_configure)>(dlsym(library, "component_configure"))});
    return true;
}

void run_worker(unsigned worker, std::latch& start) {
    start.arrive_and_wait();
    for (unsigned round = 0; forever || round < ROUNDS; round++) {
        for (const Component& component : components)
            component.work(worker, round);
        if (forever) {
            std::printf("%u %u\n", worker, round);
            std::fflush(stdout);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    for (const char* name : COMPONENTS)
        if (!load(folder, name))
            return EXIT_FAILURE;
    if (const auto status = apply_options({argv + 1, argv + argc}))
        return *status;
    std::latch start(threads);
    std::vector<std::jthread> workers;
    for (unsigned worker = 0; worker < threads; worker++)
        workers.emplace_back(run_worker, worker, std::ref(start));
}
