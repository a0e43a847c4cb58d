// Reader-writer locks in one word.
//
//   bit 0        WRITER           a writer holds the word
//   bit 1        READERS_ASLEEP   readers may be sleeping until that writer is gone
//   bit 2        WRITERS_ASLEEP   writers may be sleeping until the word is free
//   bit 3        WRITER_STARVES   a writer has waited long; readers let it pass
//   bits 4-11    generation       the process that last used the word, see below
//   bits 12-31   reader count     threads that hold the word for reading, and those that wait to
//
// A reader first adds itself to the count and then tests the bits. Without a writer it holds the
// word. Otherwise it waits until the writer's bit is clear, and then holds the word without another
// step, because no writer enters while the count is above zero. A writer enters when both its bit
// and the count are zero.
//
// Courtesy. Overlapping readers may never let the count reach zero, so a writer that has waited for
// PATIENCE_MS sets WRITER_STARVES. A reader that finds the bit leaves the count again and naps
// until the bit is clear, for COURTESY_MS at most; then it goes ahead. It must not wait longer,
// because the holder of the word may be waiting for something that this reader has. For the same
// reason a thread that holds any lock word does not give way, and a thread that gave way in vain
// does not do so again for COURTESY_PAUSE_MS. The writer that enters clears the bit.
//
// Sleepers wait in the kernel on the word itself, readers and writers under different wake masks.
// Releasing is one atomic subtraction whose old value tells whether threads may be asleep.
//   - The writer that leaves wakes all sleeping readers.
//   - The thread that leaves the word free with WRITERS_ASLEEP set clears that bit and wakes one
//     writer. A writer that has slept sets the bit again when it enters, because it cannot know
//     whether it was the last one; that costs at most one empty wake-up and loses none.
// A bit is always cleared before its wake-up. So a thread that goes to sleep in between finds that
// the word has changed, or is among those woken. Sleeping and napping are direct system calls,
// because the C library's functions would be cancellation points.
//
// Memory order, for processors that reorder accesses. Entering acquires: the addition or exchange
// that finds the word free, or the load that finds the writer gone. Leaving releases, and every
// change of the word is one atomic operation, so a thread that enters sees what all threads did
// that left before. The other accesses are relaxed, because they decide about the word alone, and
// all threads agree on the order of its values: setting and clearing the bits of sleepers, testing
// for a starving writer, testing the generation of a word. No wake-up is lost, either: the kernel
// counts a sleeper before it compares the word, and a waker has changed the word before the kernel,
// after a full barrier, looks for sleepers. A fork's child starts its threads after its handler has
// stored to its words.
//
// fork() copies words that other threads hold, and those threads do not exist in the child. So the
// child is a new generation, and a word of another generation is free, whatever its other bits are.
// The thread that forked keeps its holds: it has a list of them, and the child's handler moves
// their words to the new generation. Generations repeat after 256 nested forks.

#include "osal/export/osal_threads.h"

#include "sharedinc/pause.h"

#include <errno.h>
#include <limits.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>
#include <algorithm>
#include <atomic>

constexpr unsigned WRITER = 1;
constexpr unsigned READERS_ASLEEP = 2;
constexpr unsigned WRITERS_ASLEEP = 4;
constexpr unsigned WRITER_STARVES = 8;
constexpr unsigned ONE_GENERATION = 0x10;
constexpr unsigned GENERATIONS = 0xFF0;
constexpr unsigned ONE_READER = 0x1000;
constexpr unsigned HELD = WRITER | ~(ONE_READER - 1);  // by a writer or by readers

// The kernel's constants, because its headers are not always where the C library's are.
constexpr int FUTEX_WAIT_BITSET = 9;
constexpr int FUTEX_WAKE_BITSET = 10;
constexpr int FUTEX_PRIVATE_FLAG = 128;
constexpr unsigned READER_MASK = 1;
constexpr unsigned WRITER_MASK = 2;

constexpr int SPINS = 100;  // a few hundred nanoseconds to a microsecond: shorter than a sleep
constexpr long NANOS_PER_MS = 1'000'000;
constexpr long PATIENCE_MS = 2;           // of a writer; far more than a line takes to print
constexpr int COURTESY_MS = 250;          // longer than a slow write takes
constexpr long COURTESY_PAUSE_MS = 2500;  // ten times as much, so that courtesy costs a tenth

// The words that the thread holds, in the order in which it took them. Those for which `words` has
// no room are only counted.
struct Holds {
    static constexpr unsigned ROOM = 13;

    unsigned listed;
    unsigned unlisted;
    unsigned lost;           // unlisted ones that a fork has ended
    long courteous_from_ms;  // 0 at first
    volatile int* words[ROOM];
};

