// What must not make a process hang or crash: printers without pause, cancelled threads, forks,
// components that are closed.

#define LOG_MODULES(MODULE) MODULE(DBG_BUSY, "busy", NULL, 0, 0)
#define LOG_DEFINE_COMPONENT
#include "util/export/logging_static_gen.h"

#include "support/temp_folder.h"
#include "support/test_logger.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>
#include <chrono>
#include <functional>
#include <set>
#include <sstream>
#include <thread>

using std::string;

static logger* const holders = make_logger({{{"first"}, {"second"}}});

// Threads that do something without pause, as long as the result lives. The action gets the
// thread's number and how often it has been called before.
static std::vector<std::jthread> busy_threads(int count, std::function<void(int, int)> action) {
    std::vector<std::jthread> threads;
    for (int t = 0; t < count; t++)
        threads.emplace_back([=](const std::stop_token& stop) {
            for (int i = 0; !stop.stop_requested(); i++)
                action(t, i);
        });
    usleep(10'000);
    return threads;
}

static void print_line(int t, int i) {
    logPrint(DBG_BUSY, MSG_QUIET, "%d:%d", t, i);
}

static void write_block() {
    const LogStream out(DBG_BUSY);
    fprintf(out, "<");
    usleep(1000);
    fprintf(out, ">\n");
}

// The lines of a text, of which no two are the same.
static std::set<string> lines_of(const string& text) {
    std::istringstream in(text);
    std::set<string> lines;
    for (string line; std::getline(in, line);)
        EXPECT_TRUE(lines.insert(line).second) << line;
    return lines;
}

struct RobustLogging : testing::Test {
    TempFolder folder;
    const string log = folder.file("log"), other = folder.file("other");

    void SetUp() override {
        alarm(60);  // instead of hanging
        ASSERT_EQ(files("busy=" + log), 0);
    }
    void TearDown() override {
        files("stderr");
    }
};

static void expect_within_a_second(const std::function<void()>& action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

// Two threads open and close files, so the list of open files is in danger, too.
TEST_F(RobustLogging, PrintersKeepNoOptionAndNoComponentOut) {
    const auto printers = busy_threads(6, print_line);
    const auto movers = busy_threads(2, [](int, int i) {
        expect_within_a_second([i] { files(i % 2 == 0 ? "busy=/dev/null" : "busy=/dev/full"); });
    });
    const auto setters =
        busy_threads(3, [](int, int) { _log_set_sanitylevel(nullptr, 0, SANITY_CHECK); });
    for (int i = 0; i < 5; i++)
        expect_within_a_second([] { make_logger({.modules = {{"late"}}}); });
}

// Other modules keep the files open, because naming a closed file empties it.
TEST_F(RobustLogging, NoLineIsLostAndABlockStaysTogetherWhileTheStreamIsSwitched) {
    constexpr int PRINTERS = 4;
    ASSERT_EQ(files("first=" + log + ",second=" + other), 0);
    {
        const auto printers = busy_threads(PRINTERS, print_line);
        for (int i = 0; i < 2000; i++)
            EXPECT_EQ(files(i % 2 == 0 ? "busy=>second" : "busy=>first"), 0);
        write_block();
    }
    std::set<string> lines = lines_of(read_file(log) + read_file(other));
    EXPECT_EQ(lines.erase("<>"), 1U);
    for (int t = 0; t < PRINTERS; t++)
        for (int i = 0; lines.erase(std::to_string(t) + ":" + std::to_string(i)) > 0;)
            i++;
    EXPECT_TRUE(lines.empty()) << "before " << *lines.begin();
}

// A pipe whose reader takes 20 lines a second; the printers keep more waiting.
TEST_F(RobustLogging, PrintersToASlowPipeKeepNoOptionOut) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, 0), 0);
    fcntl(ends[1], F_SETPIPE_SZ, 4096);
    const auto reader = busy_threads(1, [&ends](int, int) {
        char lines[1000];
        usleep(read(ends[0], lines, sizeof lines) > 0 ? 50'000 : 0);
    });
    ASSERT_EQ(files("busy=/proc/self/fd/" + std::to_string(ends[1])), 0);
    const auto printers =
        busy_threads(40, [](int, int) { logPrint(DBG_BUSY, MSG_QUIET, "%0990d", 0); });
    usleep(400'000);
    expect_within_a_second([] { files("busy=/dev/null"); });
    close(ends[1]);
}

TEST_F(RobustLogging, AHolderOfAStreamMayPrintAndSetDecorations) {
    FILE* const held = _log_acquire_stream(&_loggers, DBG_BUSY);
    std::jthread mover([] { files("busy=/dev/null"); });
    usleep(20'000);
    EXPECT_EQ(logParseLogDecorations("pid"), 0);
    EXPECT_EQ(logParseLogDecorations(","), 0);
    expect_within_a_second([] {
        for (int i = 0; i < 100; i++)
            print_line(0, i);
    });
    EXPECT_EQ(_loggers.loggers[DBG_BUSY].out, held);
    _log_release_stream(&_loggers, DBG_BUSY, held);
    mover.join();
    EXPECT_NE(_loggers.loggers[DBG_BUSY].out, held);
}

// Frames that cancellation skips confuse the address sanitizer, so the thread is cancelled after it
// has left the function that prints.
static void* print_and_end(void* print) {
    reinterpret_cast<void (*)()>(print)();
    pthread_testcancel();
    return nullptr;
}

TEST_F(RobustLogging, AThreadCancelledWhileItPrintsLeavesNoLock) {
    for (void (*print)() : {+[] { print_line(0, 0); }, write_block}) {
        int ends[2];
        ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
        ASSERT_EQ(files("busy=/proc/self/fd/" + std::to_string(ends[1])), 0);
        while (write(ends[1], "full", 4) > 0) {
        }
        pthread_t thread;
        ASSERT_EQ(pthread_create(&thread, nullptr, print_and_end, reinterpret_cast<void*>(print)),
                  0);
        usleep(20'000);
        pthread_cancel(thread);
        usleep(20'000);
        char drained[4096];
        while (read(ends[0], drained, sizeof drained) > 0) {
        }
        void* result = nullptr;
        pthread_join(thread, &result);
        EXPECT_EQ(result, PTHREAD_CANCELED);
        EXPECT_EQ(files("busy=stderr"), 0);
        close(ends[0]);
        close(ends[1]);
    }
}

// The child prints, moves the module and registers; each of the parent's lines is in the file once.
TEST_F(RobustLogging, AChildStartsWithFreeLocksAndNoLinesOfOthers) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer's own locks stay held in a child";
#endif
    for (const bool holding : {false, true}) {
        {
            const auto printers = busy_threads(3, print_line);
            FILE* const held = holding ? _log_acquire_stream(&_loggers, DBG_BUSY) : nullptr;
            const pid_t child = fork();
            alarm(30);  // a child does not inherit one
            if (holding)
                _log_release_stream(&_loggers, DBG_BUSY, held);
            if (child == 0) {
                logPrint(DBG_BUSY, MSG_QUIET, "child");
                make_logger({{{"in the child"}}});
                const int moved = files("in the child=stderr,busy=" + other);
                logPrint(DBG_BUSY, MSG_QUIET, "moved");
                _exit(moved);
            }
            int status = -1;
            waitpid(child, &status, 0);
            EXPECT_EQ(status, 0);
        }
        EXPECT_EQ(read_file(other), "moved\n");
        EXPECT_EQ(lines_of(read_file(log)).count("child"), 1U);
        files("busy=stderr,busy=" + log);  // which empties it
    }
}

TEST_F(RobustLogging, AComponentStaysLoadedAndFilesAreNotInherited) {
    void* const component = dlopen(UNLOADED_COMPONENT, RTLD_NOW);
    ASSERT_NE(component, nullptr) << dlerror();
    ASSERT_EQ(dlclose(component), 0);
    EXPECT_EQ(logParseMsgLevelsEx("unloaded=debug", nullptr, 0, nullptr), 0);
    EXPECT_EQ(fcntl(fileno(_loggers.loggers[DBG_BUSY].out), F_GETFD), FD_CLOEXEC);
}

TEST_F(RobustLogging, AStatementEvaluatesOnceAndItsArgumentsOnlyWhenEnabled) {
    int evaluated = 0;
    for (const MsgLevel level : {MSG_ERROR, MSG_WARN, MSG_INFO})
        logPrint((evaluated++, DBG_BUSY), (evaluated++, level), "%d", ++evaluated);
    EXPECT_EQ(evaluated, 8);
    EXPECT_EQ(read_file(log), "3\n6\n");
}
