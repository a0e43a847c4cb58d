// VECTOR_BYTES bytes at once. Included by widths.h, once for each width.
//
// The compiler's vector types have the operators of numbers, byte by byte. Compares are avoided
// where a bit of the byte can tell as well: with AVX-512 their results are no vectors.

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

// Each byte less c, or 0 when it is smaller than c.
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

// True when a byte is 80 or above.
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