static thread_local Holds holds;
static unsigned generation;  // changes in a fork's child only, before it starts threads

using Word = std::atomic_ref<unsigned>;

// Lock words are declared `volatile int` by their owners; here they are unsigned atomics.
static Word word_of(volatile int* lock) {
    return Word(*reinterpret_cast<unsigned*>(const_cast<int*>(lock)));
}

static bool is_of_this_process(unsigned word) {
    return (word & GENERATIONS) == generation;
}

static inline void note_hold(volatile int* lock) {
    if (__builtin_expect(holds.listed < Holds::ROOM, true))
        holds.words[holds.listed++] = lock;
    else
        holds.unlisted++;
}

// Removes a hold that is not the latest one from the list; false when a fork has ended it already.
[[gnu::noinline]] static bool forget_older_hold(volatile int* lock) {
    volatile int** const end = holds.words + holds.listed;
    volatile int** const found = std::find(holds.words, end, lock);
    if (found != end) {
        std::copy(found + 1, end, found);
        holds.listed--;
    } else if (holds.unlisted > 0) {
        holds.unlisted--;
    } else if (holds.lost > 0) {
        holds.lost--;
        return false;
    }
    return true;
}

static inline bool forget_hold(volatile int* lock) {
    const unsigned latest = holds.listed - 1;
    if (__builtin_expect(latest >= Holds::ROOM || holds.words[latest] != lock, false))
        return forget_older_hold(lock);
    holds.listed = latest;
    return true;
}

// In a fork's child: frees every word, except the holds of this thread.
static void start_generation() {
    generation = (generation + ONE_GENERATION) & GENERATIONS;
    for (unsigned i = 0; i < holds.listed; i++) {
        const Word word = word_of(holds.words[i]);
        word.store(generation | (word.load(std::memory_order_relaxed) & WRITER),
                   std::memory_order_relaxed);
    }
    for (unsigned i = 0; i < holds.listed; i++) {
        const Word word = word_of(holds.words[i]);
        if ((word.load(std::memory_order_relaxed) & WRITER) == 0)
            word.fetch_add(ONE_READER, std::memory_order_relaxed);
    }
    holds.lost += holds.unlisted;
    holds.unlisted = 0;
}

__attribute__((constructor(101))) static void watch_forks_for_locks() {
    pthread_atfork(nullptr, nullptr, start_generation);
}

static long now_ms() {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000 + now.tv_nsec / NANOS_PER_MS;
}

static struct timespec as_timespec(long milliseconds) {
    return {milliseconds / 1000, milliseconds % 1000 * NANOS_PER_MS};
}

// Sleeps until woken under `mask`, or until now_ms() reaches `until_ms` unless that is 0. Returns
// immediately when the word no longer is `expected`.
static void sleep_on(volatile int* lock, unsigned expected, unsigned mask, long until_ms) {
    const int saved_errno = errno;
    const struct timespec until = as_timespec(until_ms);
    syscall(SYS_futex, lock, FUTEX_WAIT_BITSET | FUTEX_PRIVATE_FLAG, expected,
            until_ms != 0 ? &until : nullptr, nullptr, mask);
    errno = saved_errno;
}

static void wake(volatile int* lock, int threads, unsigned mask) {
    const int saved_errno = errno;
    syscall(SYS_futex, lock, FUTEX_WAKE_BITSET | FUTEX_PRIVATE_FLAG, threads, nullptr, nullptr,
            mask);
    errno = saved_errno;
}

static void nap() {
    const int saved_errno = errno;
    const struct timespec time = as_timespec(1);
    syscall(SYS_nanosleep, &time, nullptr);
    errno = saved_errno;
}

