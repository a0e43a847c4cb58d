// The C library's allocator under a test's control, for the calling thread. A test program that
// links heap.cpp replaces malloc; sanitizers bring their own, so tests ask first.
#ifndef TESTS_SUPPORT_HEAP_H
#define TESTS_SUPPORT_HEAP_H

#include <cstddef>

struct Heap {
    bool replaced;              // false under a sanitizer: the numbers below mean nothing
    size_t allocations;         // so far
    long live_blocks;           // allocations less releases
    size_t failing_allocation;  // the n-th from now on fails, counted from 1; 0 for none
};

Heap& heap();

#endif
