// A log line that is printed, and a log statement that is off.
//
// Every contender prints the same message after level, module, local time and process id, about
// 90 bytes, and hands the line to the kernel before its call returns. The process id is right also
// after a fork: spdlog's own pattern flag, and getpid() beside fprintf(), ask the kernel for it.
// glog writes its own prefix, with the source file where the others have the module and a thread id
// for the process id. The limit writes a ready-made line of the same length. Messages of several
// lengths go to the null device.
//
// Every run starts with a fresh file and writes the same number of lines, so no file grows beyond
// LINES_TO_FILE of them; afterwards its size tells whether every line arrived.

#include "bench_log.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <gflags/gflags.h>
#include <glog/logging.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>
#include <memory>
#include <string>
#include <utility>

constexpr int LINES_TO_FILE = 50'000;  // 4.5 MB; half of them by each of two threads
constexpr int LINES_TO_NULL = 100'000;
constexpr double MIN_LINE_BYTES = 80;
constexpr double MAX_LINE_BYTES = 100;

constexpr int FIRST_COUNT = 40'000;  // counts of five digits, all different for a while
constexpr int LAST_COUNT = 90'000;
static const char* const SPACE = "survivor space";

static const char* const NULL_DEVICE = "/dev/null";
static std::string log_file;  // in the temporary folder

[[noreturn]] static void give_up(const char* what) {
    perror(what);
    exit(1);
}

struct Ours {
    static void open(const char* path) {
        write_to(path);
    }
    static void print(int count) {
        if (logEnabled(DBG_GC, MSG_INFO))
            _logforceprint(&_loggers, DBG_GC, MSG_INFO, "collected %d objects in %s", count, SPACE);
    }
    static void print_text(const char* text) {
        if (logEnabled(DBG_GC, MSG_INFO))
            _logforceprint(&_loggers, DBG_GC, MSG_INFO, "%s", text);
    }
    static void close() {
        write_to("stderr");
    }

  private:
    static void write_to(const char* path) {
        char error[256];
        const std::string option = std::string("gc=") + path;
        if (logParseLogFilesEx(option.c_str(), error, sizeof error, nullptr) != 0)
            give_up(error);
    }
};

// What a program without a logging library writes.
struct Fprintf {
    static inline FILE* file;
    static void open(const char* path) {
        file = fopen(path, "w");
        if (file == nullptr)
            give_up(path);
    }
    static void print(int count) {
        print_with("[%-5s][%-7s][%s.%03d%s][%05d] collected %d objects in %s\n", count, SPACE);
    }
    static void print_text(const char* text) {
        print_with("[%-5s][%-7s][%s.%03d%s][%05d] %s\n", text);
    }
    static void close() {
        fclose(file);
    }

  private:
    template <typename... Args>
    static void print_with(const char* format, Args... args) {
        timespec now;
        clock_gettime(CLOCK_REALTIME, &now);
        tm local;
        localtime_r(&now.tv_sec, &local);
        char date[32];
        char zone[8];
        strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &local);
        strftime(zone, sizeof zone, "%z", &local);
        fprintf(file, format, "INFO", "gc", date, static_cast<int>(now.tv_nsec / 1'000'000), zone,
                getpid(), args...);
        fflush(file);
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
    static void print_text(const char* text) {
        logger->info("{}", text);
    }
    static void close() {
        logger.reset();
    }
};

struct Glog {
    static void open(const char* path) {
        google::SetLogDestination(google::GLOG_INFO, path);
    }
    static void print(int count) {
        LOG(INFO) << "collected " << count << " objects in " << SPACE;
    }
    static void print_text(const char* text) {
        LOG(INFO) << text;
    }
    static void close() {
        google::SetLogDestination(google::GLOG_INFO, "");
    }
    // Once, before the first line.
    static void set_up(const char* program) {
        FLAGS_timestamp_in_logfile_name = false;
        FLAGS_logbuflevel = -1;  // every level is flushed at once
        FLAGS_logbufsecs = 0;
        FLAGS_v = 0;
        google::SetCommandLineOption("drop_log_memory", "false");  // no advice to the page cache
        google::InitGoogleLogging(program);
        google::SetLogSymlink(google::GLOG_INFO, "");
        close();
    }
};

