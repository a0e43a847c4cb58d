// The log modules of the demo's virtual machine.
#ifndef EXAMPLES_JAVA_VM_LOG_H
#define EXAMPLES_JAVA_VM_LOG_H

#define LOG_MODULES(MODULE)                                          \
    MODULE(DBG_VM, "VM", NULL, LOG_IS_DEFAULT, LOG_LEVEL_AND_MODULE) \
    MODULE(DBG_VM_GC, "gc", NULL, LOG_IS_LINKED, LOG_LEVEL_AND_MODULE)
#include "util/export/logging_static_gen.h"

#endif
