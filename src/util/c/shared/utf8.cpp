// Validation of the virtual machine's UTF-8.
//
// What may follow a byte depends on little: continuation bytes come after a lead byte and nowhere
// else, and the overlong forms show in the lead byte and the next. So every place of the text is
// judged by its byte and the two before it, a vector of them at once: the text is loaded three
// times, at a place and one and two before. No place depends on what another was found to be, so
// nothing is carried along, and the end is a vector that overlaps the one before. Zeros and bytes
// from F0 on need no look at all places, only at the smallest and the largest byte. Four lead bytes
// may begin an overlong form; only where one of them stands the exact rule is asked.
//
// A surrogate pair needs no rule of its own, because lone surrogates are valid as well.

#include "util/export/utf8.h"

static bool is_continuation(unsigned char c) {
    return (c & 0xC0) == 0x80;
}

#define VECTOR_KERNEL "util/c/shared/utf8_vectors.inl"
#include "util/c/shared/vector/widths.h"

// The length of the character at p, or 0 when it is invalid.
static size_t character_length(const unsigned char* p, const unsigned char* end, bool relax) {
    const unsigned char lead = p[0];
    if (lead < 0x80)
        return lead != 0 ? 1 : 0;
    if (lead < 0xC0 || lead > 0xEF || end - p < 2 || !is_continuation(p[1]))
        return 0;
    if (lead < 0xE0)
        return lead >= 0xC2 || relax || (lead == 0xC0 && p[1] == 0x80) ? 2 : 0;
    if (end - p < 3 || !is_continuation(p[2]))
        return 0;
    return lead > 0xE0 || p[1] >= 0xA0 || relax ? 3 : 0;
}

// For texts that are shorter than a vector.
static bool validate_by_character(const unsigned char* p, const unsigned char* end, bool relax) {
    while (p < end) {
        const size_t length = character_length(p, end, relax);
        if (length == 0)
            return false;
        p += length;
    }
    return true;
}

// Whether vectors can check a text: the last of several needs two bytes before it.
static bool fits(size_t length, size_t vector) {
    return length >= vector && length != vector + 1;
}

bool utf8_validate(const char* buffer, size_t length, bool relax) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(buffer);
    if (vector_bytes >= 64 && fits(length, 64))
        return width_64::validate(p, length, relax);
    if (vector_bytes >= 32 && fits(length, 32))
        return width_32::validate(p, length, relax);
    if (length == 17 && p[0] - 1U < 0x7F) {  // without an ASCII character at its start it fits
        p++;
        length--;
    }
    if (fits(length, 16))
        return width_16::validate(p, length, relax);
    return validate_by_character(p, p + length, relax);
}
