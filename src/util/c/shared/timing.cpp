// The library's timing variables, filled while it is loaded.

#include "osal/export/osal_timing_static_gen.h"
