// Reader-writer locks in one word.
//
//   bit 0   WRITER           a writer holds the word
//   bit 1   READERS_ASLEEP   readers may be sleeping until that writer is gone
//   bit 2   WRITERS_ASLEEP   writers may be sleeping until the word is free
//   rest    reader count     threads that hold the word for reading, and those that wait to
//
// A reader adds itself to the count first and looks afterwards. When no writer was there it holds
// the word; otherwise it waits for the writer's bit to go, and then holds the word already, since
// no writer enters while the count is above zero. So a reader never retries and never undoes, and
// only a writer that holds the word can delay it. A writer enters when both its bit and the count
// are zero.
//
// Sleepers wait in the kernel on the word itself, readers and writers under different wake masks.
// Releasing is one atomic subtraction whose old value tells whether anybody may be asleep.
//   - The writer that leaves wakes all sleeping readers.
//   - Whoever leaves the word free with WRITERS_ASLEEP set clears that bit and wakes one writer.
//     A writer that has slept sets the bit again when it enters, because it cannot know whether
//     it was the last one; that costs at most one empty wake-up and loses none.
// A bit is always cleared before its wake-up: a thread that goes to sleep in between still finds
// its expected value changed, or is among those woken.

#include "osal/export/osal_threads.h"

#include <errno.h>
#include <limits.h>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <atomic>

constexpr unsigned WRITER = 1;
constexpr unsigned READERS_ASLEEP = 2;
constexpr unsigned WRITERS_ASLEEP = 4;
constexpr unsigned ONE_READER = 8;
constexpr unsigned HELD = ~(READERS_ASLEEP | WRITERS_ASLEEP);  // by a writer or by readers

constexpr unsigned READER_MASK = 1;
constexpr unsigned WRITER_MASK = 2;

constexpr int SPINS = 100;  // a few hundred nanoseconds to a microsecond: shorter than a sleep

using Word = std::atomic_ref<unsigned>;

// Lock words are declared `volatile int` by their owners; here they are unsigned atomics.
static Word word_of(volatile int* lock) {
    return Word(*reinterpret_cast<unsigned*>(const_cast<int*>(lock)));
}

static long futex(volatile int* lock, int operation, unsigned value, unsigned mask) {
    return syscall(SYS_futex, lock, operation | FUTEX_PRIVATE_FLAG, value, nullptr, nullptr, mask);
}

// Sleeps until woken under `mask`; returns at once when the word no longer holds `expected`.
static void sleep_on(volatile int* lock, unsigned expected, unsigned mask) {
    const int saved_errno = errno;
    futex(lock, FUTEX_WAIT_BITSET, expected, mask);
    errno = saved_errno;
}

static void wake(volatile int* lock, int threads, unsigned mask) {
    const int saved_errno = errno;
    futex(lock, FUTEX_WAKE_BITSET, static_cast<unsigned>(threads), mask);
    errno = saved_errno;
}

// Waits for the writer to leave. The caller is in the count already.
[[gnu::noinline]] static void wait_for_reading(volatile int* lock) {
    Word word = word_of(lock);
    for (int spins = 0;; spins++) {
        unsigned now = word.load(std::memory_order_acquire);
        if ((now & WRITER) == 0)
            return;
        if (spins < SPINS) {
            __builtin_ia32_pause();
            continue;
        }
        if ((now & READERS_ASLEEP) != 0 ||
            word.compare_exchange_weak(now, now | READERS_ASLEEP, std::memory_order_relaxed))
            sleep_on(lock, now | READERS_ASLEEP, READER_MASK);
    }
}

// Waits for the word to be free and enters. `asleep` is what the writer adds to the word when it
// enters: nothing until it has slept.
[[gnu::noinline]] static void wait_for_writing(volatile int* lock) {
    Word word = word_of(lock);
    unsigned asleep = 0;
    for (int spins = 0;; spins++) {
        unsigned now = word.load(std::memory_order_relaxed);
        if ((now & HELD) == 0) {
            if (word.compare_exchange_weak(now, now | WRITER | asleep, std::memory_order_acquire,
                                           std::memory_order_relaxed))
                return;
            continue;
        }
        if (spins < SPINS) {
            __builtin_ia32_pause();
            continue;
        }
        if ((now & WRITERS_ASLEEP) == 0 &&
            !word.compare_exchange_weak(now, now | WRITERS_ASLEEP, std::memory_order_relaxed))
            continue;
        asleep = WRITERS_ASLEEP;
        sleep_on(lock, now | WRITERS_ASLEEP, WRITER_MASK);
    }
}

// Wakes one writer unless somebody else holds the word, who then sees the bit on leaving.
static void wake_one_writer(volatile int* lock) {
    Word word = word_of(lock);
    unsigned now = word.load(std::memory_order_relaxed);
    while ((now & HELD) == 0 && (now & WRITERS_ASLEEP) != 0) {
        if (word.compare_exchange_weak(now, now & ~WRITERS_ASLEEP, std::memory_order_relaxed)) {
            wake(lock, 1, WRITER_MASK);
            return;
        }
    }
}

[[gnu::noinline]] static void wake_after_writing(volatile int* lock) {
    const unsigned before = word_of(lock).fetch_and(~READERS_ASLEEP, std::memory_order_relaxed);
    if ((before & READERS_ASLEEP) != 0)
        wake(lock, INT_MAX, READER_MASK);
    wake_one_writer(lock);
}

void rwReadLock(volatile int* lock) {
    const unsigned before = word_of(lock).fetch_add(ONE_READER, std::memory_order_acquire);
    if (__builtin_expect((before & WRITER) != 0, false))
        wait_for_reading(lock);
}

void rwReadUnlock(volatile int* lock) {
    const unsigned before = word_of(lock).fetch_sub(ONE_READER, std::memory_order_release);
    if (__builtin_expect((before & ~READERS_ASLEEP) == (ONE_READER | WRITERS_ASLEEP), false))
        wake_one_writer(lock);
}

void rwWriteLock(volatile int* lock) {
    unsigned free = 0;
    if (__builtin_expect(!word_of(lock).compare_exchange_strong(
                             free, WRITER, std::memory_order_acquire, std::memory_order_relaxed),
                         false))
        wait_for_writing(lock);
}

void rwWriteUnlock(volatile int* lock) {
    const unsigned before = word_of(lock).fetch_sub(WRITER, std::memory_order_release);
    if (__builtin_expect((before & (READERS_ASLEEP | WRITERS_ASLEEP)) != 0, false))
        wake_after_writing(lock);
}
