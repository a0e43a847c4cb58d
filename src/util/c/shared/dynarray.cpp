// The growable array's functions as the library exports them; dynarray.inl has their bodies.

#define DYNARRAY_BODY
#include "util/export/dynarray.inl"
