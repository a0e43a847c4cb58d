// Platform types whose definition differs from system to system: the Linux variant.
#ifndef OSAL_EXPORT_LINUX_OSAL_TYPES_PD_H
#define OSAL_EXPORT_LINUX_OSAL_TYPES_PD_H

#include "sharedinc/inttype.h"

#include <pthread.h>

// A thread-local storage slot, see tlsAlloc().
typedef pthread_key_t TLSKey;

#endif
