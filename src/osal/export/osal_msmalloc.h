// Memory: the process-wide heap and memory spaces.
//
// Every function may be called from any thread. Exhausted memory is reported by a null result,
// never by ending the process.
#ifndef OSAL_EXPORT_OSAL_MSMALLOC_H
#define OSAL_EXPORT_OSAL_MSMALLOC_H

#include "osal/export/osal_types.h"

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

// Handle of a memory space. The record behind it belongs to the platform.
typedef struct malloc_state* mspace;

// A block of at least `size` bytes, aligned for any type, contents unspecified; null when memory
// is exhausted. A size of 0 gives a block as well. The caller owns the block and returns it with
// gsFree().
void* gsMalloc(size_t size);

// Resizes a block of gsMalloc() or gsRealloc(), keeping its contents up to the smaller size; it
// may move. A null `ptr` makes it gsMalloc(size); a size of 0 leaves a block of no usable bytes.
// Returns null when memory is exhausted: the old block is then unchanged and still the caller's.
void* gsRealloc(void* ptr, size_t size);

// Returns a block of gsMalloc() or gsRealloc(). Null is ignored.
void gsFree(void* ptr);

// The process-wide default memory space; valid for the life of the process.
mspace globalMSpace(void);

// Allocates, grows and shrinks within `space`: as gsRealloc(), for blocks of that space, which
// go back with msFree() on the same space.
void* msRealloc(mspace space, void* ptr, size_t size);

// Returns a block of msRealloc() on the same space. Null is ignored.
void msFree(mspace space, void* ptr);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
