// A text whose last byte is the last before memory that cannot be read.
#ifndef TESTS_SUPPORT_GUARDED_TEXT_H
#define TESTS_SUPPORT_GUARDED_TEXT_H

#include <sys/mman.h>
#include <cstdlib>
#include <cstring>
#include <string_view>

// Valid until the next call. Not for several threads.
inline const char* guarded(std::string_view text) {
    constexpr size_t BYTES = 1 << 20;
    static char* const area = static_cast<char*>(
        mmap(nullptr, 2 * BYTES, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    static const int refused = mprotect(area + BYTES, BYTES, PROT_NONE);
    if (refused != 0 || text.size() > BYTES)
        std::abort();
    return static_cast<char*>(std::memcpy(area + BYTES - text.size(), text.data(), text.size()));
}

#endif
