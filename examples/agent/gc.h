// Times the pauses of collections. The machine calls during a pause, one call at a time. The
// threads that run Java are stopped then, so nothing here waits for them.
#ifndef EXAMPLES_AGENT_GC_H
#define EXAMPLES_AGENT_GC_H

#include "osal/export/osal_timing_types.h"

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

void gc_started(void);
void gc_finished(void);

// A longer pause gives a warning; with 0, the initial value, none does. From any thread.
void gc_set_pause_limit(nanotime limit);
nanotime gc_pause_limit(void);

// Prints a summary of all collections.
void gc_summarize(void);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
