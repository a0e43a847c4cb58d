// Memory: the process-wide heap and memory spaces.
//
// Every function may be called from any thread. When memory runs out the result is null; the
// process goes on.
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

// Allocates at least `size` bytes, aligned for any type, with unspecified contents; null when
// memory runs out. A size of 0 gives a block, too. The caller owns the block and frees it with
// gsFree().
void* gsMalloc(size_t size);

// Resizes a block of gsMalloc() or gsRealloc() and keeps its contents up to the smaller size. The
// block may move. With a null `ptr` it does what gsMalloc() does; with a size of 0 the result is a
// block without usable bytes. Returns null when memory runs out: the old block is then unchanged
// and still belongs to the caller.
void* gsRealloc(void* ptr, size_t size);

// Frees a block of gsMalloc() or gsRealloc(). Null is ignored.
void gsFree(void* ptr);

// The default memory space of the process; valid until the process ends.
mspace globalMSpace(void);

// Allocates or resizes a block in `space`, as gsRealloc() does. msFree() with the same space frees
// it.
void* msRealloc(mspace space, void* ptr, size_t size);

// Frees a block of msRealloc() in the same space. Null is ignored.
void msFree(mspace space, void* ptr);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
