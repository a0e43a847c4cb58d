// Classification of the text, 64 bytes at a time: with the processor's wide instructions by two
// table look-ups for each byte, one per half of it, and without by plain comparisons.

#include "util/c/shared/json/index.h"

#include "util/c/shared/vector/choice.h"

#include <immintrin.h>
#include <algorithm>

constexpr size_t MASK_BYTES = 64;

struct BlockMasks {
    u8 string_stops, word_stops, significant;
};

static inline __m128i equal_to(__m128i bytes, unsigned char c) {
    return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(static_cast<char>(c)));
}

static inline __m128i at_most(__m128i bytes, char c) {
    return _mm_cmpeq_epi8(_mm_min_epu8(bytes, _mm_set1_epi8(c)), bytes);
}

static inline u8 mask_of(__m128i bytes) {
    return static_cast<u8>(_mm_movemask_epi8(bytes));
}

// The path for any processor of this kind. Clearing bit 0x20 unites "[]" with "{}", bit 0x01
// ":" with ";", and "\"" with "#".
static BlockMasks classify_narrow(const char* p) {
    BlockMasks block = {};
    for (int i = 0; i < 4; i++) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p) + i);
        const __m128i blanks = at_most(bytes, ' ');
        const __m128i zero = equal_to(bytes, ENCODED_ZERO);
        const __m128i backslash = equal_to(bytes, '\\');
        const __m128i string_stops = _mm_or_si128(_mm_or_si128(at_most(bytes, 0x1F), zero),
                                                  _mm_or_si128(equal_to(bytes, '"'), backslash));
        const __m128i no_20 = _mm_andnot_si128(_mm_set1_epi8(0x20), bytes);
        const __m128i no_01 = _mm_andnot_si128(_mm_set1_epi8(0x01), bytes);
        const __m128i brackets = _mm_or_si128(equal_to(no_20, '['), equal_to(no_20, ']'));
        const __m128i colons = _mm_or_si128(equal_to(no_01, ':'), equal_to(no_01, '"'));
        const __m128i others =
            _mm_or_si128(_mm_or_si128(equal_to(bytes, ','), equal_to(bytes, '=')),
                         _mm_or_si128(equal_to(bytes, '/'), backslash));
        const __m128i word_stops = _mm_or_si128(
            _mm_or_si128(blanks, zero), _mm_or_si128(_mm_or_si128(brackets, colons), others));
        block.string_stops |= mask_of(string_stops) << 16 * i;
        block.word_stops |= mask_of(word_stops) << 16 * i;
        block.significant |= (mask_of(blanks) ^ 0xFFFF) << 16 * i;
    }
    return block;
}

// Each byte's class is what its halves have in common.
constexpr char BLANK_OR_CONTROL = 32;
constexpr char QUOTE = 64;
constexpr char BACKSLASH = -128;
constexpr char ZERO = 16;
constexpr char IN_20 = 1, IN_30 = 2, IN_50 = 4, IN_70 = 8;  // delimiters by their upper half
constexpr char STOPS_STRING = BLANK_OR_CONTROL | QUOTE | BACKSLASH | ZERO;
constexpr char STOPS_WORD = BLANK_OR_CONTROL | ZERO | IN_20 | IN_30 | IN_50 | IN_70;

// Neither half of the space has the class of control characters, which would stop strings.
alignas(16) constexpr char BY_UPPER_HALF[16] = {BLANK_OR_CONTROL,
                                                BLANK_OR_CONTROL,
                                                IN_20 | QUOTE,
                                                IN_30,
                                                0,
                                                IN_50 | BACKSLASH,
                                                0,
                                                IN_70,
                                                0,
                                                0,
                                                0,
                                                0,
                                                ZERO};
constexpr char LOW = BLANK_OR_CONTROL;
alignas(16) constexpr char BY_LOWER_HALF[16] = {LOW | ZERO | IN_20,
                                                LOW,
                                                LOW | QUOTE | IN_20,
                                                LOW | IN_20,
                                                LOW,
                                                LOW,
                                                LOW,
                                                LOW,
                                                LOW,
                                                LOW,
                                                LOW | IN_30,
                                                LOW | IN_30 | IN_50 | IN_70,
                                                LOW | IN_20 | IN_50 | BACKSLASH,
                                                LOW | IN_30 | IN_50 | IN_70,
                                                LOW,
                                                LOW | IN_20};

WIDE static inline __m256i table(const char (&entries)[16]) {
    return _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(entries)));
}

// One bit for each byte that has none of the classes.
WIDE static inline unsigned without(__m256i classes, char wanted) {
    const __m256i found = _mm256_and_si256(classes, _mm256_set1_epi8(wanted));
    return static_cast<unsigned>(
        _mm256_movemask_epi8(_mm256_cmpeq_epi8(found, _mm256_setzero_si256())));
}

WIDE static inline BlockMasks classify_wide(const char* p) {
    const __m256i by_upper = table(BY_UPPER_HALF), by_lower = table(BY_LOWER_HALF);
    const __m256i half = _mm256_set1_epi8(0x0F);
    u8 plain[2], part_of_word[2], blank[2];
    for (int i = 0; i < 2; i++) {
        const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p) + i);
        const __m256i upper = _mm256_and_si256(_mm256_srli_epi16(bytes, 4), half);
        const __m256i lower = _mm256_and_si256(bytes, half);
        const __m256i classes = _mm256_and_si256(_mm256_shuffle_epi8(by_upper, upper),
                                                 _mm256_shuffle_epi8(by_lower, lower));
        plain[i] = without(classes, STOPS_STRING);
        part_of_word[i] = without(classes, STOPS_WORD);
        const __m256i least = _mm256_min_epu8(bytes, _mm256_set1_epi8(' '));
        blank[i] = static_cast<unsigned>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(least, bytes)));
    }
    return {~(plain[1] << 32 | plain[0]), ~(part_of_word[1] << 32 | part_of_word[0]),
            ~(blank[1] << 32 | blank[0])};
}

// Blocks at p, the last of which may lie in a copy that is filled up with what stops every scan.
template <BlockMasks (*classify)(const char*)>
[[gnu::always_inline]] static inline void index_blocks(Index* index, const char* p,
                                                       const char* end) {
    const size_t bytes = std::min(static_cast<size_t>(end - p), INDEXED_BYTES);
    size_t word = 0;
    const auto put = [&](const BlockMasks& block) {
        index->string_stops[word] = block.string_stops;
        index->word_stops[word] = block.word_stops;
        index->significant[word++] = block.significant;
    };
    for (; (word + 1) * MASK_BYTES <= bytes; p += MASK_BYTES)
        put(classify(p));
    if (bytes < INDEXED_BYTES) {
        char rest[MASK_BYTES];
        memset(rest, ENCODED_ZERO, sizeof rest);
        memcpy(rest, p, static_cast<size_t>(end - p));
        put(classify(rest));
    }
    constexpr u8 EVERYWHERE = ~static_cast<u8>(0);
    put({EVERYWHERE, EVERYWHERE, EVERYWHERE});
}

WIDE static void index_wide(Index* index, const char* p, const char* end) {
    index_blocks<classify_wide>(index, p, end);
}

void build_index(Index* index, const char* p, const char* end) {
    const size_t left = static_cast<size_t>(end - p);
    index->begin = p;
    // Bits beyond the stretch mean nothing, so scans start well before them, or before the end.
    index->bytes = left < INDEXED_BYTES ? left + 1 : INDEXED_BYTES - MASK_BYTES;
    if (vector_bytes >= 32)
        index_wide(index, p, end);
    else
        index_blocks<classify_narrow>(index, p, end);
}
