// Shared log files: each distinct file is open once, however many modules write to it.
//
// `streams` lists the open files, newest first. A record's refcount is the number of modules
// whose `out` is its stream, plus one per caller still holding what register_stream() gave it;
// at zero the file is closed and the record freed. stdout and stderr have no record, so
// counting them does nothing and no caller needs a special case.
//
// streams_lock guards the list and every count, always exclusively. Nothing in this file takes
// another lock while holding it. After each step a fork's child can use the list, although the
// thread that was changing it does not exist in the child: a record is complete before it is linked
// in and unlinked before its file is closed, and counts are never too low. The stores to the list
// are releases only for the child, whose memory holds what the other thread had stored up to some
// point: neither compiler nor processor may move the link before the record.

#include "util/c/shared/logging/logging_internal.h"

#include "osal/export/linux/osal_files_pd.h"
#include "osal/export/osal_threads.h"
#include "util/c/shared/logging/cancellation.h"
#include "util/export/posix/stringutil_pd.h"

#include <pthread.h>
#include <stddef.h>
#include <stdio.h>
#include <stdio_ext.h>
#include <stdlib.h>
#include <string.h>

constexpr size_t PATH_BYTES = 4096;

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"  // a trailing array

struct fileref {
    log_output f;
    size_t refcount;
    fileref* next;
    char name[];  // canonical when the platform could resolve it
};

#pragma GCC diagnostic pop

static fileref* streams;           // guarded by streams_lock
static volatile int streams_lock;  // guards the list and every refcount

// In a fork's child: drops what other threads had not yet written, because the parent writes it.
static void drop_unwritten() {
    for (const fileref* ref = streams; ref != nullptr; ref = ref->next)
        __fpurge(ref->f);
}

__attribute__((constructor)) static void watch_forks_for_streams() {
    pthread_atfork(nullptr, nullptr, drop_unwritten);
}

// The record of an open stream, or null. Needs streams_lock.
static fileref* record_of(log_output f) {
    fileref* ref = streams;
    while (ref != nullptr && ref->f != f)
        ref = ref->next;
    return ref;
}

// The record that covers an existing file: by name first, which costs no system call. Needs
// streams_lock.
static fileref* record_of_path(const char* path) {
    for (fileref* ref = streams; ref != nullptr; ref = ref->next)
        if (fio_filename_strcmp(ref->name, path) == 0)
            return ref;
    for (fileref* ref = streams; ref != nullptr; ref = ref->next)
        if (fio_is_same_files_by_path(path, fileno(ref->f)))
            return ref;
    return nullptr;
}

// Puts a record with one reference at the head of the list; null when memory is exhausted.
// Needs streams_lock.
static fileref* add_record(log_output f, const char* path) {
    fileref* ref = static_cast<fileref*>(malloc(sizeof(fileref) + strlen(path) + 1));
    if (ref == nullptr)
        return nullptr;
    ref->f = f;
    ref->refcount = 1;
    ref->next = streams;
    strcpy(ref->name, path);
    __atomic_store_n(&streams, ref, __ATOMIC_RELEASE);
    return ref;
}

// Opens the file at `path`, which is the resolved `filename`, and records it; null when either
// fails. Needs streams_lock.
static log_output open_stream(const char* filename, char* path, bool existed) {
    log_output f = fopen(path, "we");  // programs that the process starts do not inherit it
    if (f == nullptr)
        return nullptr;
    if (!existed && !fio_canonicalize_path(filename, path, PATH_BYTES))
        kestrum_util_strncpy_s(path, PATH_BYTES, filename, static_cast<size_t>(-1));
    if (add_record(f, path) == nullptr) {
        fclose(f);
        return nullptr;
    }
    setvbuf(f, nullptr, _IOFBF, BUFSIZ);  // allocates the buffer now, not while a line is printed
    return f;
}

// The stream of a file that is no standard stream. Needs streams_lock, also while it tests the file
// system: of two threads that name the same new file, the second must find what the first created.
static log_output stream_of_file(const char* filename) {
    char path[PATH_BYTES];
    const bool exists =
        fio_fsize(filename) >= 0 && fio_canonicalize_path(filename, path, sizeof path);
    if (!exists && !kestrum_util_strncpy_s(path, sizeof path, filename, static_cast<size_t>(-1)))
        return nullptr;
    if (fileref* ref = exists ? record_of_path(path) : nullptr; ref != nullptr) {
        ref->refcount++;
        return ref->f;
    }
    return open_stream(filename, path, exists);
}

log_output register_stream(const char* filename) {
    if (strcmp(filename, "stdout") == 0)
        return stdout;
    if (strcmp(filename, "stderr") == 0)
        return stderr;
    const CancellationOff cancellation_off;
    rwWriteLock(&streams_lock);
    log_output f = stream_of_file(filename);
    rwWriteUnlock(&streams_lock);
    return f;
}

void use_stream(log_output f) {
    rwWriteLock(&streams_lock);
    if (fileref* ref = record_of(f); ref != nullptr)
        ref->refcount++;
    rwWriteUnlock(&streams_lock);
}

void release_stream(log_output f) {
    const CancellationOff cancellation_off;
    rwWriteLock(&streams_lock);
    fileref** link = &streams;
    while (*link != nullptr && (*link)->f != f)
        link = &(*link)->next;
    if (fileref* ref = *link; ref != nullptr && --ref->refcount == 0) {
        __atomic_store_n(link, ref->next, __ATOMIC_RELEASE);
        fclose(f);
        free(ref);
    }
    rwWriteUnlock(&streams_lock);
}

void set_stream(logmodule* to, log_output f) {
    rwWriteLock(&to->lock);
    log_output before = to->out;
    to->out = f;
    rwWriteUnlock(&to->lock);
    // Released after the module's lock: fclose() may block, and printers should not wait for it.
    release_stream(before);
}

void redirect_logmodule(logmodule* from, logmodule* to) {
    rwReadLock(&from->lock);
    log_output f = from->out;
    use_stream(f);
    rwReadUnlock(&from->lock);
    set_stream(to, f);
}
