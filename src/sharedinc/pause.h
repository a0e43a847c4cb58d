// The instruction by which a thread tells the processor that it waits in a loop.
#ifndef SHAREDINC_PAUSE_H
#define SHAREDINC_PAUSE_H

static inline void kx_pause(void) {
#if defined(__x86_64__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    __asm__ volatile("yield");
#endif
}

#endif
