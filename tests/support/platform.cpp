#include "support/platform.h"

#include "osal/export/linux/osal_files_pd.h"
#include "osal/export/osal_assert.h"
#include "osal/export/osal_msmalloc.h"
#include "osal/export/osal_threads.h"
#include "osal/export/osal_timing.h"

#include <dlfcn.h>
#include <cstring>

thread_local Platform platform;

// The operation of the same name in libkxosal.so.
template <typename Function>
static Function* real(Function*, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}
#define REAL(name) real(&name, #name)

// Notes the wish for memory; true when it is not to be had.
static bool allocation_fails(size_t size) {
    if (platform.keeps_sizes)  // which itself needs memory
        platform.allocations.push_back(size);
    return platform.failing_allocation > 0 && --platform.failing_allocation == 0;
}

void* gsMalloc(size_t size) {
    void* block = allocation_fails(size) ? nullptr : REAL(gsMalloc)(size);
    platform.live_blocks += block != nullptr;
    return block;
}

void* gsRealloc(void* ptr, size_t size) {
    void* block = allocation_fails(size) ? nullptr : REAL(gsRealloc)(ptr, size);
    platform.live_blocks += ptr == nullptr && block != nullptr;
    return block;
}

void gsFree(void* ptr) {
    platform.live_blocks -= ptr != nullptr;
    REAL(gsFree)(ptr);
}

void* msRealloc(mspace space, void* ptr, size_t size) {
    if (platform.failing_allocation > 0 && --platform.failing_allocation == 0)
        return nullptr;
    void* block = REAL(msRealloc)(space, ptr, size);
    platform.live_blocks += ptr == nullptr && block != nullptr;
    return block;
}

void msFree(mspace space, void* ptr) {
    platform.live_blocks--;
    REAL(msFree)(space, ptr);
}

bool timingFormatCurrentTime(TimeBuffer buf) {
    if (!platform.time_text)
        return REAL(timingFormatCurrentTime)(buf);
    std::strcpy(buf, platform.time_text->c_str());
    return !platform.time_text->empty();
}

s8 timingGetCurrentTimeMillis() {
    return platform.millis ? *platform.millis : REAL(timingGetCurrentTimeMillis)();
}

nanotime timingGetCurrentTimeNanos() {
    return platform.nanos ? *platform.nanos : REAL(timingGetCurrentTimeNanos)();
}

int osGetProcessID() {
    return platform.process_id ? *platform.process_id : REAL(osGetProcessID)();
}

int threadGetCurrentID() {
    return platform.thread_id ? *platform.thread_id : REAL(threadGetCurrentID)();
}

bool fio_canonicalize_path(const char* path, char* out, size_t outlen) {
    return !platform.canonicalize_fails && REAL(fio_canonicalize_path)(path, out, outlen);
}

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
