// A growable array: elements of one size, in one contiguous block.
//
// Elements are copied byte for byte. The block moves when it grows or shrinks, so a pointer into it
// is valid until the next call that may do that, and an element to be stored must not lie in the
// array itself. The block doubles when it is full, so n appends cost n copies and few
// reallocations.
//
// Unless said otherwise `da` is not null, and functions return 0 on success. They return -1 when
// memory runs out, or when a size in bytes does not fit a size_t; the array is then as before.
// No function takes a lock: an array belongs to one thread at a time.
//
// A source that includes dynarray.inl instead of this header lets the compiler inline the
// functions.
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
//   initCap   elements to make room for; with 0 the first element allocates the block
//   elemSize  bytes of one element
//
// Returns null when memory runs out. Release the array with dynArrayFree() or dynArrayCommit().
DynArrayP dynArrayNew(size_t initCap, size_t elemSize);

// Makes an empty array, as dynArrayNew() does, in the space `ms`, which must outlive the array.
DynArrayP dynArrayNewMSpace(size_t initCap, size_t elemSize, mspace ms);

// Makes the capacity `nElems` elements when it is smaller; otherwise does nothing.
int dynArrayResize(DynArrayP da, size_t nElems);

// Reduces the capacity to `nElems` elements. The array keeps its first min(size, nElems) elements.
// Does nothing when the capacity is `nElems` or less. 0 frees the block.
int dynArrayShrink(DynArrayP da, size_t nElems);

// Appends a copy of the element at `elemPtr`. A full array doubles its capacity, or gets room for
// 5 elements when it had none.
int dynArrayAddLast(DynArrayP da, void* elemPtr);

// Copies the element at `elemPtr` to position `index`. An index at or beyond the size extends the
// array; the elements between have unspecified contents. An index at or beyond the capacity doubles
// the capacity when that is enough; otherwise the capacity becomes capacity + index + 5.
int dynArraySet(DynArrayP da, size_t index, void* elemPtr);

// Inserts a copy of the element at `elemPtr` before position `index` and moves the later elements
// up by one. With an index at or beyond the size it does what dynArraySet() does.
int dynArrayInsert(DynArrayP da, size_t index, void* elemPtr);

// Appends `n` elements of zero bytes and returns a pointer to the first of them, or null when
// memory runs out. With n = 0 nothing is appended, and the result points behind the last element
// (null while there is no block).
void* dynArrayAddEmptyElementsLast(DynArrayP da, size_t n);

// Sorts the elements in place with the C library's qsort() and `compare`.
void dynArraySort(DynArrayP da, int (*compare)(const void*, const void*));

// Frees the array and its elements. Null is ignored.
void dynArrayFree(DynArrayP da);

// Hands the elements over as a plain block and frees the array.
//
//   da     may be null, which counts as empty; invalid after the call
//   datap  receives the block, or null when there are no elements. The caller owns it and frees it
//          with msFree() in the space that the array was made in.
//
// Returns the number of elements, not bytes. Never fails: a block that cannot be trimmed to the
// elements keeps its size.
size_t dynArrayCommit(DynArrayP da, void** datap);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
