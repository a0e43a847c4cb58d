// Taking and releasing a reader-writer lock, uncontended and with two readers. Each lock has cache
// lines of its own.

#include "bench.h"
#include "osal/export/osal_threads.h"

#include <absl/synchronization/mutex.h>
#include <pthread.h>
#include <sched.h>
#include <atomic>

constexpr size_t OWN_LINES = 128;  // two cache lines, because they are prefetched in pairs

alignas(OWN_LINES) static volatile int word;
alignas(OWN_LINES) static pthread_rwlock_t rwlock = PTHREAD_RWLOCK_INITIALIZER;
alignas(OWN_LINES) static absl::Mutex mutex{absl::kConstInit};
alignas(OWN_LINES) static std::atomic<unsigned> bare;

// Readers that share one core never run at the same time, so each thread has its own core.
static void stay_on_core(int core) {
    cpu_set_t cores;
    CPU_ZERO(&cores);
    CPU_SET(static_cast<size_t>(core), &cores);
    pthread_setaffinity_np(pthread_self(), sizeof cores, &cores);
}

template <typename Pair>
static void add_read(const char* contender, Pair lock_and_unlock) {
    const auto run = [=](benchmark::State& state) {
        stay_on_core(state.thread_index());
        for (auto _ : state)
            lock_and_unlock();
    };
    add("read pair", contender, run);
    add("read pair", contender, run)->Threads(2)->UseRealTime();
}

void add_all() {
    stay_on_core(0);
    // The distribution builds it with its deadlock detection on, which costs more than the lock.
    absl::SetMutexDeadlockDetectionMode(absl::OnDeadlockCycle::kIgnore);

    add_read("kxutil", [] {
        rwReadLock(&word);
        rwReadUnlock(&word);
    });
    add_loop("write pair", "kxutil", [] {
        rwWriteLock(&word);
        rwWriteUnlock(&word);
    });
    add_read("absl::Mutex", [] {
        mutex.ReaderLock();
        mutex.ReaderUnlock();
    });
    add_loop("write pair", "absl::Mutex", [] {
        mutex.WriterLock();
        mutex.WriterUnlock();
    });
    add_read("pthread_rwlock", [] {
        pthread_rwlock_rdlock(&rwlock);
        pthread_rwlock_unlock(&rwlock);
    });
    add_loop("write pair", "pthread_rwlock", [] {
        pthread_rwlock_wrlock(&rwlock);
        pthread_rwlock_unlock(&rwlock);
    });
    // Counts readers or marks a writer, and cannot wake a waiter. It uses no plain store, because a
    // lock must learn at its release whether a thread is waiting.
    add_read("limit: atomic pair", [] {
        bare.fetch_add(2, std::memory_order_acquire);
        bare.fetch_sub(2, std::memory_order_release);
    });
    add_loop("write pair", "limit: atomic pair", [] {
        unsigned free = 0;
        benchmark::DoNotOptimize(bare.compare_exchange_strong(free, 1, std::memory_order_acquire));
        benchmark::DoNotOptimize(bare.exchange(0, std::memory_order_release));
    });
}
