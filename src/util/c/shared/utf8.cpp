// Validation of the virtual machine's UTF-8.
//
// What may follow a byte depends on little: continuation bytes come after a lead byte and nowhere
// else, and the overlong forms show in the lead byte and the upper half of the next. So the wide
// path classifies every pair of adjacent bytes at once, 32 of them: three tables of 16 entries,
// looked up by the halves of the first byte and the upper half of the second, are ANDed; what
// remains are errors. Two things do not fit the tables: the third byte of a sequence is compared
// with the first by position, and C0 80, the one overlong form that is valid, is excused.
//
// A surrogate pair needs no rule of its own, because lone surrogates are valid as well.

#include "util/export/utf8.h"

#include "util/c/shared/wide.h"

#include <immintrin.h>
#include <string.h>

static bool is_continuation(unsigned char c) {
    return (c & 0xC0) == 0x80;
}

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

constexpr ptrdiff_t NARROW_BYTES = 16;

// True when all bytes of the block at p are in 01-7F.
static bool is_ascii_block(const unsigned char* p) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i zeros = _mm_cmpeq_epi8(block, _mm_setzero_si128());
    return _mm_movemask_epi8(_mm_or_si128(block, zeros)) == 0;
}

// The path for any processor of this kind, and for short texts.
static bool validate_narrow(const unsigned char* p, const unsigned char* end, bool relax) {
    while (p < end) {
        if (end - p >= NARROW_BYTES && is_ascii_block(p)) {
            p += NARROW_BYTES;
            continue;
        }
        const size_t length = character_length(p, end, relax);
        if (length == 0)
            return false;
        p += length;
    }
    return true;
}

#define WIDE_INLINE [[gnu::target("avx2"), gnu::always_inline]] static inline

constexpr ptrdiff_t WIDE_BYTES = 32;

// What can be wrong with a pair of bytes. Each table says what remains possible.
constexpr char TOO_SHORT = 1;     // a lead byte, but no continuation after it
constexpr char TOO_LONG = 2;      // a continuation after ASCII
constexpr char OVERLONG_2 = 4;    // C0 or C1
constexpr char OVERLONG_3 = 8;    // E0 before 80-9F
constexpr char FORBIDDEN = 16;    // F0 and above, whatever follows
constexpr char TWO_CONTS = -128;  // right as the end of three bytes, and only there
constexpr char WHATEVER_IS_BELOW = TOO_SHORT | TOO_LONG | FORBIDDEN | TWO_CONTS;

WIDE_INLINE __m256i table(char a, char b, char c, char d, char e, char f, char g, char h, char i,
                          char j, char k, char l, char m, char n, char o, char p) {
    return _mm256_setr_epi8(a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, a, b, c, d, e, f, g, h,
                            i, j, k, l, m, n, o, p);
}

WIDE_INLINE __m256i upper_halves(__m256i bytes) {
    return _mm256_and_si256(_mm256_srli_epi16(bytes, 4), _mm256_set1_epi8(0x0F));
}

// The block shifted up by `count` bytes, filled from the end of the block before it.
template <int count>
WIDE_INLINE __m256i shifted(__m256i block, __m256i before) {
    return _mm256_alignr_epi8(block, _mm256_permute2x128_si256(before, block, 0x21), 16 - count);
}

struct WideCheck {
    __m256i before;      // the block before the next one
    __m256i unfinished;  // not zero when it ended within a character
    __m256i errors;      // not zero once anything was wrong
};

WIDE_INLINE void check_zeros(WideCheck* check, __m256i block) {
    const __m256i zeros = _mm256_cmpeq_epi8(block, _mm256_setzero_si256());
    check->errors = _mm256_or_si256(check->errors, zeros);
}

