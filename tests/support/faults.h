// Faults of the C library on demand, for the calling thread. A test program that links faults.cpp
// replaces its allocator, read() and write(); sanitizers bring their own allocator and keep it.
//
// Each operation has a countdown: the n-th from now on fails, counted from 1; 0 for none.
#ifndef TESTS_SUPPORT_FAULTS_H
#define TESTS_SUPPORT_FAULTS_H

#include <cstddef>

struct Faults {
    bool have_memory;    // false under a sanitizer: the next three mean nothing
    size_t allocations;  // so far
    long live_blocks;    // allocations less releases
    size_t failing_allocation;
    size_t failing_read, failing_write;
    int error;  // of the failing read or write; 0 lets it transfer one byte
};

Faults& faults();

#endif
