#include "support/platform.h"

#include "osal/export/osal_assert.h"
#include "osal/export/osal_msmalloc.h"
#include "osal/export/osal_threads.h"
#include "osal/export/osal_timing.h"

#include <dlfcn.h>
#include <climits>
#include <cstring>

thread_local Platform platform;

// The operation of the same name in libkxosal.so.
#define REAL(name) reinterpret_cast<decltype(&name)>(dlsym(RTLD_NEXT, #name))

void* gsRealloc(void* old, size_t size) {
    if (platform.keeps_sizes)  // the list itself needs memory
        platform.allocations.push_back(size);
    if (strikes(platform.failing_allocation))
        return nullptr;
    void* block = REAL(gsRealloc)(old, size);
    platform.live_blocks += old == nullptr && block != nullptr;
    return block;
}

void* gsMalloc(size_t size) {
    return gsRealloc(nullptr, size);
}

void* msRealloc(mspace, void* ptr, size_t size) {
    return gsRealloc(ptr, size);
}

void gsFree(void* ptr) {
    platform.live_blocks -= ptr != nullptr;
    REAL(gsFree)(ptr);
}

void msFree(mspace, void* ptr) {
    gsFree(ptr);
}

bool timingFormatCurrentTime(TimeBuffer buf) {
    if (platform.time_text == nullptr)
        return REAL(timingFormatCurrentTime)(buf);
    return *std::strcpy(buf, platform.time_text) != '\0';
}

// The widest times, and ids with fewer digits than their column.
#define STANDS_STILL(type, name, value)                                \
    type name() {                                                      \
        return platform.time_text != nullptr ? (value) : REAL(name)(); \
    }
STANDS_STILL(s8, timingGetCurrentTimeMillis, LONG_MAX)
STANDS_STILL(nanotime, timingGetCurrentTimeNanos, LONG_MIN)
STANDS_STILL(int, osGetProcessID, 42)
STANDS_STILL(int, threadGetCurrentID, 4242)

void assertReport(const char* expression, const char* file, int line, const char* function,
                  const char* format, ...) {
    platform.reports.push_back(std::string(expression) + "|" + file + "|" + function + "|" +
                               format + (line > 0 ? "" : "|no line"));
}
