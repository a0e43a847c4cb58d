#include "support/platform.h"
#include "support/faults.h"

#include "osal/export/linux/osal_files_pd.h"
#include "osal/export/osal_assert.h"
#include "osal/export/osal_msmalloc.h"
#include "osal/export/osal_threads.h"
#include "osal/export/osal_timing.h"

#include <dlfcn.h>
#include <cstring>

thread_local Platform platform;

// The operation of the same name in libkxosal.so.
#define REAL(name) reinterpret_cast<decltype(&name)>(dlsym(RTLD_NEXT, #name))

void* gsRealloc(void* old, size_t size) {
    if (platform.keeps_sizes)  // which itself needs memory
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
    if (!platform.time_text)
        return REAL(timingFormatCurrentTime)(buf);
    std::strcpy(buf, platform.time_text->c_str());
    return !platform.time_text->empty();
}

#define SETTABLE(type, name, setting)                               \
    type name() {                                                   \
        return platform.setting ? *platform.setting : REAL(name)(); \
    }
SETTABLE(s8, timingGetCurrentTimeMillis, millis)
SETTABLE(nanotime, timingGetCurrentTimeNanos, nanos)
SETTABLE(int, osGetProcessID, process_id)
SETTABLE(int, threadGetCurrentID, thread_id)

fio_fd fio_open(const char* path, int flags) {
    const fio_fd fd = REAL(fio_open)(path, flags);
    platform.open_flags = flags;
    platform.open_files += fd != -1;
    return fd;
}

int fio_close(fio_fd fd) {
    platform.open_files--;
    return REAL(fio_close)(fd);
}

filesize fio_fdsize(fio_fd fd) {
    return platform.file_size ? *platform.file_size : REAL(fio_fdsize)(fd);
}

void assertReport(const char* expression, const char* file, int line, const char* function,
                  const char* format, ...) {
    platform.reports.push_back(std::string(expression) + "|" + file + "|" + function + "|" +
                               format + (line > 0 ? "" : "|no line"));
}
