// What the host calls in each component that it loads.
#ifndef EXAMPLES_HOST_COMPONENT_H
#define EXAMPLES_HOST_COMPONENT_H

#include "util/export/logging_types.h"

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

// Does the component's share of one round of a worker's. Workers are threads that call at once,
// each with a number of its own and with rounds counted from 0.
__attribute__((visibility("default"))) void component_work(unsigned worker, unsigned round);

// Takes the options of a component that has some, before any work. Returns 0, or -1 with the
// reason, cut to fit, in `errbuf` of `errlen` bytes. The text must stay as it is.
__attribute__((visibility("default"))) int component_configure(const char* text, char* errbuf,
                                                               size_t errlen);

// The component's log modules.
__attribute__((visibility("default"))) logger* component_logger(void);

#ifdef __cplusplus
}
#endif

#endif
