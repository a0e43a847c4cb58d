// Validation of the virtual machine's UTF-8.
//
// Whether a byte is valid depends on that byte and the two before it: continuation bytes come after
// a lead byte and nowhere else, and an overlong form shows in the lead byte and the next. So a
// vector of places is checked at a time, with the text loaded three times: from the place itself,
// from one byte before and from two. The result for one place does not depend on that for another,
// so no state is carried along, and the last vector may overlap the one before. The smallest and
// the largest byte of all show whether there are zeros or bytes from F0 on. A quick test finds the
// lead bytes that may begin an overlong form; the exact rule is applied only where it does.
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

// True when vectors can check a text. With one byte more than a vector, the last vector would not
// have two bytes before it.
static bool fits(size_t length, size_t vector) {
    return length >= vector && length != vector + 1;
}

bool utf8_validate(const char* buffer, size_t length, bool relax) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(buffer);
    if (vector_bytes >= 64 && fits(length, 64))
        return width_64::validate(p, length, relax);
    if (vector_bytes >= 32 && fits(length, 32))
        return width_32::validate(p, length, relax);
    if (length == 17 && p[0] - 1U < 0x7F) {  // an ASCII first byte is valid, and the other 16 fit
        p++;
        length--;
    }
    if (fits(length, 16))
        return width_16::validate(p, length, relax);
    return validate_by_character(p, p + length, relax);
}
