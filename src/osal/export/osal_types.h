// Result codes and scalar types of the platform layer.
#ifndef OSAL_EXPORT_OSAL_TYPES_H
#define OSAL_EXPORT_OSAL_TYPES_H

#include "sharedinc/inttype.h"

#include "osal/export/linux/osal_types_pd.h"

// The result of a platform operation that can fail in more than one way.
typedef enum osalError {
    OSAL_OK = 0,
    OSAL_ERROR = 1,             // failed for a reason that no other code names
    OSAL_OUT_OF_RESOURCES = 2,  // the system has no more of what was asked for
    OSAL_BAD_ARGUMENT = 3       // the caller passed something unusable; nothing was done
} osalError;

#endif
