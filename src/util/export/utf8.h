// The virtual machine's UTF-8: characters up to U+FFFF take one, two or three bytes, a character
// above takes the six bytes of its surrogate pair, and U+0000 is C0 80. There are no four-byte
// sequences, and encoded text never holds a zero byte.
//
// A character is a UTF-16 code unit, 0 to 0xFFFF, in a wchar_t. All functions may be called from
// any thread.
#ifndef UTIL_EXPORT_UTF8_H
#define UTIL_EXPORT_UTF8_H

#include "sharedinc/compiler.h"

#include <stdbool.h>
#include <stddef.h>
#include <wchar.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

// True when the `length` bytes at `buffer` are valid text in this encoding.
//
//   buffer  needs no terminator; a zero byte within `length` makes it invalid
//   relax   admits overlong encodings; C0 80 is valid with and without it
//
// A lone surrogate is valid, and so are U+FFFE and U+FFFF. The empty buffer is valid.
bool utf8_validate(const char* buffer, size_t length, bool relax);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

// Decodes the character at `*utfstring_ptr` and advances the pointer past it.
//
// The text ends with a zero byte, which decodes as 0 and counts as one byte. A byte that starts no
// sequence decodes as its own value (0x80 to 0xFF), and so does the first byte of an incomplete
// sequence; when two bytes of a three-byte sequence are there, both are skipped. Nothing is read
// past the zero byte. C0 80 decodes as 0, too, and counts as two bytes.
static inline wchar_t next_utf2wchar(const char** utfstring_ptr) {
    const char* p = *utfstring_ptr;
    wchar_t c = p[0] & 0xFF;
    int bytes = 1;
    if (c >= 0xC0 && c <= 0xEF && (p[1] & 0xC0) == 0x80) {
        if (c < 0xE0) {
            c = (c & 0x1F) << 6 | (p[1] & 0x3F);
            bytes = 2;
        } else if ((p[2] & 0xC0) == 0x80) {
            c = (c & 0x0F) << 12 | (p[1] & 0x3F) << 6 | (p[2] & 0x3F);
            bytes = 3;
        } else {
            bytes = 2;
        }
    }
    *utfstring_ptr += bytes;
    return c;
}

// Encodes a character into `utfbuf`, which has room for three bytes; no terminator is written.
// Zero becomes C0 80. Of a negative value or one above 0xFFFF the low 16 bits are encoded.
//
// Returns the number of bytes written, 1 to 3.
static inline unsigned int wchar2utf8(char* utfbuf, wchar_t c) {
    const unsigned int u = KX_CAST(unsigned int, c) & 0xFFFF;
    if (u != 0 && u < 0x80) {
        utfbuf[0] = KX_CAST(char, u);
        return 1;
    }
    if (u < 0x800) {
        utfbuf[0] = KX_CAST(char, 0xC0 | u >> 6);
        utfbuf[1] = KX_CAST(char, 0x80 | (u & 0x3F));
        return 2;
    }
    utfbuf[0] = KX_CAST(char, 0xE0 | u >> 12);
    utfbuf[1] = KX_CAST(char, 0x80 | (u >> 6 & 0x3F));
    utfbuf[2] = KX_CAST(char, 0x80 | (u & 0x3F));
    return 3;
}

#endif