struct LimitWrite {
    static void open(const char* path) {
        fd = ::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        if (fd < 0)
            give_up(path);
    }
    static void print(int) {
        put(sizeof "collected 40000 objects in survivor space");
    }
    static void print_text(const char* text) {
        put(strlen(text) + 1);
    }
    static void close() {
        ::close(fd);
    }

  private:
    static inline int fd;
    static inline char line[2000];
    static void put(size_t message_bytes) {
        constexpr size_t DECORATION_BYTES =
            sizeof "[INFO ][gc     ][2026-03-29T14:05:09.042+0200][12345] " - 1;
        if (write(fd, line, DECORATION_BYTES + message_bytes) < 0)
            give_up("write");
    }
};

// The bytes per line that arrived in the file; an error when that cannot be every line.
static void check_file(benchmark::State& state, const char* path) {
    struct stat info;
    if (stat(path, &info) != 0)
        give_up(path);
    const double lines = static_cast<double>(state.iterations()) * state.threads();
    const double bytes = static_cast<double>(info.st_size) / lines;
    if (bytes < MIN_LINE_BYTES || bytes > MAX_LINE_BYTES)
        state.SkipWithError("lines are missing, or not alike");
    state.counters["line_bytes"] = bytes;
}

template <typename Contender>
static void print_lines(benchmark::State& state, bool to_file) {
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
        check_file(state, path);
        unlink(path);
    }
}

template <typename Contender>
static void print_messages(benchmark::State& state) {
    const std::string text(static_cast<size_t>(state.range(0)), 'x');
    Contender::open(NULL_DEVICE);
    for (auto _ : state)
        Contender::print_text(text.c_str());
    Contender::close();
}

// Statements that are off stand one behind the other, because a loop around one costs as much.
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

static volatile unsigned bare_levels[] = {MSG_WARN, MSG_INFO, MSG_WARN};

[[gnu::noinline]] static void report_freed(int count, const char* space) {
    printf("freed %d objects in %s\n", count, space);
}

static void off_limit(benchmark::State& state) {
    repeat(
        state, [](int i) __attribute__((always_inline)) {
            if (bare_levels[1] >= 4)
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

static void off_glog(benchmark::State& state) {
    repeat(
        state, [](int i) __attribute__((always_inline)) {
            VLOG(1) << "freed " << i << " objects in " << SPACE;
        });
}

template <typename Contender>
static void add_contender(const std::string& name) {
    const auto add = [&](const char* where, bool to_file, int lines, int threads) {
        auto* added =
            benchmark::RegisterBenchmark((where + name).c_str(), print_lines<Contender>, to_file);
        added->Iterations(lines / threads)->Threads(threads);
        if (threads > 1)
            added->UseRealTime();
    };
    for (int threads : {1, 2}) {
        add("file/", true, LINES_TO_FILE, threads);
        add("null/", false, LINES_TO_NULL, threads);
    }
    for (int length : {10, 30, 100, 300, 1000})
        benchmark::RegisterBenchmark(("message/" + name).c_str(), print_messages<Contender>)
            ->Arg(length)
            ->Iterations(LINES_TO_NULL / 2);
}

static void add_all() {
    add_contender<Ours>("kxutil");
    add_contender<Fprintf>("fprintf");
    add_contender<Spdlog>("spdlog");
    add_contender<Glog>("glog");
    add_contender<LimitWrite>("limit: write(2)");
    benchmark::RegisterBenchmark("off/kxutil", off_ours);
    benchmark::RegisterBenchmark("off/spdlog", off_spdlog);
    benchmark::RegisterBenchmark("off/glog", off_glog);
    benchmark::RegisterBenchmark("off/limit: load and compare", off_limit);
}

int main(int argc, char** argv) {
    const char* tmp = getenv("TMPDIR");
    std::string folder = std::string(tmp != nullptr ? tmp : "/tmp") + "/kx-bench.XXXXXX";
    if (mkdtemp(folder.data()) == nullptr)
        give_up(folder.c_str());
    log_file = folder + "/lines.log";

    Glog::set_up(argv[0]);
    if (logParseLogDecorations("level,module,timestamp,pid") != 0 ||
        logParseMsgLevelsEx("gc=info", nullptr, 0, nullptr) != 0)
        give_up("options");
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    add_all();
    benchmark::RunSpecifiedBenchmarks();
    rmdir(folder.c_str());
    return 0;
}
