// Operations on vectors of VECTOR_BYTES bytes. Included by widths.h, once for each width.
//
// The compiler's vector types have the operators of numbers, applied to each byte. Comparisons are
// avoided where a bit of the byte tells the same, because AVX-512 gives their results as masks, not
// as vectors.

constexpr ptrdiff_t WIDTH = VECTOR_BYTES;

using Bytes [[gnu::vector_size(VECTOR_BYTES)]] = unsigned char;

VECTOR_INLINE Bytes load(const unsigned char* p) {
    Bytes bytes;
    memcpy(&bytes, p, sizeof bytes);
    return bytes;
}

VECTOR_INLINE Bytes smaller(Bytes a, Bytes b) {
    return a < b ? a : b;
}

VECTOR_INLINE Bytes larger(Bytes a, Bytes b) {
    return a > b ? a : b;
}

// Each byte minus c, or 0 when the byte is smaller than c.
VECTOR_INLINE Bytes reduced(Bytes bytes, unsigned char c) {
    const Bytes all = Bytes{} + c;
#if VECTOR_BYTES == 64
    return reinterpret_cast<Bytes>(
        _mm512_subs_epu8(reinterpret_cast<__m512i>(bytes), reinterpret_cast<__m512i>(all)));
#elif VECTOR_BYTES == 32
    return reinterpret_cast<Bytes>(
        _mm256_subs_epu8(reinterpret_cast<__m256i>(bytes), reinterpret_cast<__m256i>(all)));
#elif defined(__SSE2__)
    return reinterpret_cast<Bytes>(
        _mm_subs_epu8(reinterpret_cast<__m128i>(bytes), reinterpret_cast<__m128i>(all)));
#else
    return vqsubq_u8(bytes, all);
#endif
}

// Each byte moved up by `count` places, with zeros before the first.
template <int count>
VECTOR_INLINE Bytes moved_up(Bytes bytes) {
#if VECTOR_BYTES == 64
    const __m512i all = reinterpret_cast<__m512i>(bytes);
    const __m512i lanes = _mm512_maskz_alignr_epi64(0xFC, all, all, 6);
    return reinterpret_cast<Bytes>(_mm512_alignr_epi8(all, lanes, 16 - count));
#elif VECTOR_BYTES == 32
    const __m256i all = reinterpret_cast<__m256i>(bytes);
    const __m256i lanes = _mm256_permute2x128_si256(all, all, 0x08);
    return reinterpret_cast<Bytes>(_mm256_alignr_epi8(all, lanes, 16 - count));
#elif defined(__SSE2__)
    return reinterpret_cast<Bytes>(_mm_slli_si128(reinterpret_cast<__m128i>(bytes), count));
#else
    return vextq_u8(Bytes{}, bytes, 16 - count);
#endif
}

#if VECTOR_TABLES
// The table's entry for each of the indexes, which must be below 16.
VECTOR_INLINE Bytes look_up(const unsigned char (&table)[16], Bytes indexes) {
#if VECTOR_BYTES == 64
    constexpr __mmask16 ALL = 0xFFFF;  // the unmasked form makes compilers warn
    const __m128i block = reinterpret_cast<__m128i>(load_block(table));
    const __m512i entries = _mm512_maskz_broadcast_i32x4(ALL, block);
    return reinterpret_cast<Bytes>(
        _mm512_shuffle_epi8(entries, reinterpret_cast<__m512i>(indexes)));
#elif VECTOR_BYTES == 32
    const __m256i entries =
        _mm256_broadcastsi128_si256(reinterpret_cast<__m128i>(load_block(table)));
    return reinterpret_cast<Bytes>(
        _mm256_shuffle_epi8(entries, reinterpret_cast<__m256i>(indexes)));
#else
    return vqtbl1q_u8(load_block(table), indexes);
#endif
}
#endif

// True when any byte is 0x80 or above.
VECTOR_INLINE bool any_high(Bytes bytes) {
#if VECTOR_BYTES == 64
    return _mm512_movepi8_mask(reinterpret_cast<__m512i>(bytes)) != 0;
#elif VECTOR_BYTES == 32
    return _mm256_movemask_epi8(reinterpret_cast<__m256i>(bytes)) != 0;
#elif defined(__SSE2__)
    return _mm_movemask_epi8(reinterpret_cast<__m128i>(bytes)) != 0;
#else
    return vmaxvq_u8(bytes) >= 0x80;
#endif
}

VECTOR_INLINE bool any_zero(Bytes bytes) {
#if VECTOR_BYTES == 64
    return _mm512_testn_epi8_mask(reinterpret_cast<__m512i>(bytes),
                                  reinterpret_cast<__m512i>(bytes)) != 0;
#else
    return any_high(reinterpret_cast<Bytes>(bytes == Bytes{}));
#endif
}

// 64 bytes, as many as a word has bits.
struct Bytes64 {
    static constexpr int PARTS = 64 / VECTOR_BYTES;
    Bytes part[PARTS];
};

VECTOR_INLINE Bytes64 load_64(const unsigned char* p) {
    Bytes64 bytes;
#pragma GCC unroll 4
    for (int i = 0; i < Bytes64::PARTS; i++)
        bytes.part[i] = load(p + i * WIDTH);
    return bytes;
}

// The first `count` bytes at p (fewer than 64), and `fill` in place of the others.
VECTOR_INLINE Bytes64 load_first(const unsigned char* p, size_t count, unsigned char fill) {
#if VECTOR_BYTES == 64
    const __m512i others = _mm512_set1_epi8(static_cast<char>(fill));
    return {{reinterpret_cast<Bytes>(_mm512_mask_loadu_epi8(others, (u8{1} << count) - 1, p))}};
#else
    unsigned char bytes[64];
    memset(bytes, fill, sizeof bytes);
    memcpy(bytes, p, count);
    return load_64(bytes);
#endif
}

// One bit for each byte that is zero; the first byte has the lowest.
VECTOR_INLINE u8 zeros(const Bytes64& bytes) {
#if VECTOR_BYTES == 64
    const __m512i all = reinterpret_cast<__m512i>(bytes.part[0]);
    return _mm512_testn_epi8_mask(all, all);
#elif VECTOR_BYTES == 32
    const auto low = reinterpret_cast<__m256i>(bytes.part[0] == Bytes{});
    const auto high = reinterpret_cast<__m256i>(bytes.part[1] == Bytes{});
    return u8{static_cast<unsigned>(_mm256_movemask_epi8(high))} << 32 |
           static_cast<unsigned>(_mm256_movemask_epi8(low));
#elif defined(__SSE2__)
    const auto bits = [&](int i) { return u8{bits_of(bytes.part[i] == Bytes{})} << 16 * i; };
    return bits(3) | bits(2) | bits(1) | bits(0);
#else
    const auto bits = [&](int i) { return vandq_u8(vceqzq_u8(bytes.part[i]), BIT_WEIGHTS); };
    const uint8x16_t lower = vpaddq_u8(bits(0), bits(1)), upper = vpaddq_u8(bits(2), bits(3));
    const uint8x16_t sums = vpaddq_u8(lower, upper);
    return vgetq_lane_u64(vreinterpretq_u64_u8(vpaddq_u8(sums, sums)), 0);
#endif
}
