// Operations on up to 32 decimal digits. Included by kernels.

#if VECTOR_BYTES >= 32
using Digits [[gnu::vector_size(32)]] = unsigned char;  // bytes of 0 to 9, the highest digit first
#else
struct Digits {
    Block upper, lower;
};
#endif

// The 32 characters from p on as digits; others than digits become bytes above 9.
VECTOR_INLINE Digits digits_at(const char* p) {
#if VECTOR_BYTES >= 32
    Digits characters;
    memcpy(&characters, p, sizeof characters);
    return characters - '0';
#else
    return {load_block(p) - '0', load_block(p + BLOCK_BYTES) - '0'};
#endif
}

// One bit for each byte that is no digit; the first byte has the lowest.
VECTOR_INLINE unsigned not_digits(Digits digits) {
#if VECTOR_BYTES == 64
    return _mm256_cmpgt_epu8_mask(reinterpret_cast<__m256i>(digits), _mm256_set1_epi8(9));
#elif VECTOR_BYTES == 32
    const __m256i all = reinterpret_cast<__m256i>(digits);
    const __m256i at_least_10 = _mm256_max_epu8(all, _mm256_set1_epi8(10));
    return static_cast<unsigned>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(all, at_least_10)));
#else
    return ~(bits_of(at_most(digits.lower, 9)) << 16 | bits_of(at_most(digits.upper, 9)));
#endif
}

#if VECTOR_BYTES < 64
// The 32 bytes from LAST + n on are the mask of the last n of 32 bytes.
alignas(64) constexpr signed char LAST[64] = {
    0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,
    0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,
    -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1};
#endif

// The last n bytes (0 to 32) are those of `digits`, the others those of `before`.
VECTOR_INLINE Digits with_last(int n, Digits digits, Digits before) {
#if VECTOR_BYTES == 64
    const auto last = static_cast<unsigned>(0xFFFF'FFFF'0000'0000 >> n);
    return reinterpret_cast<Digits>(_mm256_mask_mov_epi8(reinterpret_cast<__m256i>(before), last,
                                                         reinterpret_cast<__m256i>(digits)));
#elif VECTOR_BYTES == 32
    Digits last;
    memcpy(&last, LAST + n, sizeof last);
    return (digits & last) | (before & ~last);
#else
    const Block upper = load_block(LAST + n), lower = load_block(LAST + n + BLOCK_BYTES);
    return {(digits.upper & upper) | (before.upper & ~upper),
            (digits.lower & lower) | (before.lower & ~lower)};
#endif
}

// The values of the upper and the lower sixteen digits.
struct Halves {
    u8 upper, lower;
};

// The values of the digits' halves; all digits before the last n are 0. Neighbours are combined:
// digits to pairs, pairs to fours, fours to eights, eights to halves.
#if VECTOR_BYTES >= 32

VECTOR_INLINE Halves halves_of(Digits digits, int) {
    const __m256i pairs =
        _mm256_maddubs_epi16(reinterpret_cast<__m256i>(digits), _mm256_set1_epi16(1 << 8 | 10));
    const __m256i fours = _mm256_madd_epi16(pairs, _mm256_set1_epi32(1 << 16 | 100));
    const __m128i packed =
        _mm_packs_epi32(_mm256_castsi256_si128(fours), _mm256_extracti128_si256(fours, 1));
    const __m128i eights = _mm_madd_epi16(packed, _mm_set1_epi32(1 << 16 | 10000));
    const __m128i halves = _mm_add_epi64(_mm_mul_epu32(eights, _mm_set1_epi64x(100'000'000)),
                                         _mm_srli_epi64(eights, 32));
    return {static_cast<u8>(_mm_cvtsi128_si64(halves)),
            static_cast<u8>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(halves, halves)))};
}

#else

static inline u8 half_of(Block digits) {
#if defined(__SSE2__)
    const __m128i all = reinterpret_cast<__m128i>(digits);
    const __m128i tens = _mm_and_si128(all, _mm_set1_epi16(0xFF));
    const __m128i pairs =
        _mm_add_epi16(_mm_mullo_epi16(tens, _mm_set1_epi16(10)), _mm_srli_epi16(all, 8));
    const __m128i fours = _mm_madd_epi16(pairs, _mm_set1_epi32(1 << 16 | 100));
    const __m128i packed = _mm_packs_epi32(fours, fours);
    const u8 eights =
        static_cast<u8>(_mm_cvtsi128_si64(_mm_madd_epi16(packed, _mm_set1_epi32(1 << 16 | 10000))));
    return (eights & 0xFFFF'FFFF) * 100'000'000 + (eights >> 32);
#else
    const uint8x16_t tens = {10, 1, 10, 1, 10, 1, 10, 1, 10, 1, 10, 1, 10, 1, 10, 1};
    const uint16x8_t hundreds = {100, 1, 100, 1, 100, 1, 100, 1};
    const uint32x4_t ten_thousands = {10000, 1, 10000, 1};
    const uint16x8_t pairs = vpaddlq_u8(vmulq_u8(digits, tens));
    const uint32x4_t fours = vpaddlq_u16(vmulq_u16(pairs, hundreds));
    const uint64x2_t eights = vpaddlq_u32(vmulq_u32(fours, ten_thousands));
    return eights[0] * 100'000'000 + eights[1];
#endif
}

VECTOR_INLINE Halves halves_of(const Digits& digits, int n) {
    return {n > BLOCK_BYTES ? half_of(digits.upper) : 0, half_of(digits.lower)};
}

#endif
