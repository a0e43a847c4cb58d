// Classification of the text, 64 bytes at a time, for each width of vectors.

#include "util/c/shared/json/index.h"

#include <algorithm>

struct BlockMasks {
    u8 string_stops, word_stops, significant;
};

#define VECTOR_KERNEL "util/c/shared/json/index_vectors.inl"
#include "util/c/shared/vector/widths.h"

void build_index(Index* index, const char* p, const char* end) {
    const size_t left = static_cast<size_t>(end - p);
    index->begin = p;
    // Nothing is indexed past the stretch, so a scan may not start in its last block unless the
    // text ends there.
    index->bytes = left < INDEXED_BYTES ? left + 1 : INDEXED_BYTES - MASK_BYTES;
    if (vector_bytes >= 64)
        width_64::index_blocks(index, p, end);
    else if (vector_bytes >= 32)
        width_32::index_blocks(index, p, end);
    else
        width_16::index_blocks(index, p, end);
}
