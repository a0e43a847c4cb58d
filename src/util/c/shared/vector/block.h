// A block of 16 bytes, which SSE2 and NEON handle as one vector.
//
// The compiler's vector types have the operators of numbers, applied to each byte. A comparison
// gives a Set, whose bytes are 0xFF where it holds and 0 elsewhere. Only bits_of() needs different
// instructions for each kind of processor.
#ifndef UTIL_C_SHARED_VECTOR_BLOCK_H
#define UTIL_C_SHARED_VECTOR_BLOCK_H

#include <stddef.h>
#include <string.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#elif defined(__aarch64__)
#include <arm_neon.h>
#else
#error "Processors without SSE2 or NEON need their own bits_of()."
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

// One bit for each byte of the set; the first byte has the lowest.
static inline unsigned bits_of(Set set) {
#if defined(__SSE2__)
    return static_cast<unsigned>(_mm_movemask_epi8(reinterpret_cast<__m128i>(set)));
#else
    const uint8x16_t bits = vandq_u8(vreinterpretq_u8_s8(set), BIT_WEIGHTS);
    return vaddv_u8(vget_low_u8(bits)) | unsigned{vaddv_u8(vget_high_u8(bits))} << 8;
#endif
}

#endif
