// A stream writer: it collects small writes to an open file in a buffer of 1024 bytes and counts
// the file position.
//
// The whole buffer is written with one platform write when it is full, when a write does not fit,
// and by sw_flush() and sw_seek(). Nothing is written when the record goes out of scope, so flush
// first. A failed write is not reported, and the position advances as if it had succeeded.
//
// The record owns nothing; the caller closes the file. A writer takes no lock and belongs to one
// thread at a time.
//
//     streamwriter w;
//     sw_init(&w, fd, 0);
//     sw_u4(&w, 0xCAFEBABE);
//     sw_bytes(&w, name, length);
//     sw_flush(&w);
#ifndef UTIL_EXPORT_STREAMWRITER_H
#define UTIL_EXPORT_STREAMWRITER_H

#include "osal/export/linux/osal_files_pd.h"
#include "sharedinc/compiler.h"

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#if __BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__
#error \
    "sw_u2(), sw_u4() and sw_u8() turn the bytes round, as only a little-endian processor needs it"
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef size_t sw_index;

enum { SW_BUFFER_BYTES = 1024 };

typedef struct streamwriter {
    unsigned char buffer[SW_BUFFER_BYTES];  // bytes not yet written, in order
    sw_index buf_pos;                       // their number, 0 to 1024
    filesize stream_pos;                    // the file position of the first of them
    fio_fd out;                             // the file, open for writing
} streamwriter;

#pragma GCC visibility push(default)

// Flushes the buffer, then writes `len` bytes from `buf` directly to the file, in platform writes
// of at most 2147483647 bytes. With `len` 0, `buf` may be null.
void sw_bytes_unbuffered(streamwriter* w, const void* buf, size_t len);

// Flushes the buffer and continues at position `pos`, in bytes from the start of the file.
void sw_seek(streamwriter* w, filesize pos);

#pragma GCC visibility pop

// Writes the buffer to the file.
static inline void sw_flush(streamwriter* w) {
    sw_bytes_unbuffered(w, NULL, 0);
}

// Starts a writer on an open file and moves the file to position `pos`. A file without positions,
// such as a pipe, stays where it is. The old contents of the record do not matter.
static inline void sw_init(streamwriter* w, fio_fd out, filesize pos) {
    w->buf_pos = 0;
    w->out = out;
    sw_seek(w, pos);
}

// The position where the next byte will land.
static inline filesize sw_position(const streamwriter* w) {
    return w->stream_pos + KX_CAST(filesize, w->buf_pos);
}

// Writes `len` bytes. A block that does not fit into the buffer is written directly to the file,
// after the buffer. A buffer that becomes full is flushed, so that the next small write fits.
static inline void sw_bytes(streamwriter* w, const void* buf, size_t len) {
    const size_t room = SW_BUFFER_BYTES - w->buf_pos;
    if (len == 0)
        return;  // an empty block may be null
    // The second test is redundant; it silences a false overflow warning.
    if (len > room || len > SW_BUFFER_BYTES) {
        sw_bytes_unbuffered(w, buf, len);
        return;
    }
    memcpy(w->buffer + w->buf_pos, buf, len);
    w->buf_pos += len;
    if (len == room)
        sw_flush(w);
}

// Writes an integer of 1 byte.
static inline void sw_u1(streamwriter* w, uint8_t value) {
    sw_bytes(w, &value, sizeof value);
}

// Writes an integer of 2 bytes, the most significant byte first, as in Java's data files.
static inline void sw_u2(streamwriter* w, uint16_t value) {
    const uint16_t big_endian = __builtin_bswap16(value);
    sw_bytes(w, &big_endian, sizeof big_endian);
}

// Writes an integer of 4 bytes, the most significant byte first, as in Java's data files.
static inline void sw_u4(streamwriter* w, uint32_t value) {
    const uint32_t big_endian = __builtin_bswap32(value);
    sw_bytes(w, &big_endian, sizeof big_endian);
}

// Writes an integer of 8 bytes, the most significant byte first, as in Java's data files.
static inline void sw_u8(streamwriter* w, uint64_t value) {
    const uint64_t big_endian = __builtin_bswap64(value);
    sw_bytes(w, &big_endian, sizeof big_endian);
}

#ifdef __cplusplus
}
#endif

#endif
