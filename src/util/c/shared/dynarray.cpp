// The growable array's functions as the library exports them; dynarray.inl has their bodies.

#define KX_EMIT_BODIES
#include "util/export/dynarray.inl"

static_assert(sizeof(DynArray) == 40 && offsetof(DynArray, data) == 8 &&
              offsetof(DynArray, capacity) == 16 && offsetof(DynArray, elemSize) == 24 &&
              offsetof(DynArray, size) == 32);
