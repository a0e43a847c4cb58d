#include "support/heap.h"

#include <cerrno>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)

Heap& heap() {
    static Heap unknown = {false, 0, 0, 0};
    return unknown;
}

#else

// Trivially constructed and at a fixed offset, so that it can be used before anything has run.
__attribute__((tls_model("initial-exec"))) static thread_local Heap state = {true, 0, 0, 0};

Heap& heap() {
    return state;
}

static bool fails() {
    state.allocations++;
    if (state.failing_allocation == 0 || --state.failing_allocation > 0)
        return false;
    errno = ENOMEM;
    return true;
}

static void* counted(void* block) {
    state.live_blocks += block != nullptr;
    return block;
}

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void __libc_free(void* block);

void* malloc(size_t size) {
    return fails() ? nullptr : counted(__libc_malloc(size));
}

void* calloc(size_t count, size_t size) {
    return fails() ? nullptr : counted(__libc_calloc(count, size));
}

void* realloc(void* block, size_t size) {
    if (fails())
        return nullptr;
    void* result = __libc_realloc(block, size);
    state.live_blocks += block == nullptr && result != nullptr;
    return result;
}

void free(void* block) {
    state.live_blocks -= block != nullptr;
    __libc_free(block);
}
}

#endif
