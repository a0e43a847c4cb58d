// The bodies of the array's functions, for C and C++.
//
// Include it in place of dynarray.h to let the compiler inline the bodies. A call that it does not
// inline goes to the library, which compiles the same bodies as ordinary functions.
#ifndef UTIL_EXPORT_DYNARRAY_INL
#define UTIL_EXPORT_DYNARRAY_INL

#include "sharedinc/compiler.h"
#include "util/export/dynarray.h"

#include <stdlib.h>
#include <string.h>

// Not static: C has a warning for static functions in bodies that others may inline.
#define DYNARRAY_HELPER __attribute__((gnu_inline, __always_inline__)) extern inline

#ifdef __cplusplus
extern "C" {
#endif

enum { DYNARRAY_FIRST_GROWTH = 5 };  // added when doubling is not enough

// The address of element `index`, or of the end.
DYNARRAY_HELPER void* _da_at(const DynArray* da, size_t index) {
    return KX_CAST(char*, da->data) + index * da->elemSize;
}

DYNARRAY_HELPER void _da_copy_word(void* to, const void* from, size_t index) {
    memcpy(KX_CAST(char*, to) + 8 * index, KX_CAST(const char*, from) + 8 * index, 8);
}

// Copies one element. Up to eight words are copied one by one: callers often store an element field
// by field just before, and a wider load of several such stores waits until they are in the cache.
DYNARRAY_HELPER void _da_copy(void* to, const void* from, size_t elemSize) {
    // Hides the element's size from the compiler: it warns of the longer copies below, which are
    // never made for this size.
    __asm__("" : "+r"(from));
    if (elemSize == 8) {  // pointers and pairs of them are common: no jump
        _da_copy_word(to, from, 0);
        return;
    }
    if (elemSize == 16) {
        _da_copy_word(to, from, 1);
        _da_copy_word(to, from, 0);
        return;
    }
    if (elemSize % 8 != 0 || elemSize > 64) {
        memcpy(to, from, elemSize);
        return;
    }
    switch (elemSize / 8) {
        case 8: _da_copy_word(to, from, 7); __attribute__((fallthrough));
        case 7: _da_copy_word(to, from, 6); __attribute__((fallthrough));
        case 6: _da_copy_word(to, from, 5); __attribute__((fallthrough));
        case 5: _da_copy_word(to, from, 4); __attribute__((fallthrough));
        case 4: _da_copy_word(to, from, 3); __attribute__((fallthrough));
        case 3: _da_copy_word(to, from, 2); __attribute__((fallthrough));
        case 2: _da_copy_word(to, from, 1); __attribute__((fallthrough));
        case 1: _da_copy_word(to, from, 0); break;
        default: break;
    }
}

// Makes the block exactly `nElems` elements long; 0, or -1 with nothing changed.
DYNARRAY_HELPER int _da_set_capacity(DynArrayP da, size_t nElems) {
    size_t bytes;
    if (__builtin_mul_overflow(nElems, da->elemSize, &bytes))
        return -1;
    void* data = msRealloc(da->space, da->data, bytes);
    if (data == NULL)
        return -1;
    da->data = data;
    da->capacity = nElems;
    return 0;
}

DYNARRAY_HELPER int _da_resize(DynArrayP da, size_t nElems) {
    return nElems <= da->capacity ? 0 : _da_set_capacity(da, nElems);
}

// Makes index s valid, which lies beyond the capacity. The reallocation is left to the library.
DYNARRAY_HELPER int _da_grow(DynArrayP da, size_t s) {
    size_t capacity;
    if (__builtin_mul_overflow(da->capacity, 2, &capacity))
        return -1;
    if (s >= capacity && (__builtin_add_overflow(da->capacity, s, &capacity) ||
                          __builtin_add_overflow(capacity, DYNARRAY_FIRST_GROWTH, &capacity)))
        return -1;
    return dynArrayResize(da, capacity);
}

DYNARRAY_HELPER int _da_check_size(DynArrayP da, size_t s) {
    return __builtin_expect(s < da->capacity, 1) ? 0 : _da_grow(da, s);
}

DYNARRAY_HELPER int _da_set(DynArrayP da, size_t index, const void* elemPtr) {
    if (_da_check_size(da, index) != 0)
        return -1;
    _da_copy(_da_at(da, index), elemPtr, da->elemSize);
    if (index >= da->size)
        da->size = index + 1;
    return 0;
}

DYNARRAY_HELPER DynArrayP _da_new(size_t initCap, size_t elemSize, mspace space) {
    DynArrayP da = KX_CAST(DynArrayP, msRealloc(space, NULL, sizeof(DynArray)));
    if (da == NULL)
        return NULL;
    da->space = space;
    da->data = NULL;
    da->capacity = 0;
    da->elemSize = elemSize;
    da->size = 0;
    if (_da_resize(da, initCap) != 0) {
        msFree(space, da);
        return NULL;
    }
    return da;
}

KX_EXPORTED_INLINE DynArrayP dynArrayNew(size_t initCap, size_t elemSize) {
    return _da_new(initCap, elemSize, globalMSpace());
}

KX_EXPORTED_INLINE DynArrayP dynArrayNewMSpace(size_t initCap, size_t elemSize, mspace ms) {
    return _da_new(initCap, elemSize, ms);
}

KX_EXPORTED_INLINE int dynArrayResize(DynArrayP da, size_t nElems) {
    return _da_resize(da, nElems);
}

KX_EXPORTED_INLINE int dynArrayShrink(DynArrayP da, size_t nElems) {
    if (nElems >= da->capacity)
        return 0;
    if (_da_set_capacity(da, nElems) != 0)
        return -1;
    if (nElems == 0) {  // an array without capacity has no block, not even an empty one
        msFree(da->space, da->data);
        da->data = NULL;
    }
    if (da->size > nElems)
        da->size = nElems;
    return 0;
}

KX_EXPORTED_INLINE int dynArrayAddLast(DynArrayP da, void* elemPtr) {
    if (__builtin_expect(da->size >= da->capacity, 0))
        return dynArraySet(da, da->size, elemPtr);
    void* last = _da_at(da, da->size);
    _da_copy(last, elemPtr, da->elemSize);
    da->size++;
    return 0;
}

KX_EXPORTED_INLINE int dynArraySet(DynArrayP da, size_t index, void* elemPtr) {
    return _da_set(da, index, elemPtr);
}

KX_EXPORTED_INLINE int dynArrayInsert(DynArrayP da, size_t index, void* elemPtr) {
    if (index >= da->size)
        return _da_set(da, index, elemPtr);
    if (_da_check_size(da, da->size) != 0)
        return -1;
    memmove(_da_at(da, index + 1), _da_at(da, index), (da->size - index) * da->elemSize);
    _da_copy(_da_at(da, index), elemPtr, da->elemSize);
    da->size++;
    return 0;
}

KX_EXPORTED_INLINE void* dynArrayAddEmptyElementsLast(DynArrayP da, size_t n) {
    if (n == 0)
        return da->data != NULL ? _da_at(da, da->size) : NULL;
    size_t size;
    if (__builtin_add_overflow(da->size, n, &size) || _da_check_size(da, size - 1) != 0)
        return NULL;
    void* first = _da_at(da, da->size);
    memset(first, 0, n * da->elemSize);
    da->size = size;
    return first;
}

KX_EXPORTED_INLINE void dynArraySort(DynArrayP da, int (*compare)(const void*, const void*)) {
    if (da->size > 1)  // an empty array may have no block
        qsort(da->data, da->size, da->elemSize, compare);
}

KX_EXPORTED_INLINE void dynArrayFree(DynArrayP da) {
    if (da == NULL)
        return;
    if (da->data != NULL)
        msFree(da->space, da->data);
    msFree(da->space, da);
}

KX_EXPORTED_INLINE size_t dynArrayCommit(DynArrayP da, void** datap) {
    *datap = NULL;
    if (da == NULL)
        return 0;
    const size_t size = da->size;
    if (size > 0) {
        (void)_da_set_capacity(da, size);
        *datap = da->data;
        da->data = NULL;
    }
    dynArrayFree(da);
    return size;
}

#ifdef __cplusplus
}
#endif

#endif
