// The component that the Java benchmark logs through, and its line printed from C.

#define LOG_MODULES(MODULE) MODULE(DBG_GC, "gc", NULL, 0, LOG_LEVEL_AND_MODULE)
#define LOG_DEFINE_COMPONENT
#include "util/export/logging_static_gen.h"

#include <jni.h>

JNIEXPORT void JNICALL Java_JavaBench_printFromC(JNIEnv* env, jclass clazz, jint first,
                                                 jint lines) {
    (void)env;
    (void)clazz;
    for (int count = first; count < first + lines; count++)
        if (logEnabled(DBG_GC, MSG_INFO))
            _logforceprint(&_loggers, DBG_GC, MSG_INFO, "collected %d objects in %s", (int)count,
                           "survivor space");
}

// Applies options; false when one is rejected.
JNIEXPORT jboolean JNICALL Java_JavaBench_setUp(JNIEnv* env, jclass clazz, jstring file) {
    (void)clazz;
    const char* const path = (*env)->GetStringUTFChars(env, file, NULL);
    if (path == NULL)
        return JNI_FALSE;
    const bool done = logParseLogDecorations("level,module,timestamp,pid") == 0 &&
                      logParseMsgLevelsEx("gc=info", NULL, 0, NULL) == 0 &&
                      logParseLogFilesEx(path, NULL, 0, NULL) == 0;
    (*env)->ReleaseStringUTFChars(env, file, path);
    return done;
}
