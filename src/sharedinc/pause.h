/* For threads that try again and again: tells the processor that this one waits. */
#ifndef SHAREDINC_PAUSE_H
#define SHAREDINC_PAUSE_H

static inline void pause_processor(void) {
#if defined(__x86_64__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    __asm__ volatile("yield");
#endif
}

#endif
