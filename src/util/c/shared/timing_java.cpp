// The library's timing variables, filled while it is loaded, for other components and for Java.

#include "osal/export/osal_timing_static_gen.h"
