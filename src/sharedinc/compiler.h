// What C and C++ say differently in the bodies of inline functions.
#ifndef SHAREDINC_COMPILER_H
#define SHAREDINC_COMPILER_H

#include <stddef.h>  // alone, macros would be an empty source, which C forbids

// A conversion, free of the casts that -Wold-style-cast reports in C++.
#ifdef __cplusplus
#define KX_CAST(type, value) static_cast<type>(value)
#else
#define KX_CAST(type, value) ((type)(value))
#endif

// Starts the body of a function that a library exports and that callers may inline. A call that the
// compiler does not inline goes to the library. The source that emits the exported function defines
// KX_EMIT_BODIES before its first include.
#ifdef KX_EMIT_BODIES
#define KX_EXPORTED_INLINE
#else
#define KX_EXPORTED_INLINE __attribute__((gnu_inline)) extern inline
#endif

#endif
