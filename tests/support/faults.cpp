#include "support/platform.h"

#include <sys/syscall.h>
#include <unistd.h>
#include <cerrno>

__thread Faults faults;

static ssize_t transfer(long call, size_t& countdown, int fd, auto* buf, size_t len) {
    const bool now = strikes(countdown);
    if (now && faults.error != 0) {
        errno = faults.error;
        return -1;
    }
    return syscall(call, fd, buf, now && len > 0 ? 1 : len);
}

extern "C" {
ssize_t read(int fd, void* buf, size_t len) {
    return transfer(SYS_read, faults.failing_read, fd, buf, len);
}

ssize_t write(int fd, const void* buf, size_t len) {
    return transfer(SYS_write, faults.failing_write, fd, buf, len);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
void* __libc_realloc(void* block, size_t size);
void __libc_free(void* block);

// The functions must not call one another: compilers turn realloc(nullptr, size) into malloc().
static void* resize(void* block, size_t size) {
    faults.allocations++;
    if (strikes(faults.failing_allocation))
        return nullptr;
    faults.live_blocks += block == nullptr;
    return __libc_realloc(block, size);
}

void* realloc(void* block, size_t size) {
    return resize(block, size);
}

void* malloc(size_t size) {
    return resize(nullptr, size);
}

void free(void* block) {
    faults.live_blocks -= block != nullptr;
    __libc_free(block);
}
#endif
}
