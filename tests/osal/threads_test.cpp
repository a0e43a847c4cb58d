#include "osal/export/osal_threads.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <atomic>
#include <barrier>
#include <ctime>
#include <thread>
#include <vector>

static bool ids_are_right() {
    return osGetProcessID() == getpid() && threadGetCurrentID() == gettid();
}

struct Hold {
    decltype(&rwReadLock) take, release;
};
constexpr Hold READ = {rwReadLock, rwReadUnlock}, WRITE = {rwWriteLock, rwWriteUnlock};

TEST(RwLock, AWaiterSleepsUntilTheLastHoldIsReleased) {
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
    constexpr int THREADS = 16, ROUNDS = 8000, WRITE_EVERY = 4;  // a thread that is not woken hangs
    volatile int word = 0;
    long writes = 0;
    std::vector<std::jthread> threads(THREADS);
    for (std::jthread& thread : threads)
        thread = std::jthread([&] {
            for (int i = 0; i < ROUNDS; i++) {
                const Hold& hold = i % WRITE_EVERY == 0 ? WRITE : READ;
                hold.take(&word);
                const long before = writes;
                if (i % 63 == 0)
                    usleep(10);  // others find the word held until they sleep
                EXPECT_EQ(writes, before);
                if (&hold == &WRITE)
                    writes++;
                hold.release(&word);
            }
        });
    threads.clear();
    EXPECT_EQ(writes, THREADS * ROUNDS / WRITE_EVERY);
}

// The holds of other threads end in the child; those of the thread that forked go on.
TEST(Ids, AreRightInEveryThreadAndInAChildThatHasTheHoldsOfItsThread) {
    static volatile int others, mine, both, written, many[16];  // more than a thread lists
    std::barrier meeting(2);
    std::jthread other([&] {
        EXPECT_TRUE(ids_are_right() && ids_are_right());  // the second answer is the kept one
        rwWriteLock(&others);
        rwReadLock(&both);
        meeting.arrive_and_wait();
        meeting.arrive_and_wait();
        rwReadUnlock(&both);
        rwWriteUnlock(&others);
    });
    meeting.arrive_and_wait();
    for (volatile int* word : {&both, &mine, &both, &mine})
        rwReadLock(word);
    rwReadUnlock(&both);  // in another order
    rwWriteLock(&written);
    for (volatile int& word : many)
        rwReadLock(&word);
    EXPECT_TRUE(ids_are_right() && ids_are_right());
    const pid_t child = fork();
    if (child == 0) {
        alarm(10);
        rwReadLock(&mine);
        rwReadLock(&others);
    }
    for (volatile int* word : {&mine, &mine, &both})
        rwReadUnlock(word);
    rwWriteUnlock(&written);
    for (volatile int& word : many)
        rwReadUnlock(&word);
    if (child == 0) {
        for (volatile int& word : many)
            rwWriteLock(&word);
        for (volatile int* word : {&others, &mine})
            rwReadUnlock(word);
        for (volatile int* word : {&others, &mine, &both, &written})
            rwWriteLock(word);
#ifdef KX_COVERAGE
        exit(!ids_are_right());  // which writes the counts
#endif
        _exit(!ids_are_right());
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    meeting.arrive_and_wait();
}

// More slots than the platform's fast ones; in the end, all that exist.
TEST(Slots, AreSeparateInEveryThreadAndFromOneAnotherUntilTheyRunOut) {
    TLSKey keys[12];
    EXPECT_EQ(tlsAlloc(nullptr), OSAL_BAD_ARGUMENT);
    for (TLSKey& key : keys) {
        ASSERT_EQ(tlsAlloc(&key), OSAL_OK);
        EXPECT_EQ(tlsSet(key + 1, keys), OSAL_BAD_ARGUMENT);  // not allocated yet
        EXPECT_TRUE(tlsGet(key) == nullptr && tlsSet(key, &key) == OSAL_OK);
        std::thread([key] { EXPECT_EQ(tlsGet(key), nullptr); }).join();
    }
    for (TLSKey& key : keys)
        EXPECT_EQ(tlsGet(key), &key);
    osalError result = OSAL_OK;
    for (int left = 5000; left > 0 && result == OSAL_OK; left--)
        result = tlsAlloc(keys);
    EXPECT_EQ(result, OSAL_OUT_OF_RESOURCES);
}
