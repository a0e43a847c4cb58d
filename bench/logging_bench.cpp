// A log line that is printed, and a log statement that is off.
//
// Every run starts with a fresh file and writes the same number of lines, so no file grows beyond
// LINES_TO_FILE of them; afterwards its size tells whether every line arrived.

#include "bench.h"

#define LOG_MODULES(M) M(DBG_GC, "gc", NULL, LOG_IS_DEFAULT, LOG_LEVEL_AND_MODULE)
#define LOG_DEFINE_COMPONENT
#include "util/export/logging_static_gen.h"

#include <fcntl.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#include <stdio.h>
#include <time.h>
#include <unistd.h>
#include <filesystem>
#include <memory>

constexpr int LINES_TO_FILE = 50'000;  // 4.5 MB; half of them by each of two threads
constexpr int LINES_TO_NULL = 100'000;
constexpr double MIN_LINE_BYTES = 80;
constexpr double MAX_LINE_BYTES = 100;

constexpr int FIRST_COUNT = 40'000;  // counts of five digits, all different for a while
constexpr int LAST_COUNT = 90'000;
static const char* const SPACE = "survivor space";

static const char* const NULL_DEVICE = "/dev/null";
static const std::string log_file = std::filesystem::temp_directory_path() / "lines.log";

struct Ours {
    static void open(const char* path) {
        write_to(path);
    }
    static void print(int count) {
        if (logEnabled(DBG_GC, MSG_INFO))
            _logforceprint(&_loggers, DBG_GC, MSG_INFO, "collected %d objects in %s", count, SPACE);
    }
    static void close() {
        write_to("stderr");
    }

  private:
    static void write_to(const char* path) {
        char error[256];
        const std::string option = std::string("gc=") + path;
        require(logParseLogFilesEx(option.c_str(), error, sizeof error, nullptr) == 0, error);
    }
};

// What a program without a logging library writes.
struct Fprintf {
    static inline FILE* file;
    static void open(const char* path) {
        file = fopen(path, "w");
        require(file != nullptr, path);
    }
    static void print(int count) {
        timespec now;
        clock_gettime(CLOCK_REALTIME, &now);
        tm local;
        localtime_r(&now.tv_sec, &local);
        char date[32];
        char zone[8];
        strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &local);
        strftime(zone, sizeof zone, "%z", &local);
        fprintf(file, "[%-5s][%-7s][%s.%03d%s][%05d] collected %d objects in %s\n", "INFO", "gc",
                date, static_cast<int>(now.tv_nsec / 1'000'000), zone, getpid(), count, SPACE);
        fflush(file);
    }
    static void close() {
        fclose(file);
    }
};

struct Spdlog {
    static inline std::shared_ptr<spdlog::logger> logger;
    static void open(const char* path) {
        auto sink = std::make_shared<spdlog::sinks::basic_file_sink_mt>(path, true);
        logger = std::make_shared<spdlog::logger>("gc", sink);
        logger->set_pattern("[%-5l][%-7n][%Y-%m-%dT%H:%M:%S.%e%z][%5P] %v");
        logger->set_level(spdlog::level::info);
        logger->flush_on(spdlog::level::trace);
    }
    static void print(int count) {
        logger->info("collected {} objects in {}", count, SPACE);
    }
    static void close() {
        logger.reset();
    }
};

// A line of the same length that is ready to be written.
struct LimitWrite {
    static inline int fd;
    static void open(const char* path) {
        fd = ::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        require(fd >= 0, path);
    }
    static void print(int) {
        static const char LINE[] =
            "[INFO ][gc     ][2026-03-29T14:05:09.042+0200][12345] "
            "collected 40000 objects in survivor space\n";
        if (write(fd, LINE, sizeof LINE - 1) < 0)
            require(false, "write");
    }
    static void close() {
        ::close(fd);
    }
};

template <typename Contender, bool to_file>
static void print_lines(benchmark::State& state) {
    const char* path = to_file ? log_file.c_str() : NULL_DEVICE;
    if (state.thread_index() == 0)
        Contender::open(path);
    int count = FIRST_COUNT;
    for (auto _ : state) {
        Contender::print(count);
        count = count < LAST_COUNT ? count + 1 : FIRST_COUNT;
    }
    if (state.thread_index() != 0)
        return;
    Contender::close();
    if (to_file) {
        const double lines = static_cast<double>(state.iterations()) * state.threads();
        const double bytes = static_cast<double>(std::filesystem::file_size(path)) / lines;
        require(bytes >= MIN_LINE_BYTES && bytes <= MAX_LINE_BYTES,
                "lines are missing, or not alike");
        unlink(path);
    }
}

// Statements that are off follow one another, because a loop around one costs as much as the
// statement.
constexpr int STATEMENTS = 64;

template <typename Statement>
static void repeat(benchmark::State& state, Statement statement) {
    while (state.KeepRunningBatch(STATEMENTS))
        [&]<int... i>(std::integer_sequence<int, i...>) {
            (statement(i), ...);
        }
    (std::make_integer_sequence<int, STATEMENTS>());
}

static void off_ours(benchmark::State& state) {
    repeat(
        state, [](int i) __attribute__((always_inline)) {
            if (logEnabled(DBG_GC, MSG_DEBUG))
                _logforceprint(&_loggers, DBG_GC, MSG_DEBUG, "freed %d objects in %s", i, SPACE);
        });
}

static volatile unsigned bare_level = MSG_INFO;

[[gnu::noinline]] static void report_freed(int count, const char* space) {
    printf("freed %d objects in %s\n", count, space);
}

static void off_limit(benchmark::State& state) {
    repeat(
        state, [](int i) __attribute__((always_inline)) {
            if (bare_level >= MSG_DEBUG)
                report_freed(i, SPACE);
        });
}

static void off_spdlog(benchmark::State& state) {
    Spdlog::open(NULL_DEVICE);
    repeat(
        state, [gc_log = Spdlog::logger.get()](int i) __attribute__((always_inline)) {
            gc_log->debug("freed {} objects in {}", i, SPACE);
        });
    Spdlog::close();
}

template <typename Contender>
static void add_contender(const char* name) {
    for (int threads : {1, 2}) {
        auto* file = add("line to a file", name, print_lines<Contender, true>);
        auto* null = add("line to the null device", name, print_lines<Contender, false>);
        file->Iterations(LINES_TO_FILE / threads)->Threads(threads)->UseRealTime();
        null->Iterations(LINES_TO_NULL / threads)->Threads(threads)->UseRealTime();
    }
}

void add_all() {
    require(logParseLogDecorations("level,module,timestamp,pid") == 0 &&
                logParseMsgLevelsEx("gc=info", nullptr, 0, nullptr) == 0,
            "options");
    add_contender<Ours>("kxutil");
    add_contender<Fprintf>("fprintf");
    add_contender<Spdlog>("spdlog");
    add_contender<LimitWrite>("limit: write(2)");
    add("statement that is off", "kxutil", off_ours);
    add("statement that is off", "spdlog", off_spdlog);
    add("statement that is off", "limit: load and compare", off_limit);
}
