// Holds the component's data and its start-up code.

#define LOG_DEFINE_COMPONENT
#include "bench_log.h"