// Wakes one writer unless another thread holds the word; that thread sees the bit when it leaves.
[[gnu::noinline]] static void wake_one_writer(volatile int* lock) {
    const Word word = word_of(lock);
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

// Takes a reader out of the count.
static inline void leave_reading(volatile int* lock) {
    const unsigned before = word_of(lock).fetch_sub(ONE_READER, std::memory_order_release);
    const unsigned rest = before & ~(READERS_ASLEEP | WRITER_STARVES | GENERATIONS);
    if (__builtin_expect(rest == (ONE_READER | WRITERS_ASLEEP), false))
        wake_one_writer(lock);
}

// Naps outside the count while a writer starves, unless this thread holds a word or has recently
// done so in vain.
static void let_writer_pass(volatile int* lock) {
    if (holds.listed + holds.unlisted > 0 || now_ms() < holds.courteous_from_ms)
        return;
    const Word word = word_of(lock);
    leave_reading(lock);
    int naps = 0;
    while (naps < COURTESY_MS && (word.load(std::memory_order_relaxed) & WRITER_STARVES) != 0) {
        nap();
        naps++;
    }
    if (naps == COURTESY_MS)
        holds.courteous_from_ms = now_ms() + COURTESY_PAUSE_MS;
    word.fetch_add(ONE_READER, std::memory_order_acquire);
}

// Waits for the writer to leave. The caller is in the count already.
static void wait_for_writer(volatile int* lock) {
    const Word word = word_of(lock);
    for (int spins = 0;; spins++) {
        unsigned now = word.load(std::memory_order_acquire);
        if ((now & WRITER) == 0)
            return;
        if (spins < SPINS) {
            kx_pause();
            continue;
        }
        if ((now & READERS_ASLEEP) != 0 ||
            word.compare_exchange_weak(now, now | READERS_ASLEEP, std::memory_order_relaxed))
            sleep_on(lock, now | READERS_ASLEEP, READER_MASK, 0);
    }
}

// Resets a word of another generation, with this thread as its reader. False when another thread
// has reset it and so overwrote what this one had added to the count.
static bool take_over_for_reading(volatile int* lock) {
    const Word word = word_of(lock);
    unsigned now = word.load(std::memory_order_relaxed);
    while (!is_of_this_process(now))
        if (word.compare_exchange_weak(now, generation | ONE_READER, std::memory_order_acquire,
                                       std::memory_order_relaxed))
            return true;
    return false;
}

// Continues for a reader that has added itself to the count; `before` is the word before that.
[[gnu::noinline]] static void read_lock_slow(volatile int* lock, unsigned before) {
    if (!is_of_this_process(before)) {
        if (take_over_for_reading(lock))
            return;
        before = word_of(lock).fetch_add(ONE_READER, std::memory_order_acquire);
    }
    if ((before & WRITER_STARVES) != 0)
        let_writer_pass(lock);
    wait_for_writer(lock);
}

// Waits for the word to be free and enters. `marks` are the bits that the writer sets while it
// waits, `asleep` is the bit that it sets when it enters: none until it has slept.
[[gnu::noinline]] static void write_lock_slow(volatile int* lock) {
    const Word word = word_of(lock);
    const long starves_from_ms = now_ms() + PATIENCE_MS;
    unsigned marks = WRITERS_ASLEEP;
    unsigned asleep = 0;
    for (int spins = 0;; spins++) {
        unsigned now = word.load(std::memory_order_relaxed);
        const unsigned valid = is_of_this_process(now) ? now : generation;
        if ((valid & HELD) == 0) {
            if (word.compare_exchange_weak(now, (valid & ~WRITER_STARVES) | WRITER | asleep,
                                           std::memory_order_acquire, std::memory_order_relaxed))
                return;
            continue;
        }
        if (spins < SPINS) {
            kx_pause();
            continue;
        }
        if ((now & marks) != marks &&
            !word.compare_exchange_weak(now, now | marks, std::memory_order_relaxed))
            continue;
        asleep = WRITERS_ASLEEP;
        const long before_ms = now_ms();
        // For a limited time, because another writer that enters clears the mark of this one.
        sleep_on(lock, now | marks, WRITER_MASK, before_ms + PATIENCE_MS);
        if (before_ms >= starves_from_ms)
            marks |= WRITER_STARVES;
    }
}

void rwReadLock(volatile int* lock) {
    const unsigned before = word_of(lock).fetch_add(ONE_READER, std::memory_order_acquire);
    if (__builtin_expect(((before ^ generation) & (WRITER | WRITER_STARVES | GENERATIONS)) != 0,
                         false))
        read_lock_slow(lock, before);
    note_hold(lock);
}

void rwReadUnlock(volatile int* lock) {
    if (__builtin_expect(forget_hold(lock), true))
        leave_reading(lock);
}

void rwWriteLock(volatile int* lock) {
    unsigned free = generation;
    if (__builtin_expect(
            !word_of(lock).compare_exchange_strong(
                free, generation | WRITER, std::memory_order_acquire, std::memory_order_relaxed),
            false))
        write_lock_slow(lock);
    note_hold(lock);
}

void rwWriteUnlock(volatile int* lock) {
    if (__builtin_expect(!forget_hold(lock), false))
        return;
    const unsigned before = word_of(lock).fetch_sub(WRITER, std::memory_order_release);
    if (__builtin_expect((before & (READERS_ASLEEP | WRITERS_ASLEEP)) != 0, false))
        wake_after_writing(lock);
}
