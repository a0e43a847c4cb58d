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
#include <set>
#include <thread>

using std::string;

// Threads that print numbered lines without pause, as long as the result lives.
static std::vector<std::jthread> printers(int count) {
    std::vector<std::jthread> threads;
    for (int t = 0; t < count; t++)
        threads.emplace_back([t](const std::stop_token& stop) {
            for (int i = 0; !stop.stop_requested(); i++)
                logPrint(DBG_BUSY, MSG_QUIET, "%d:%d", t, i);
        });
    usleep(10'000);
    return threads;
}

struct RobustLogging : testing::Test {
    TempFolder folder;
    const string log = folder.file("log");

    void SetUp() override {
        alarm(60);  // instead of hanging
        ASSERT_EQ(files("busy=" + log), 0);
    }
    void TearDown() override {
        files("busy=stderr");
    }
};

template <typename Action>
static void expect_within_a_second(Action action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

TEST_F(RobustLogging, PrintersKeepNoOptionAndNoComponentOut) {
    const auto threads = printers(6);
    const std::jthread mover([](const std::stop_token& stop) {
        for (int i = 0; i < 10 || !stop.stop_requested(); i++)
            expect_within_a_second(
                [i] { files(i % 2 == 0 ? "busy=/dev/null" : "busy=/dev/full"); });
    });
    std::vector<std::jthread> setters;
    for (int t = 0; t < 3; t++)
        setters.emplace_back([](const std::stop_token& stop) {
            while (!stop.stop_requested())
                _log_set_sanitylevel(nullptr, 0, SANITY_CHECK);
        });
    for (int i = 0; i < 5; i++)
        expect_within_a_second([] { make_logger({.modules = {{"late"}}}); });
}

// A pipe whose reader takes 20 lines a second; six printers fill it.
TEST_F(RobustLogging, PrintersToASlowPipeKeepNoOptionOut) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, 0), 0);
    fcntl(ends[1], F_SETPIPE_SZ, 4096);
    const std::jthread reader([&ends](const std::stop_token& stop) {
        for (char lines[1000]; !stop.stop_requested() && read(ends[0], lines, sizeof lines) > 0;)
            usleep(50'000);
        close(ends[0]);
    });
    signal(SIGPIPE, SIG_IGN);
    ASSERT_EQ(files("busy=/proc/self/fd/" + std::to_string(ends[1])), 0);
    std::vector<std::jthread> threads;
    for (int t = 0; t < 6; t++)
        threads.emplace_back([](const std::stop_token& stop) {
            while (!stop.stop_requested())
                logPrint(DBG_BUSY, MSG_QUIET, "%0990d", 0);
        });
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
            logPrint(DBG_BUSY, MSG_QUIET, "line of a holder %d", i);
    });
    EXPECT_EQ(_loggers.loggers[DBG_BUSY].out, held);
    _log_release_stream(&_loggers, DBG_BUSY, held);
    mover.join();
    EXPECT_NE(_loggers.loggers[DBG_BUSY].out, held);
}

// What is written reaches the file when the function ends, which is before the thread does: frames
// that cancellation skips confuse the address sanitizer.
[[gnu::noinline]] static void write_block() {
    const LogStream out(DBG_BUSY);
    fprintf(out, "block");
}

TEST_F(RobustLogging, AThreadCancelledWhileItPrintsLeavesNoLock) {
    using Body = void* (*)(void*);
    const Body bodies[] = {[](void*) -> void* {
                               logPrint(DBG_BUSY, MSG_QUIET, "line");
                               pthread_testcancel();
                               return nullptr;
                           },
                           [](void*) -> void* {
                               write_block();
                               pthread_testcancel();
                               return nullptr;
                           }};
    for (const Body body : bodies) {
        int ends[2];
        ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
        ASSERT_EQ(files("busy=/proc/self/fd/" + std::to_string(ends[1])), 0);
        while (write(ends[1], "full", 4) > 0) {
        }
        pthread_t thread;
        ASSERT_EQ(pthread_create(&thread, nullptr, body, nullptr), 0);
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

// The child prints, moves the module and registers; the parent's lines stand in the file once.
TEST_F(RobustLogging, AChildStartsWithFreeLocksAndNoLinesOfOthers) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer's own locks stay held in a child";
#endif
    for (const bool holding : {false, true}) {
        {
            const auto threads = printers(3);
            FILE* const held = holding ? _log_acquire_stream(&_loggers, DBG_BUSY) : nullptr;
            const pid_t child = fork();
            if (child == 0)
                alarm(10);
            if (holding)
                _log_release_stream(&_loggers, DBG_BUSY, held);
            if (child == 0) {
                logPrint(DBG_BUSY, MSG_QUIET, "child %d", holding);
                const int moved = files("busy=" + folder.file("child"));
                make_logger({.modules = {{"in the child"}}});
                logPrint(DBG_BUSY, MSG_QUIET, "moved");
                _exit(moved != 0 || logParseMsgLevelsEx("in the child", nullptr, 0, nullptr) != 0);
            }
            int status = -1;
            waitpid(child, &status, 0);
            EXPECT_EQ(status, 0);
        }
        EXPECT_EQ(read_file(folder.file("child")), "moved\n");
        std::istringstream lines(read_file(log));
        std::set<string> seen;
        for (string line; std::getline(lines, line);)
            EXPECT_TRUE(seen.insert(line).second) << line;
        EXPECT_EQ(seen.count("child " + std::to_string(holding)), 1U);
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

TEST_F(RobustLogging, AHeldStreamKeepsABlockTogether) {
    {
        const auto threads = printers(2);
        const LogStream out(DBG_BUSY);
        fprintf(out, "<");
        usleep(1000);
        fprintf(out, ">\n");
    }
    EXPECT_NE(("\n" + read_file(log)).find("\n<>\n"), string::npos);
}

TEST_F(RobustLogging, AStatementPrintsOnceWhenEnabledAndEvaluatesNothingElse) {
    int modules = 0, levels = 0, arguments = 0;
    for (const MsgLevel level : {MSG_DEBUG, MSG_ERROR, MSG_WARN, MSG_INFO}) {
        if (level != MSG_DEBUG)
            logPrint((modules++, DBG_BUSY), (levels++, level), "%d%s", level, (arguments++, "!"));
        else
            logPrint(DBG_BUSY, MSG_WARN, "no arguments");
    }
    EXPECT_TRUE(modules == 3 && levels == 3 && arguments == 2);
    EXPECT_EQ(read_file(log), "no arguments\n1!\n2!\n");
}
