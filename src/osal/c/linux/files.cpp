// Files over POSIX descriptors. Not every C library has the calls with 64 in their names (open64),
// so the plain ones are used. A build with file sizes of 32 bits does not compile.

#include "osal/export/linux/osal_files_pd.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

static_assert(sizeof(fio_fd) == 4 && sizeof(filesize) == 8 && sizeof(off_t) == 8);

fio_fd fio_open(const char* path, int flags) {
    int mode = O_RDONLY;
    if ((flags & FIO_WRITE) != 0)
        mode = (flags & FIO_READ) != 0 ? O_RDWR : O_WRONLY;
    if ((flags & FIO_TRUNCATE) != 0 && (flags & FIO_WRITE) != 0)
        mode |= O_TRUNC;
    if ((flags & FIO_EXISTING) == 0)
        mode |= O_CREAT;
    fio_fd fd;
    do {
        fd = open(path, mode | O_CLOEXEC, 0666);
    } while (fd < 0 && errno == EINTR);
    return fd;
}

int fio_close(fio_fd fd) {
    // Not repeated after a signal: Linux has released the descriptor by then, and another thread
    // may already have been given its number.
    return close(fd) == 0 || errno == EINTR ? 0 : -1;
}

filesize fio_fdsize(fio_fd fd) {
    struct stat status;
    return fstat(fd, &status) == 0 ? status.st_size : -1;
}

// After EAGAIN, waits until a descriptor in non-blocking mode is ready; false after other errors.
static bool wait_until_ready(fio_fd fd, short events) {
    if (errno != EAGAIN)
        return false;
    struct pollfd wanted = {fd, events, 0};
    return poll(&wanted, 1, -1) > 0 || errno == EINTR;
}

int fio_read_fully(fio_fd fd, void* buf, int len) {
    int done = 0;
    while (done < len) {
        ssize_t n = read(fd, static_cast<char*>(buf) + done, static_cast<size_t>(len - done));
        if (n > 0)
            done += static_cast<int>(n);
        else if (n == 0 || (errno != EINTR && !wait_until_ready(fd, POLLIN)))
            break;  // end of file or error: the short count tells the caller
    }
    return done;
}

int fio_write_fully(fio_fd fd, const void* buf, int len) {
    int done = 0;
    while (done < len) {
        ssize_t n =
            write(fd, static_cast<const char*>(buf) + done, static_cast<size_t>(len - done));
        if (n > 0)
            done += static_cast<int>(n);
        else if (n == 0 || (errno != EINTR && !wait_until_ready(fd, POLLOUT)))
            break;
    }
    return done;
}

filesize fio_seek(fio_fd fd, filesize pos, int whence) {
    return lseek(fd, pos, whence);
}

filesize fio_fsize(const char* path) {
    struct stat status;
    return stat(path, &status) == 0 ? status.st_size : -1;
}

bool fio_canonicalize_path(const char* path, char* out, size_t outlen) {
    char canonical[PATH_MAX];
    if (realpath(path, canonical) == nullptr)
        return false;
    const size_t size = strlen(canonical) + 1;
    if (size > outlen)
        return false;
    memcpy(out, canonical, size);
    return true;
}

int fio_filename_strcmp(const char* a, const char* b) {
    return strcmp(a, b);
}

bool fio_is_same_files_by_path(const char* path, fio_fd fd) {
    struct stat named;
    struct stat opened;
    return stat(path, &named) == 0 && fstat(fd, &opened) == 0 && named.st_dev == opened.st_dev &&
           named.st_ino == opened.st_ino;
}
