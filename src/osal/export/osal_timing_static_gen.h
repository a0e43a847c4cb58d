// Definitions of the timing variables and of the static initialiser that fills them. One source
// file of the component that owns the variables includes this header.
#ifndef OSAL_EXPORT_OSAL_TIMING_STATIC_GEN_H
#define OSAL_EXPORT_OSAL_TIMING_STATIC_GEN_H

#include "osal/export/osal_timing.h"

#ifdef __cplusplus
extern "C" {
#endif

counterfreq counterFrequency;
double counterToNanoMultiplier;

// Reads both variables from the platform.
static inline void init_timing_vars(void) {
    _timing_get_vars(&counterFrequency, &counterToNanoMultiplier);
}

// The last of the library's static initialisers (priorities 101 to 103, in that order).
__attribute__((constructor(103), visibility("hidden"))) void _siinit_timing_vars(void);
void _siinit_timing_vars(void) {
    init_timing_vars();
}

#ifdef __cplusplus
}
#endif

#endif
