// A thread that nobody wakes would hang its test: alarm() makes that a failure.

#include "osal/export/osal_threads.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <time.h>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

constexpr unsigned PATIENCE_SECONDS = 30;
constexpr int MILLIS_PER_HOLD = 50;
constexpr long CPU_NANOS_OF_SLEEPERS = 25'000'000;  // of all; a single one that spins needs 50
constexpr int AN_ERROR = 77;

static void enter(volatile int* word, char hold) {
    hold == 'r' ? rwReadLock(word) : rwWriteLock(word);
}

static void leave(volatile int* word, char hold) {
    hold == 'r' ? rwReadUnlock(word) : rwWriteUnlock(word);
}

static long cpu_nanos_of_this_thread() {
    struct timespec used;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return used.tv_sec * 1'000'000'000 + used.tv_nsec;
}

struct WaitCase {
    std::string holds;
    std::string waiting;
};

const WaitCase WAIT_CASES[] = {
    {"w", "rrrrrr"},
    {"w", "wwwwww"},
    {"w", "rwrwrw"},
    {"rr", "wwwwww"},
};

// Neither signals nor readers that come and go beside the holder end a wait or cost it CPU time.
TEST(RwLock, WaitersSleepUntilTheLastHoldIsReleased) {
    alarm(PATIENCE_SECONDS);
    struct sigaction interrupt = {};
    interrupt.sa_handler = [](int) {};
    sigaction(SIGUSR1, &interrupt, nullptr);
    for (const WaitCase& c : WAIT_CASES) {
        SCOPED_TRACE(c.holds + " delays " + c.waiting);
        volatile int word = 0;
        std::atomic<bool> released = false;
        std::atomic<long> cpu_nanos = 0;
        std::vector<std::thread> threads;
        for (char hold : c.holds)
            enter(&word, hold);
        for (char hold : c.waiting) {
            threads.emplace_back([&, hold] {
                osSetLastError(AN_ERROR);
                const long before = cpu_nanos_of_this_thread();
                enter(&word, hold);
                EXPECT_TRUE(released);
                cpu_nanos += cpu_nanos_of_this_thread() - before;
                leave(&word, hold);
                EXPECT_EQ(osGetLastError(), AN_ERROR);
            });
        }
        for (size_t left = c.holds.size(); left > 0; left--) {
            for (int i = 0; i < MILLIS_PER_HOLD; i++) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
                for (std::thread& thread : threads)
                    pthread_kill(thread.native_handle(), SIGUSR1);
                if (c.holds[0] == 'r')
                    std::thread([&] { rwReadLock(&word), rwReadUnlock(&word); }).join();
            }
            released = left == 1;
            leave(&word, c.holds[0]);
        }
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_LT(cpu_nanos, CPU_NANOS_OF_SLEEPERS);
    }
    alarm(0);
}

TEST(RwLock, ReadersSeeWholeWritesAndNobodyIsForgotten) {
    constexpr int ROUNDS = 8000;
    constexpr int WRITE_EVERY = 4;
    alarm(PATIENCE_SECONDS);
    volatile int word = 0;
    long first = 0, second = 0;  // equal except during a write
    std::atomic<int> torn = 0;
    const unsigned count = std::clamp(4 * std::thread::hardware_concurrency(), 8U, 64U);
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < count; t++) {
        threads.emplace_back([&, t] {
            for (unsigned i = 0; i < ROUNDS; i++) {
                const char hold = (i + t) % WRITE_EVERY == 0 ? 'w' : 'r';
                enter(&word, hold);
                if (first != second)
                    torn++;
                if (hold == 'w')
                    first++;
                if (i % 16 < WRITE_EVERY)
                    std::this_thread::yield();  // lets others find the word held
                if (hold == 'w')
                    second++;
                leave(&word, hold);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(torn, 0);
    EXPECT_EQ(first, long{count} * ROUNDS / WRITE_EVERY);
    EXPECT_EQ(second, first);
    alarm(0);
}
