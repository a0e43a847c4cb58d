// Kernels over vectors of bytes, built for each width that the processor may have.
//
// A source defines VECTOR_KERNEL as the name of its kernel's file and includes this header. The
// header includes bytes.inl and the kernel once for each width, in the namespaces width_16,
// width_32 and width_64. Each function of a kernel is marked VECTOR_CODE or VECTOR_INLINE, which
// name the instructions that it may use; VECTOR_TABLES is 1 where look_up() exists. A template over
// the width would need no second file, but compilers do not inline code for AVX2 or AVX-512 into a
// template that is compiled without them.
#ifndef UTIL_C_SHARED_VECTOR_WIDTHS_H
#define UTIL_C_SHARED_VECTOR_WIDTHS_H

#include "sharedinc/inttype.h"
#include "util/c/shared/vector/block.h"
#include "util/c/shared/vector/choice.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif
#include <stddef.h>
#include <string.h>
#include <algorithm>

#define VECTOR_INLINE VECTOR_CODE [[gnu::always_inline]] static inline

// SSE2 has no instruction for look_up().
#define VECTOR_BYTES 16
#if defined(__SSE2__)
#define VECTOR_TABLES 0
#else
#define VECTOR_TABLES 1
#endif
#define VECTOR_CODE
namespace width_16 {
#include "util/c/shared/vector/bytes.inl"
#include VECTOR_KERNEL
}  // namespace width_16
#undef VECTOR_BYTES
#undef VECTOR_TABLES
#undef VECTOR_CODE

#if defined(__x86_64__)

#define VECTOR_TABLES 1
#define VECTOR_BYTES 32
#define VECTOR_CODE [[gnu::target("avx2")]]
namespace width_32 {
#include "util/c/shared/vector/bytes.inl"
#include VECTOR_KERNEL
}  // namespace width_32
#undef VECTOR_BYTES
#undef VECTOR_CODE

#define VECTOR_BYTES 64
#define VECTOR_CODE [[gnu::target("avx512bw,avx512vl,avx512vbmi,bmi2")]]
namespace width_64 {
#include "util/c/shared/vector/bytes.inl"
#include VECTOR_KERNEL
}  // namespace width_64
#undef VECTOR_BYTES
#undef VECTOR_CODE

#else
namespace width_32 = width_16;  // never chosen
namespace width_64 = width_16;
#endif

#endif
