// Faults of the C library on demand, for the calling thread. A test program that links faults.cpp
// replaces its allocator, read() and write(); sanitizers bring their own allocator and keep it.
//
// Each operation has a countdown: the n-th from now on fails, counted from 1; 0 for none.
#ifndef TESTS_SUPPORT_FAULTS_H
#define TESTS_SUPPORT_FAULTS_H

#include <cstddef>

struct Faults {
    size_t failing_allocation = 0, failing_read = 0, failing_write = 0;
    int error = 0;           // of the failing read or write; 0 lets it transfer one byte
    size_t allocations = 0;  // so far; none at all under a sanitizer
    long live_blocks = 0;    // allocations less releases
};
extern __thread Faults faults;

inline bool strikes(size_t& countdown) {
    return countdown > 0 && --countdown == 0;
}

#endif
