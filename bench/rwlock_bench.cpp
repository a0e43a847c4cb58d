// Taking and releasing a reader-writer lock, uncontended and with two readers.
//
// The limit is a bare pair of atomic operations: it counts readers or marks a writer, but nobody
// could wait for it. Each lock has cache lines of its own; std::shared_mutex is pthread_rwlock
// behind inline functions.

#include "osal/export/osal_threads.h"

#include <absl/synchronization/mutex.h>
#include <benchmark/benchmark.h>
#include <pthread.h>
#include <sched.h>
#include <atomic>
#include <shared_mutex>
#include <string>

constexpr size_t OWN_LINES = 128;  // two cache lines, because they are prefetched in pairs

struct Ours {
    alignas(OWN_LINES) static inline volatile int word;
    static void read_lock() {
        rwReadLock(&word);
    }
    static void read_unlock() {
        rwReadUnlock(&word);
    }
    static void write_lock() {
        rwWriteLock(&word);
    }
    static void write_unlock() {
        rwWriteUnlock(&word);
    }
};

struct Pthread {
    alignas(OWN_LINES) static inline pthread_rwlock_t lock = PTHREAD_RWLOCK_INITIALIZER;
    static void read_lock() {
        pthread_rwlock_rdlock(&lock);
    }
    static void read_unlock() {
        pthread_rwlock_unlock(&lock);
    }
    static void write_lock() {
        pthread_rwlock_wrlock(&lock);
    }
    static void write_unlock() {
        pthread_rwlock_unlock(&lock);
    }
};

struct SharedMutex {
    alignas(OWN_LINES) static inline std::shared_mutex mutex;
    static void read_lock() {
        mutex.lock_shared();
    }
    static void read_unlock() {
        mutex.unlock_shared();
    }
    static void write_lock() {
        mutex.lock();
    }
    static void write_unlock() {
        mutex.unlock();
    }
};

struct AbslMutex {
    alignas(OWN_LINES) static inline absl::Mutex mutex{absl::kConstInit};
    static void read_lock() {
        mutex.ReaderLock();
    }
    static void read_unlock() {
        mutex.ReaderUnlock();
    }
    static void write_lock() {
        mutex.WriterLock();
    }
    static void write_unlock() {
        mutex.WriterUnlock();
    }
};

struct LimitAtomics {
    alignas(OWN_LINES) static inline std::atomic<unsigned> word;
    static void read_lock() {
        word.fetch_add(2, std::memory_order_acquire);
    }
    static void read_unlock() {
        word.fetch_sub(2, std::memory_order_release);
    }
    static void write_lock() {
        unsigned free = 0;
        bool entered = word.compare_exchange_strong(free, 1, std::memory_order_acquire);
        benchmark::DoNotOptimize(entered);
    }
    static void write_unlock() {
        word.store(0, std::memory_order_release);
    }
};

// Releases by an atomic operation, as every lock does that asks on the way out who is waiting.
struct LimitExchange : LimitAtomics {
    static void write_unlock() {
        unsigned before = word.exchange(0, std::memory_order_release);
        benchmark::DoNotOptimize(before);
    }
};

template <typename Contender>
static void read_pair(benchmark::State& state) {
    for (auto _ : state) {
        Contender::read_lock();
        Contender::read_unlock();
    }
}

template <typename Contender>
static void write_pair(benchmark::State& state) {
    for (auto _ : state) {
        Contender::write_lock();
        Contender::write_unlock();
    }
}

// Pins each thread to a core of its own: readers that take turns on one core never meet.
static void pin_thread(int index) {
    cpu_set_t allowed;
    CPU_ZERO(&allowed);
    CPU_SET(static_cast<size_t>(index), &allowed);
    pthread_setaffinity_np(pthread_self(), sizeof allowed, &allowed);
}

template <typename Contender>
static void two_readers(benchmark::State& state) {
    cpu_set_t before;
    pthread_getaffinity_np(pthread_self(), sizeof before, &before);
    pin_thread(state.thread_index());
    read_pair<Contender>(state);
    pthread_setaffinity_np(pthread_self(), sizeof before, &before);  // thread 0 goes on to others
}

template <typename Contender>
static void add_contender(const std::string& name) {
    benchmark::RegisterBenchmark(("read/" + name).c_str(), read_pair<Contender>);
    benchmark::RegisterBenchmark(("write/" + name).c_str(), write_pair<Contender>);
    benchmark::RegisterBenchmark(("readers/" + name).c_str(), two_readers<Contender>)
        ->Threads(2)
        ->UseRealTime();
}

int main(int argc, char** argv) {
    // The distribution builds it with its deadlock detection on, which costs more than the lock.
    absl::SetMutexDeadlockDetectionMode(absl::OnDeadlockCycle::kIgnore);
    add_contender<Ours>("kxutil");
    add_contender<Pthread>("pthread_rwlock");
    add_contender<SharedMutex>("std::shared_mutex");
    add_contender<AbslMutex>("absl::Mutex");
    add_contender<LimitAtomics>("limit: atomic pair");
    benchmark::RegisterBenchmark("write/limit: exchange to release", write_pair<LimitExchange>);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
