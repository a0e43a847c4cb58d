// The native of veltra.kestrum.os.Process.

#include "osal/export/osal_threads.h"

#include <jni.h>

// The native of Process.getpid(): the id of the calling process.
extern "C" JNIEXPORT jint JNICALL Java_veltra_kestrum_os_Process_getpid(JNIEnv*, jclass) {
    return osGetProcessID();
}
