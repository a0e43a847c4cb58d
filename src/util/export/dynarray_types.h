// The record of a growable array, see dynarray.h.
#ifndef UTIL_EXPORT_DYNARRAY_TYPES_H
#define UTIL_EXPORT_DYNARRAY_TYPES_H

#include "osal/export/osal_msmalloc.h"

#include <stddef.h>

// Callers may read the fields; only the array's functions change them. `size` is at most
// `capacity`. Element i starts at byte i * elemSize of `data`. Bytes beyond `size` elements are
// unspecified.
typedef struct DynArray {
    mspace space;     // where the record and the block come from
    void* data;       // capacity * elemSize bytes; null while the capacity is 0
    size_t capacity;  // elements that the block has room for
    size_t elemSize;  // bytes of one element, fixed at creation
    size_t size;      // elements in use
} DynArray;

typedef DynArray* DynArrayP;

#endif
