#include "support/heap.h"

// At a fixed offset, so that it can be used before anything has run.
__attribute__((tls_model("initial-exec"))) static thread_local Heap state;

Heap& heap() {
    return state;
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
extern "C" {
void* __libc_malloc(size_t size);
void __libc_free(void* block);

void* malloc(size_t size) {
    state.replaced = true;
    state.allocations++;
    if (state.failing_allocation > 0 && --state.failing_allocation == 0)
        return nullptr;
    state.live_blocks++;
    return __libc_malloc(size);
}

void free(void* block) {
    state.live_blocks -= block != nullptr;
    __libc_free(block);
}
}
#endif
