// Process and thread ids, and the last-error value.
//
// Many log lines show both ids, so each is read from the kernel once and then kept: the process id
// for the process, the thread id for the thread. Only fork() makes them wrong, and the only thread
// of its child runs forget_ids(). When that handler could not be registered, nothing is kept. A
// kept id of 0 means unknown; no process and no thread has the id 0. Threads may read and store the
// process id in any order, because all of them store the same one.

#include "osal/export/osal_threads.h"

#include <errno.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <atomic>

static std::atomic<int> process_id;
static thread_local int thread_id;
static bool ids_can_be_kept;  // written once, while the library is loaded

static void forget_ids() {
    process_id.store(0, std::memory_order_relaxed);
    thread_id = 0;
}

__attribute__((constructor(101))) static void watch_forks() {
    ids_can_be_kept = pthread_atfork(nullptr, nullptr, forget_ids) == 0;
}

int osGetProcessID(void) {
    int id = process_id.load(std::memory_order_relaxed);
    if (__builtin_expect(id != 0, true))
        return id;
    id = getpid();
    if (ids_can_be_kept)
        process_id.store(id, std::memory_order_relaxed);
    return id;
}

int threadGetCurrentID(void) {
    if (__builtin_expect(thread_id != 0, true))
        return thread_id;
    int id = static_cast<int>(syscall(SYS_gettid));
    if (ids_can_be_kept)
        thread_id = id;
    return id;
}

int osGetLastError(void) {
    return errno;
}

void osSetLastError(int code) {
    errno = code;
}
