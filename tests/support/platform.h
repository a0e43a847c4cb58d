// A platform layer under a test's control. A test program that links platform.cpp defines these
// operations itself, so the library calls the test's instead of libkxosal.so's; each forwards to
// the real one unless told otherwise.
#ifndef TESTS_SUPPORT_PLATFORM_H
#define TESTS_SUPPORT_PLATFORM_H

#include <optional>
#include <string>
#include <vector>

struct Platform {
    size_t failing_allocation = 0;  // the n-th from now on fails, counted from 1
    long live_blocks = 0;           // gsMalloc, gsRealloc and msRealloc less those released
    bool keeps_sizes = false;
    std::vector<size_t> allocations = {};       // the sizes asked for, when kept
    std::optional<std::string> time_text = {};  // the empty text makes formatting fail
    std::optional<long> millis = {}, nanos = {};
    std::optional<int> process_id = {}, thread_id = {};
    int open_flags = 0;                     // of the last fio_open
    int open_files = 0;                     // fio_open less fio_close
    std::optional<long> file_size = {};     // what fio_fdsize says
    std::vector<std::string> reports = {};  // failed checks, as "expression|file|function|format"
};

// The state of the running test on its own thread; assign Platform{} to go back to the real layer.
extern thread_local Platform platform;

#endif
