// What the host calls in each component that it loads.
#ifndef EXAMPLES_HOST_COMPONENT_H
#define EXAMPLES_HOST_COMPONENT_H

#ifdef __cplusplus
extern "C" {
#endif

// Does the component's share of one round of a worker's. Workers are threads that call at once,
// each with a number of its own and with rounds counted from 0.
__attribute__((visibility("default"))) void component_work(unsigned worker, unsigned round);

#ifdef __cplusplus
}
#endif

#endif
