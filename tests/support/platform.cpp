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

void* gsMalloc(size_t size) {
    if (platform.failing_allocation > 0 && --platform.failing_allocation == 0)
        return nullptr;
    void* block = REAL(gsMalloc)(size);
    platform.live_blocks += block != nullptr;
    return block;
}

void gsFree(void* ptr) {
    platform.live_blocks--;
    REAL(gsFree)(ptr);
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

void assertReport(const char* expression, const char* file, int line, const char* function,
                  const char* format, ...) {
    platform.reports.push_back(std::string(expression) + "|" + file + "|" + function + "|" +
                               format + (line > 0 ? "" : "|no line"));
}
