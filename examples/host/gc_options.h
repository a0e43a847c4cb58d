// The garbage collector's options, set before the first worker starts.
#ifndef EXAMPLES_HOST_GC_OPTIONS_H
#define EXAMPLES_HOST_GC_OPTIONS_H

#include "util/export/arguments_types.h"

enum { MAX_PHASES = 4 };

typedef struct {
    size_t region;   // bytes
    nanotime pause;  // a collection that takes longer is worth a warning; 0 for none
    bool verify;     // after each collection, whatever the sanity level
    pcchar phases[MAX_PHASES];
    size_t num_phases;
} gc_options;

extern gc_options options;

#endif
