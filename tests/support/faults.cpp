#include "support/faults.h"

#include <sys/syscall.h>
#include <unistd.h>
#include <cerrno>

// At a fixed offset, so that it can be used before anything has run.
__attribute__((tls_model("initial-exec"))) static thread_local Faults state;

Faults& faults() {
    return state;
}

static bool strikes(size_t& countdown) {
    return countdown > 0 && --countdown == 0;
}

template <typename Bytes>
static ssize_t transfer(long call, size_t& countdown, int fd, Bytes* buf, size_t len) {
    const bool now = strikes(countdown);
    if (now && state.error != 0) {
        errno = state.error;
        return -1;
    }
    return syscall(call, fd, buf, now && len > 0 ? 1 : len);
}

extern "C" {
ssize_t read(int fd, void* buf, size_t len) {
    return transfer(SYS_read, state.failing_read, fd, buf, len);
}

ssize_t write(int fd, const void* buf, size_t len) {
    return transfer(SYS_write, state.failing_write, fd, buf, len);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
void* __libc_malloc(size_t size);
void* __libc_realloc(void* block, size_t size);
void __libc_free(void* block);

static void* allocate(void* old, size_t size) {
    state.have_memory = true;
    state.allocations++;
    if (strikes(state.failing_allocation))
        return nullptr;
    state.live_blocks += old == nullptr;
    return old == nullptr ? __libc_malloc(size) : __libc_realloc(old, size);
}

void* malloc(size_t size) {
    return allocate(nullptr, size);
}

void* realloc(void* block, size_t size) {
    return allocate(block, size);
}

void free(void* block) {
    state.live_blocks -= block != nullptr;
    __libc_free(block);
}
#endif
}
