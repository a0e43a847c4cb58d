// The part of the stream writer that writes to the file. What only fills the buffer is inline in
// the header.

#include "util/export/streamwriter.h"

#include <limits.h>

static_assert(sizeof(streamwriter) == 1048 && offsetof(streamwriter, buf_pos) == 1024 &&
              offsetof(streamwriter, stream_pos) == 1032 && offsetof(streamwriter, out) == 1040);

// stream_pos counts a failed write as if it had succeeded, so that the positions of later writes do
// not depend on a failure that is not reported.
static void write_out(streamwriter* w, const void* bytes, size_t len) {
    fio_write_fully(w->out, bytes, static_cast<int>(len));
    w->stream_pos += static_cast<filesize>(len);
}

void sw_bytes_unbuffered(streamwriter* w, const void* buf, size_t len) {
    if (w->buf_pos != 0) {
        write_out(w, w->buffer, w->buf_pos);
        w->buf_pos = 0;
    }
    for (const char* rest = static_cast<const char*>(buf); len > 0;) {
        const size_t chunk = len < INT_MAX ? len : INT_MAX;  // the platform takes lengths as int
        write_out(w, rest, chunk);
        rest += chunk;
        len -= chunk;
    }
}

void sw_seek(streamwriter* w, filesize pos) {
    sw_flush(w);
    fio_seek(w->out, pos, 0);
    w->stream_pos = pos;
}
