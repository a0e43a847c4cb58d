// What a test may do to the layers below the library, on its own thread.
//
// A test program that links platform.cpp defines operations of the platform layer itself, so the
// library calls the test's instead of libkxosal.so's; each forwards to the real one unless told
// otherwise. One that links faults.cpp replaces the C library's allocator, read() and write();
// sanitizers bring their own allocator and keep it.
//
// A failing operation is given by its number: the n-th from now on fails, counted from 1; 0 for
// none.
#ifndef TESTS_SUPPORT_PLATFORM_H
#define TESTS_SUPPORT_PLATFORM_H

#include <string>
#include <vector>

struct Platform {
    size_t failing_allocation = 0;
    long live_blocks = 0;  // allocated by gsMalloc, gsRealloc or msRealloc, not released
    bool keeps_sizes = false;
    std::vector<size_t> allocations = {};   // the sizes asked for, when kept
    const char* time_text = nullptr;        // not null: clocks and ids stand still; "" has no text
    std::vector<std::string> reports = {};  // failed checks, as "expression|file|function|format"
};

// Assign Platform{} to go back to the real layer.
extern thread_local Platform platform;

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
