// The index of a stretch of the text: the places where a scan may have to stop.
//
// Walking a text byte by byte, or block by block from the end of the last token, makes every step
// wait for the one before. So the text is classified ahead, in blocks that do not depend on one
// another, with one bit per byte and class. A scan takes the bits from its cursor on and counts the
// zeros.
#ifndef UTIL_C_SHARED_JSON_INDEX_H
#define UTIL_C_SHARED_JSON_INDEX_H

#include "sharedinc/inttype.h"

#include <stddef.h>
#include <string.h>
#include <bit>

constexpr unsigned char ENCODED_ZERO = 0xC0;  // first of U+0000's two bytes; starts nothing else

constexpr size_t INDEXED_BYTES = 4096;
constexpr size_t MASK_BYTES = 64;  // each has one bit in a word

// bits_at() gives the bits of at least this many bytes, from any place on.
constexpr int BITS_AT_ONCE = 57;

struct Index {
    // One word more than a stretch needs, because bits_at() loads eight bytes from any byte on.
    using Bits = u8[INDEXED_BYTES / MASK_BYTES + 1];

    const char* begin;  // of the stretch
    size_t bytes;       // of the stretch in which scans may start; 0 at first
    Bits string_stops;  // double quote, backslash, control characters, C0, the end
    Bits word_stops;    // blanks and control characters, delimiters, C0, the end
    Bits significant;   // all but blanks and control characters; the end
};

// Indexes the stretch that starts at p, before `end`.
void build_index(Index* index, const char* p, const char* end);

// The bits of the bytes from p on, the first byte's lowest: BITS_AT_ONCE or more, the rest 0.
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
