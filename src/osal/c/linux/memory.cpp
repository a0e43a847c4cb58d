// Memory spaces over the C library's allocator.
//
// There is one space, the process-wide heap; its handle is an address that is never dereferenced.
// Sizes of 0 are raised to 1: the C library's realloc(p, 0) frees the block and returns null, which
// a caller would take for a failure that kept the block.

#include "osal/export/osal_msmalloc.h"

#include <stdlib.h>

static char global_space;  // only its address matters

void* gsMalloc(size_t size) {
    return malloc(size != 0 ? size : 1);
}

void* gsRealloc(void* ptr, size_t size) {
    return realloc(ptr, size != 0 ? size : 1);
}

void gsFree(void* ptr) {
    free(ptr);
}

mspace globalMSpace(void) {
    return reinterpret_cast<mspace>(&global_space);
}

void* msRealloc(mspace, void* ptr, size_t size) {
    return gsRealloc(ptr, size);
}

void msFree(mspace, void* ptr) {
    gsFree(ptr);
}
