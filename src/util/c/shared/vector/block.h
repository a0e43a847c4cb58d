// A block of 16 bytes, which every processor can look at as a whole.
//
// The compiler's vector types have the operators of numbers, byte by byte; a comparison gives a
// Set, whose bytes are all ones where it holds. What a processor has an instruction of its own for
// is written out for each kind: the bits of a set, the number that digits spell.
#ifndef UTIL_C_SHARED_VECTOR_BLOCK_H
#define UTIL_C_SHARED_VECTOR_BLOCK_H

#include "sharedinc/inttype.h"

#include <stddef.h>
#include <string.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#elif defined(__aarch64__)
#include <arm_neon.h>
#else
#error "Processors without SSE2 or NEON need forms of their own."
#endif

constexpr ptrdiff_t BLOCK_BYTES = 16;

using Block [[gnu::vector_size(BLOCK_BYTES)]] = unsigned char;
using Set [[gnu::vector_size(BLOCK_BYTES)]] = signed char;

static inline Block load_block(const void* p) {
    Block block;
    memcpy(&block, p, sizeof block);
    return block;
}

static inline Set equal_to(Block block, char c) {
    return block == Block{} + static_cast<unsigned char>(c);
}

static inline Set at_most(Block block, unsigned char c) {
    return block <= Block{} + c;
}

#if !defined(__SSE2__)
inline constexpr Block BIT_WEIGHTS = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};
#endif

// One bit for each byte of the set, the first byte's lowest.
static inline unsigned bits_of(Set set) {
#if defined(__SSE2__)
    return static_cast<unsigned>(_mm_movemask_epi8(reinterpret_cast<__m128i>(set)));
#else
    const uint8x16_t bits = vandq_u8(vreinterpretq_u8_s8(set), BIT_WEIGHTS);
    return vaddv_u8(vget_low_u8(bits)) | unsigned{vaddv_u8(vget_high_u8(bits))} << 8;
#endif
}

// Sixteen digits, bytes of 0 to 9, as one number; the first is the highest. Neighbours are joined:
// digits to pairs, pairs to fours, fours to eights.
static inline u8 number_of(Block digits) {
    constexpr u8 EIGHT_DIGITS = 100'000'000;
#if defined(__SSE2__)
    const __m128i all = reinterpret_cast<__m128i>(digits), zero = _mm_setzero_si128();
    const __m128i tens = _mm_set1_epi32(1 << 16 | 10);
    const __m128i pairs = _mm_packs_epi32(_mm_madd_epi16(_mm_unpacklo_epi8(all, zero), tens),
                                          _mm_madd_epi16(_mm_unpackhi_epi8(all, zero), tens));
    const __m128i fours = _mm_madd_epi16(pairs, _mm_set1_epi32(1 << 16 | 100));
    const __m128i eights =
        _mm_madd_epi16(_mm_packs_epi32(fours, fours), _mm_set1_epi32(1 << 16 | 10000));
    const u8 halves = static_cast<u8>(_mm_cvtsi128_si64(eights));
    return (halves & 0xFFFFFFFF) * EIGHT_DIGITS + (halves >> 32);
#else
    const uint8x16_t tens = {10, 1, 10, 1, 10, 1, 10, 1, 10, 1, 10, 1, 10, 1, 10, 1};
    const uint16x8_t hundreds = {100, 1, 100, 1, 100, 1, 100, 1};
    const uint32x4_t ten_thousands = {10000, 1, 10000, 1};
    const uint16x8_t pairs = vpaddlq_u8(vmulq_u8(digits, tens));
    const uint32x4_t fours = vpaddlq_u16(vmulq_u16(pairs, hundreds));
    const uint64x2_t eights = vpaddlq_u32(vmulq_u32(fours, ten_thousands));
    return eights[0] * EIGHT_DIGITS + eights[1];
#endif
}

#endif
