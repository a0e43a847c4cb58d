// Code for processors with wide instructions (AVX2) beside code for any of this kind.
#ifndef UTIL_C_SHARED_WIDE_H
#define UTIL_C_SHARED_WIDE_H

// Marks a function that uses them, to be called only when the processor is wide.
#define WIDE [[gnu::target("avx2")]]

#ifdef KX_NARROW
constexpr bool processor_is_wide = false;  // the tests run the other code on any processor
#else
static const bool processor_is_wide = __builtin_cpu_supports("avx2");
#endif

#endif
