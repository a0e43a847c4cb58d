// A writer belongs to one thread at a time, which `lock` ensures. Every record is flushed in one
// write, so a machine that is killed loses no traced record.

#include "class_trace.h"

#include "agent_log.h"
#include "osal/export/osal_timing.h"
#include "util/export/streamwriter.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>

namespace {

constexpr size_t MAX_NAME_BYTES = 900;  // a record fits the writer's buffer
constexpr fio_fd NO_FILE = -1;

streamwriter writer;  // guarded by `lock`, as is changing `file`
std::atomic<fio_fd> file = NO_FILE;
volatile int lock;

void write_record(const char* name) {
    const size_t length = std::min(std::strlen(name), MAX_NAME_BYTES);
    sw_u8(&writer, static_cast<uint64_t>(timingGetCurrentTimeNanos()));
    sw_u4(&writer, static_cast<uint32_t>(threadGetCurrentID()));
    sw_u2(&writer, static_cast<uint16_t>(length));
    sw_bytes(&writer, name, length);
    sw_flush(&writer);
}

}  // namespace

int set_class_trace(const char* path, char* errbuf, size_t errlen) {
    const fio_fd next = *path != '\0' ? fio_open(path, FIO_WRITE | FIO_TRUNCATE) : NO_FILE;
    if (*path != '\0' && next == NO_FILE) {
        std::snprintf(errbuf, errlen, "Could not open %s", path);
        return -1;
    }
    rwWriteLock(&lock);
    const fio_fd last = file.exchange(next);
    if (next != NO_FILE)
        sw_init(&writer, next, 0);
    rwWriteUnlock(&lock);
    if (last != NO_FILE)
        fio_close(last);
    return 0;
}

bool tracing_classes() {
    return file != NO_FILE;
}

void trace_class(const char* name) {
    if (!tracing_classes())
        return;
    filesize missing = 0;
    rwWriteLock(&lock);
    if (file != NO_FILE) {
        write_record(name);
        if (logGetSanityLevel(DBG_CLASS) >= SANITY_CHECK)
            missing = sw_position(&writer) - fio_fdsize(file);
    }
    rwWriteUnlock(&lock);
    if (missing != 0)
        logPrint(DBG_CLASS, MSG_ERROR, "the trace lacks %ld bytes", static_cast<long>(missing));
}