template <bool relax>
WIDE_INLINE void check_block(WideCheck* check, __m256i block) {
    constexpr char SHORT = TOO_SHORT, LONG = TOO_LONG, CONTS = TWO_CONTS, BELOW = WHATEVER_IS_BELOW;
    constexpr char OVER_2 = relax ? 0 : OVERLONG_2, OVER_3 = relax ? 0 : OVERLONG_3;
    constexpr char CONT_AB = TOO_LONG | TWO_CONTS | FORBIDDEN | OVERLONG_2;
    constexpr char CONT_89 = CONT_AB | OVERLONG_3;
    constexpr char NO_CONT = TOO_SHORT | FORBIDDEN;
    const __m256i by_first_upper =
        table(LONG, LONG, LONG, LONG, LONG, LONG, LONG, LONG, CONTS, CONTS, CONTS, CONTS,
              SHORT | OVER_2, SHORT, SHORT | OVER_3, FORBIDDEN);
    const __m256i by_first_lower =
        table(BELOW | OVERLONG_2 | OVERLONG_3, BELOW | OVERLONG_2, BELOW, BELOW, BELOW, BELOW,
              BELOW, BELOW, BELOW, BELOW, BELOW, BELOW, BELOW, BELOW, BELOW, BELOW);
    const __m256i by_second_upper =
        table(NO_CONT, NO_CONT, NO_CONT, NO_CONT, NO_CONT, NO_CONT, NO_CONT, NO_CONT, CONT_89,
              CONT_89, CONT_AB, CONT_AB, NO_CONT, NO_CONT, NO_CONT, NO_CONT);

    const __m256i first = shifted<1>(block, check->before);
    const __m256i first_lower = _mm256_and_si256(first, _mm256_set1_epi8(0x0F));
    __m256i wrong =
        _mm256_and_si256(_mm256_and_si256(_mm256_shuffle_epi8(by_first_upper, upper_halves(first)),
                                          _mm256_shuffle_epi8(by_first_lower, first_lower)),
                         _mm256_shuffle_epi8(by_second_upper, upper_halves(block)));
    if (!relax) {
        const __m256i encoded_zero =
            _mm256_and_si256(_mm256_cmpeq_epi8(first, _mm256_set1_epi8(static_cast<char>(0xC0))),
                             _mm256_cmpeq_epi8(block, _mm256_set1_epi8(static_cast<char>(0x80))));
        wrong = _mm256_andnot_si256(encoded_zero, wrong);
    }
    // Two bytes after E0 and above, and only there, a second continuation has to stand.
    const __m256i third = _mm256_and_si256(
        _mm256_subs_epu8(shifted<2>(block, check->before), _mm256_set1_epi8(0xE0 - 0x80)),
        _mm256_set1_epi8(TWO_CONTS));
    check->errors = _mm256_or_si256(check->errors, _mm256_xor_si256(third, wrong));
    check_zeros(check, block);

    const __m256i largest_ends = _mm256_setr_epi8(
        -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,
        -1, -1, -1, -1, -1, -1, -1, static_cast<char>(0xDF), static_cast<char>(0xBF));
    check->unfinished = _mm256_subs_epu8(block, largest_ends);
    check->before = block;
}

WIDE_INLINE __m256i load(const unsigned char* p) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

WIDE_INLINE bool is_ascii(__m256i blocks) {
    return _mm256_movemask_epi8(blocks) == 0;
}

// What a run of ASCII blocks leaves to check: given the smallest bytes of all and the last block.
WIDE_INLINE void check_ascii(WideCheck* check, __m256i smallest, __m256i last) {
    check_zeros(check, smallest);
    check->errors = _mm256_or_si256(check->errors, check->unfinished);
    check->unfinished = _mm256_setzero_si256();
    check->before = last;
}

template <bool relax>
WIDE_INLINE void check_two_blocks(WideCheck* check, __m256i a, __m256i b) {
    if (is_ascii(_mm256_or_si256(a, b))) {
        check_ascii(check, _mm256_min_epu8(a, b), b);
    } else {
        check_block<relax>(check, a);
        check_block<relax>(check, b);
    }
}

template <bool relax>
WIDE_INLINE void check_four_blocks(WideCheck* check, const unsigned char* p) {
    const __m256i a = load(p), b = load(p + WIDE_BYTES);
    const __m256i c = load(p + 2 * WIDE_BYTES), d = load(p + 3 * WIDE_BYTES);
    if (is_ascii(_mm256_or_si256(_mm256_or_si256(a, b), _mm256_or_si256(c, d)))) {
        check_ascii(check, _mm256_min_epu8(_mm256_min_epu8(a, b), _mm256_min_epu8(c, d)), d);
    } else {
        check_two_blocks<relax>(check, a, b);
        check_two_blocks<relax>(check, c, d);
    }
}

template <bool relax>
WIDE static bool validate_wide(const unsigned char* p, const unsigned char* end) {
    WideCheck check = {_mm256_setzero_si256(), _mm256_setzero_si256(), _mm256_setzero_si256()};
    for (; end - p >= 4 * WIDE_BYTES; p += 4 * WIDE_BYTES)
        check_four_blocks<relax>(&check, p);
    if (end - p >= 2 * WIDE_BYTES) {
        check_two_blocks<relax>(&check, load(p), load(p + WIDE_BYTES));
        p += 2 * WIDE_BYTES;
    }
    // The rest, filled up with spaces, which also end a character that is cut off.
    unsigned char rest[2 * WIDE_BYTES];
    memset(rest, ' ', sizeof rest);
    memcpy(rest, p, static_cast<size_t>(end - p));
    check_two_blocks<relax>(&check, load(rest), load(rest + WIDE_BYTES));
    return _mm256_testz_si256(check.errors, check.errors) != 0;
}

bool utf8_validate(const char* buffer, size_t length, bool relax) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(buffer);
    if (length < WIDE_BYTES || !processor_is_wide)
        return validate_narrow(p, p + length, relax);
    return relax ? validate_wide<true>(p, p + length) : validate_wide<false>(p, p + length);
}
