// Classifies 64 bytes by vectors: by two table look-ups per byte, one per nibble, on processors
// that have them, otherwise by operations that give 0 for the bytes that matter, such as XOR with a
// character.

// Which bytes stop scans: those with a 0 here if ZERO_STOPS, the others if not.
struct Stops {
    Bytes of_string, of_word;
};

#if VECTOR_TABLES

// A byte's classes are the AND of the entries for its two nibbles.
constexpr unsigned char CONTROL = 32;
constexpr unsigned char QUOTE = 64;
constexpr unsigned char BACKSLASH = 128;
constexpr unsigned char ZERO = 16;
constexpr unsigned char IN_20 = 1, IN_30 = 2, IN_50 = 4, IN_70 = 8;  // delimiters by upper nibble
constexpr unsigned char STOPS_STRING = CONTROL | QUOTE | BACKSLASH | ZERO;
constexpr unsigned char STOPS_WORD = CONTROL | ZERO | IN_20 | IN_30 | IN_50 | IN_70;

// The space is not in the class of control characters, because that class stops strings.
alignas(16) constexpr unsigned char BY_UPPER_HALF[16] = {
    CONTROL, CONTROL, IN_20 | QUOTE, IN_30, 0, IN_50 | BACKSLASH, 0, IN_70, 0, 0, 0, 0, ZERO};
constexpr unsigned char LOW = CONTROL;
alignas(16) constexpr unsigned char BY_LOWER_HALF[16] = {LOW | ZERO | IN_20,
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

constexpr bool ZERO_STOPS = false;

VECTOR_INLINE Stops stops_of(Bytes bytes) {
    const Bytes classes = look_up(BY_UPPER_HALF, bytes >> 4) & look_up(BY_LOWER_HALF, bytes & 0x0F);
    return {classes & STOPS_STRING, classes & STOPS_WORD};
}

#else

constexpr bool ZERO_STOPS = true;

// Clearing bit 0x20 maps "{}" to "[]"; clearing bit 0x01 maps ";" to ":", and "#" to """.
VECTOR_INLINE Stops stops_of(Bytes bytes) {
    const Bytes no_20 = bytes & 0xDF, no_01 = bytes & 0xFE;
    const Bytes shared = smaller(bytes ^ ENCODED_ZERO, bytes ^ '\\');
    const Bytes brackets = smaller(no_20 ^ '[', no_20 ^ ']');
    const Bytes colons = smaller(no_01 ^ ':', no_01 ^ '"');
    const Bytes others = smaller(smaller(bytes ^ ',', bytes ^ '='), bytes ^ '/');
    return {
        smaller(smaller(shared, bytes ^ '"'), reduced(bytes, 0x1F)),
        smaller(smaller(smaller(shared, others), smaller(brackets, colons)), reduced(bytes, ' '))};
}

#endif

VECTOR_INLINE u8 stop_bits(const Bytes64& stops) {
    return ZERO_STOPS ? zeros(stops) : ~zeros(stops);
}

VECTOR_INLINE BlockMasks classify(const Bytes64& bytes) {
    Bytes64 string_stops, word_stops, above_blanks;
#pragma GCC unroll 4
    for (int i = 0; i < Bytes64::PARTS; i++) {
        const Stops stops = stops_of(bytes.part[i]);
        string_stops.part[i] = stops.of_string;
        word_stops.part[i] = stops.of_word;
        above_blanks.part[i] = reduced(bytes.part[i], ' ');
    }
    return {stop_bits(string_stops), stop_bits(word_stops), ~zeros(above_blanks)};
}

// The last block is padded with a byte that stops every scan.
VECTOR_CODE static void index_blocks(Index* index, const char* text, const char* end) {
    const auto* p = reinterpret_cast<const unsigned char*>(text);
    const size_t left = static_cast<size_t>(end - text);
    const size_t bytes = std::min(left, INDEXED_BYTES);
    size_t word = 0;
    const auto put = [&](const BlockMasks& block) {
        index->string_stops[word] = block.string_stops;
        index->word_stops[word] = block.word_stops;
        index->significant[word++] = block.significant;
    };
    for (; (word + 1) * MASK_BYTES <= bytes; p += MASK_BYTES)
        put(classify(load_64(p)));
    if (bytes < INDEXED_BYTES)
        put(classify(load_first(p, left % MASK_BYTES, ENCODED_ZERO)));
    constexpr u8 EVERYWHERE = ~static_cast<u8>(0);
    put({EVERYWHERE, EVERYWHERE, EVERYWHERE});
}
