#include "osal/export/osal_threads.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <atomic>
#include <ctime>
#include <thread>
#include <vector>

TEST(Ids, AreRightInEveryThreadAndInAChild) {
    const auto ok = [] { return osGetProcessID() == getpid() && threadGetCurrentID() == gettid(); };
    EXPECT_TRUE(ok() && ok());  // the second answer is the one kept
    std::thread([ok] { EXPECT_TRUE(ok() && ok()); }).join();
    const pid_t child = fork();
    if (child == 0)
        exit(ok() ? 0 : 1);
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
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
    for (int t = 0; t < THREADS; t++) {
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
    }
    threads.clear();
    EXPECT_EQ(writes, THREADS * ROUNDS / WRITE_EVERY);
}

// In a child the other threads' holds are gone, and its own go on.
TEST(RwLock, AChildStartsWithTheHoldsOfTheThreadThatForked) {
    static volatile int others, mine, both, written;
    std::atomic<bool> ready = false, done = false;
    std::jthread other([&] {
        rwWriteLock(&others);
        rwReadLock(&both);
        ready = true;
        while (!done)
            usleep(1000);
        rwReadUnlock(&both);
        rwWriteUnlock(&others);
    });
    while (!ready)
        usleep(1000);
    for (volatile int* word : {&mine, &both, &mine})
        rwReadLock(word);
    rwWriteLock(&written);
    const pid_t child = fork();
    if (child == 0) {
        alarm(10);
        rwReadLock(&others);
        rwReadUnlock(&others);
        rwReadLock(&mine);
        for (volatile int* word : {&mine, &mine, &both, &mine})  // in another order
            rwReadUnlock(word);
        rwWriteUnlock(&written);
        for (volatile int* word : {&others, &mine, &both, &written})
            rwWriteLock(word);
        _exit(0);
    }
    done = true;
    for (volatile int* word : {&mine, &both, &mine})
        rwReadUnlock(word);
    rwWriteUnlock(&written);
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

// More of them than the platform keeps in its fast ones; in the end, all that there are.
TEST(Slots, AreSeparateInEveryThreadAndFromOneAnotherUntilTheyRunOut) {
    TLSKey keys[12];
    EXPECT_EQ(tlsAlloc(nullptr), OSAL_BAD_ARGUMENT);
    ASSERT_EQ(tlsAlloc(&keys[0]), OSAL_OK);
    EXPECT_EQ(tlsSet(keys[0] + 1, &keys), OSAL_BAD_ARGUMENT);  // nobody's yet
    for (TLSKey& key : keys) {
        ASSERT_EQ(tlsAlloc(&key), OSAL_OK);
        EXPECT_EQ(tlsGet(key), nullptr);
        EXPECT_EQ(tlsSet(key, &key), OSAL_OK);
        std::thread([key] { EXPECT_EQ(tlsGet(key), nullptr); }).join();
    }
    for (TLSKey& key : keys)
        EXPECT_EQ(tlsGet(key), &key);
    EXPECT_EQ(tlsSet(1'000'000, &keys), OSAL_BAD_ARGUMENT);
    osalError result = OSAL_OK;
    for (int i = 0; i < 5000 && result == OSAL_OK; i++)
        result = tlsAlloc(&keys[0]);
    EXPECT_EQ(result, OSAL_OUT_OF_RESOURCES);
}
