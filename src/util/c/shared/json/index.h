// The index of a stretch of the text: where scans of it may have to stop.
//
// Walking a text byte by byte, or block by block from where the last token ended, makes every step
// wait for the one before. So the text is classified ahead in blocks that depend on nothing, one
// bit a byte and class; a scan then takes the bits from its cursor on and counts zeros.
#ifndef UTIL_C_SHARED_JSON_INDEX_H
#define UTIL_C_SHARED_JSON_INDEX_H

#include "sharedinc/inttype.h"

#include <stddef.h>
#include <string.h>
#include <bit>

constexpr unsigned char ENCODED_ZERO = 0xC0;  // first byte of U+0000's two; starts nothing else

constexpr size_t INDEXED_BYTES = 4096;
constexpr size_t MASK_BYTES = 64;  // one bit each in a word

// From any place, the bits of at least this many bytes can be taken at once.
constexpr int BITS_AT_ONCE = 57;

struct Index {
    // One word more than a stretch has, because bits are taken eight bytes at once from any byte
    // on.
    using Bits = u8[INDEXED_BYTES / MASK_BYTES + 1];

    const char* begin;  // of the stretch
    size_t bytes;       // of the stretch, as far as scans may start there; 0 at first
    Bits string_stops;  // double quote, backslash, control characters, C0, the end
    Bits word_stops;    // blanks and control characters, delimiters, C0, the end
    Bits significant;   // all but blanks and control characters; the end
};

// Indexes the stretch that starts at p, before `end`.
void build_index(Index* index, const char* p, const char* end);

// The bits of the bytes from p on, lowest first: 57 or more of them, the rest 0.
static inline u8 bits_at(Index* index, const Index::Bits& bits, const char* p, const char* end) {
    size_t offset = static_cast<size_t>(p - index->begin);
    if (offset >= index->bytes) [[unlikely]] {
        build_index(index, p, end);
        offset = 0;
    }
    u8 word;
    memcpy(&word, reinterpret_cast<const char*>(bits) + offset / 8, sizeof word);
    return word >> offset % 8;
}

#endif
