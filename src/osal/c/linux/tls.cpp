// Thread-local slots are POSIX keys without destructors.

#include "osal/export/osal_threads.h"

#include <errno.h>
#include <pthread.h>

osalError tlsAlloc(TLSKey* key) {
    if (key == nullptr)
        return OSAL_BAD_ARGUMENT;
    return pthread_key_create(key, nullptr) == 0 ? OSAL_OK : OSAL_OUT_OF_RESOURCES;
}

void* tlsGet(TLSKey key) {
    return pthread_getspecific(key);
}

osalError tlsSet(TLSKey key, void* value) {
    switch (pthread_setspecific(key, value)) {
        case 0: return OSAL_OK;
        case ENOMEM: return OSAL_OUT_OF_RESOURCES;
        default: return OSAL_BAD_ARGUMENT;
    }
}
