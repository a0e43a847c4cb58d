// Files, by descriptor and by name: the Linux variant.
//
// Names are NUL-terminated and used during the call only. Every function may be called from any
// thread. Functions that transfer data continue after signals and short transfers, and wait for a
// descriptor in non-blocking mode.
#ifndef OSAL_EXPORT_LINUX_OSAL_FILES_PD_H
#define OSAL_EXPORT_LINUX_OSAL_FILES_PD_H

#include "osal/export/osal_types.h"

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

typedef int fio_fd;        // an open file; -1 means none
typedef int64_t filesize;  // a size or a position in bytes, 64 bits on every build

// Bits of the flag word of fio_open(). At least one of FIO_READ and FIO_WRITE.
enum {
    FIO_READ = 1,
    FIO_WRITE = 2,
    FIO_TRUNCATE = 4,  // an existing file loses its contents; needs FIO_WRITE
    FIO_EXISTING = 8   // a missing file is a failure; without this bit it is created
};

// Opens `path` with the bits of `flags`; FIO_READ | FIO_EXISTING (9) opens an existing file for
// reading. Programs that the process starts do not inherit the descriptor. A created file has the
// permissions 0666 without the bits of the process's mask. Returns -1 on failure, with the reason
// in the last-error value.
fio_fd fio_open(const char* path, int flags);

// Closes the descriptor. Returns 0, or -1 when the system reports an error; it is closed even then.
int fio_close(fio_fd fd);

// The size in bytes of the file open on `fd`; -1 when it cannot be examined.
filesize fio_fdsize(fio_fd fd);

// Reads `len` bytes into `buf`. Returns the number of bytes read; it is less than `len` only at the
// end of the file or after an error.
int fio_read_fully(fio_fd fd, void* buf, int len);

// Writes `len` bytes from `buf`. Returns the number of bytes written; it is less than `len` only
// after an error.
int fio_write_fully(fio_fd fd, const void* buf, int len);

// Moves the file position: `pos` counts from the start of the file (`whence` 0), from the current
// position (1) or from the end (2). Returns the new position, or -1 on failure.
filesize fio_seek(fio_fd fd, filesize pos, int whence);

// The size in bytes of the named file, symbolic links followed; -1 when it does not exist or
// cannot be examined.
filesize fio_fsize(const char* path);

// Writes the absolute name of an existing file, free of symbolic links, "." and "..", into `out`.
//
//   outlen  size of `out` in bytes, terminator included
//
// Returns false when the file does not exist, a part of the name cannot be examined, or the
// result does not fit; `out` is then unchanged.
bool fio_canonicalize_path(const char* path, char* out, size_t outlen);

// Compares two file names byte by byte: 0 when equal, otherwise as strcmp() orders them.
int fio_filename_strcmp(const char* a, const char* b);

// True when `path` names the file that is open on `fd`, also by another name than it was opened by.
bool fio_is_same_files_by_path(const char* path, fio_fd fd);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
