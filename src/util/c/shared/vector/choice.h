// Which vectors this processor has; tested once, when the library is loaded.
#ifndef UTIL_C_SHARED_VECTOR_CHOICE_H
#define UTIL_C_SHARED_VECTOR_CHOICE_H

// The widest vectors that may be chosen, in bytes. Tests build the library with less, so that every
// width is tested on one processor.
#ifndef KX_WIDEST
#define KX_WIDEST 64
#endif

#if defined(__x86_64__) && KX_WIDEST > 16
// AVX-512 is used only on processors that also have VBMI: older ones slow down when they use it.
static int widest_vectors() {
    if (KX_WIDEST >= 64 && __builtin_cpu_supports("avx512bw") != 0 &&
        __builtin_cpu_supports("avx512vl") != 0 && __builtin_cpu_supports("avx512vbmi") != 0 &&
        __builtin_cpu_supports("bmi2") != 0)
        return 64;
    return __builtin_cpu_supports("avx2") != 0 ? 32 : 16;
}

// 64 for AVX-512, 32 for AVX2, 16 for SSE2, which every x86-64 has.
static const int vector_bytes = widest_vectors();
#else
constexpr int vector_bytes = 16;
#endif

#endif
