// The natives of veltra.kestrum.os.Timing.
//
// Java reads the counter often, so its native is registered by init(), not found by name at the
// first call.

#include "osal/export/osal_timing.h"

#include <jni.h>
#include <iterator>

static jlong JNICALL java_counterTime(JNIEnv*, jobject) {
    return timingGetCounterTime();
}

// JNI declares the record's texts without const, but they are not written to.
static const JNINativeMethod natives[] = {{const_cast<char*>("counterTime"),
                                           const_cast<char*>("()J"),
                                           reinterpret_cast<void*>(java_counterTime)}};

// The native of Timing.init(): the counter's ticks per second; 0 with an exception pending when the
// class has no counterTime.
extern "C" JNIEXPORT jlong JNICALL Java_veltra_kestrum_os_Timing_init(JNIEnv* env, jclass clazz) {
    if (env->RegisterNatives(clazz, natives, std::size(natives)) != 0)
        return 0;
    return static_cast<jlong>(timingGetCounterFreq());
}
