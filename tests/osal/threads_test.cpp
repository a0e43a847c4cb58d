#include "osal/export/osal_threads.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <atomic>
#include <ctime>
#include <semaphore>
#include <thread>
#include <vector>

// The status of a child process that runs `body`.
static int status_of_child(auto body) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(10);
        _exit(body());
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

TEST(Ids, AreRightInEveryThreadAndInAChild) {
    const auto ok = [] { return osGetProcessID() == getpid() && threadGetCurrentID() == gettid(); };
    EXPECT_TRUE(ok() && ok());  // the second answer is the one kept
    std::thread([ok] { EXPECT_TRUE(ok() && ok()); }).join();
    EXPECT_EQ(status_of_child([ok] { return ok() ? 0 : 1; }), 0);
}

struct Hold {
    decltype(&rwReadLock) take, release;
};
constexpr Hold READ = {rwReadLock, rwReadUnlock}, WRITE = {rwWriteLock, rwWriteUnlock};

TEST(RwLock, AWaiterSleepsUntilTheLastHoldIsReleased) {
    alarm(60);  // a thread that nobody wakes would hang
    for (const auto& [held, wanted] : {std::pair(READ, WRITE), {WRITE, READ}, {WRITE, WRITE}}) {
        volatile int word = 0;
        std::atomic<bool> released = false;
        held.take(&word);
        const std::clock_t before = std::clock();
        std::jthread waiter([&, hold = wanted] {
            hold.take(&word);
            EXPECT_TRUE(released);
            hold.release(&word);
        });
        usleep(50'000);
        EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 40);  // half of what a spinner takes
        if (held.take == rwReadLock) {
            rwReadLock(&word);  // nested: the waiting writer does not come first
            rwReadUnlock(&word);
            usleep(20'000);
        }
        released = true;
        held.release(&word);
    }
}

TEST(RwLock, WritersExcludeEverybodyAndNobodyIsForgotten) {
    constexpr int THREADS = 16, ROUNDS = 8000, WRITE_EVERY = 4;
    alarm(60);
    volatile int word = 0;
    long writes = 0;
    std::vector<std::jthread> threads;
    for (int t = 0; t < THREADS; t++)
        threads.emplace_back([&] {
            for (int i = 0; i < ROUNDS; i++) {
                const Hold& hold = i % WRITE_EVERY == 0 ? WRITE : READ;
                hold.take(&word);
                const long before = writes;
                if (i % 63 == 0)
                    usleep(10);  // lets others find the word held, until they sleep
                EXPECT_EQ(writes, before);
                if (&hold == &WRITE)
                    writes++;
                hold.release(&word);
            }
        });
    threads.clear();
    EXPECT_EQ(writes, THREADS * ROUNDS / WRITE_EVERY);
}

// In a child the other threads' holds are gone, and its own go on.
TEST(RwLock, AChildStartsWithTheHoldsOfTheThreadThatForked) {
    static volatile int others, mine, both, written;
    std::binary_semaphore ready(0), done(0);
    std::jthread other([&] {
        rwWriteLock(&others);
        rwReadLock(&both);
        ready.release();
        done.acquire();
        rwReadUnlock(&both);
        rwWriteUnlock(&others);
    });
    ready.acquire();
    for (volatile int* word : {&mine, &both, &mine})
        rwReadLock(word);
    rwWriteLock(&written);
    const auto release_mine = [] {
        for (volatile int* word : {&mine, &mine, &both})  // in another order
            rwReadUnlock(word);
        rwWriteUnlock(&written);
    };
    const auto use_all = [release_mine] {
        rwReadLock(&mine);
        release_mine();
        rwReadLock(&others);
        for (volatile int* word : {&others, &mine})
            rwReadUnlock(word);
        for (volatile int* word : {&others, &mine, &both, &written})
            rwWriteLock(word);
        return 0;
    };
    EXPECT_EQ(status_of_child(use_all), 0);
    release_mine();
    done.release();
}

// More of them than the platform keeps in its fast ones; in the end, all that there are.
TEST(Slots, AreSeparateInEveryThreadAndFromOneAnotherUntilTheyRunOut) {
    TLSKey keys[12], last;
    EXPECT_EQ(tlsAlloc(nullptr), OSAL_BAD_ARGUMENT);
    for (TLSKey& key : keys) {
        ASSERT_EQ(tlsAlloc(&key), OSAL_OK);
        EXPECT_TRUE(&key != keys || tlsSet(key + 1, keys) == OSAL_BAD_ARGUMENT);  // nobody's yet
        EXPECT_TRUE(tlsGet(key) == nullptr && tlsSet(key, &key) == OSAL_OK);
        std::thread([key] { EXPECT_EQ(tlsGet(key), nullptr); }).join();
    }
    for (TLSKey& key : keys)
        EXPECT_EQ(tlsGet(key), &key);
    EXPECT_EQ(tlsSet(1'000'000, keys), OSAL_BAD_ARGUMENT);
    int left = 5000;
    while (left > 0 && tlsAlloc(&last) == OSAL_OK)
        left--;
    EXPECT_TRUE(left > 0 && tlsAlloc(&last) == OSAL_OUT_OF_RESOURCES);
}
