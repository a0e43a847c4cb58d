// A growable array of elements of one size, in one contiguous block.
//
// Elements are copied in byte for byte and never looked into. The block moves when it grows or
// shrinks: pointers into it are good until the next call that may do so, and an element to be
// stored must not lie in the array itself. The block grows by doubling, so n appends cost n copies
// and a handful of reallocations.
//
// Unless said otherwise `da` is not null, and functions return 0, or -1 when memory could not be
// obtained or when a size in bytes would not fit a size_t: the array is then exactly as before.
// No function takes a lock; an array belongs to one thread at a time.
//
// The functions are in the library. A source that includes dynarray.inl instead of this header
// lets its compiler put their bodies in place of the calls.
#ifndef UTIL_EXPORT_DYNARRAY_H
#define UTIL_EXPORT_DYNARRAY_H

#include "util/export/dynarray_types.h"

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

// Makes an empty array in the process-wide memory space.
//
//   initCap   elements to make room for; 0 obtains no block before the first element arrives
//   elemSize  bytes of one element
//
// Returns null when memory could not be obtained. The array ends with dynArrayFree() or
// dynArrayCommit().
DynArrayP dynArrayNew(size_t initCap, size_t elemSize);

// The same in the space `ms`, which must outlive the array.
DynArrayP dynArrayNewMSpace(size_t initCap, size_t elemSize, mspace ms);

// Makes room for at least `nElems` elements, and no more than that; never makes the array smaller.
int dynArrayResize(DynArrayP da, size_t nElems);

// Cuts the block down to `nElems` elements; those behind it are dropped, and a size that is not
// above `nElems` stays. Does nothing when the capacity is not above `nElems`. 0 gives the block
// back.
int dynArrayShrink(DynArrayP da, size_t nElems);

// Appends a copy of the element at `elemPtr`. A full array doubles its capacity, or gets room for
// 5 elements when it had none.
int dynArrayAddLast(DynArrayP da, void* elemPtr);

// Copies the element at `elemPtr` to position `index`. Beyond the size the array is extended; the
// elements between have no defined contents. Beyond the capacity it is doubled if that is enough,
// and otherwise grows to capacity + index + 5.
int dynArraySet(DynArrayP da, size_t index, void* elemPtr);

// Inserts a copy of the element at `elemPtr` before position `index`, moving the later ones up by
// one. At or beyond the size it does what dynArraySet() does.
int dynArrayInsert(DynArrayP da, size_t index, void* elemPtr);

// Appends `n` elements of zero bytes and returns a pointer to the first of them, or null when
// memory could not be obtained. With n = 0 nothing happens and the result points behind the last
// element (null while there is no block).
void* dynArrayAddEmptyElementsLast(DynArrayP da, size_t n);

// Sorts the elements in place by `compare`, with the C library's qsort().
void dynArraySort(DynArrayP da, int (*compare)(const void*, const void*));

// Ends the array. Null is ignored.
void dynArrayFree(DynArrayP da);

// Hands the elements over as a plain vector and ends the array.
//
//   da     may be null, which counts as empty; invalid after the call
//   datap  receives the block, or null when there are no elements. The caller owns it and
//          returns it with msFree() in the space that the array was made in.
//
// Returns the number of elements, not bytes. Never fails: a block that cannot be trimmed is
// handed over untrimmed.
size_t dynArrayCommit(DynArrayP da, void** datap);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
