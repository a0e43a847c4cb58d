// The native side of demo.Vm: what a virtual machine does for its command line, and a component
// whose module "gc" follows that of a component loaded before.

#define LOG_DEFINE_COMPONENT
#include "vm_log.h"

#include <jni.h>
#include <string.h>

enum { ERROR_BYTES = 256 };

static int parse_decorations(const char* args, char* errbuf, size_t errlen,
                             int (*warn_deprecated)(const char*)) {
    (void)warn_deprecated;
    if (logParseLogDecorations(args) == 0)
        return 0;
    snprintf(errbuf, errlen, "No such decoration in \"%s\"", args);
    return -1;
}

static const struct Option {
    const char* name;
    int (*parse)(const char* args, char* errbuf, size_t errlen, int (*warn)(const char*));
} OPTIONS[] = {
    {"--log", logParseMsgLevelsEx},
    {"--sanity", logParseSanityLevelsEx},
    {"--log-file", logParseLogFilesEx},
    {"--decorations", parse_decorations},
};

// Explains in `errbuf` when the result is not 0.
static int parse(const char* name, const char* value, char* errbuf, size_t errlen) {
    for (size_t i = 0; i < sizeof OPTIONS / sizeof OPTIONS[0]; i++)
        if (strcmp(OPTIONS[i].name, name) == 0)
            return OPTIONS[i].parse(value, errbuf, errlen, NULL);
    snprintf(errbuf, errlen, "No such option");
    return -1;
}

JNIEXPORT void JNICALL Java_demo_Vm_option(JNIEnv* env, jclass clazz, jstring name, jstring value) {
    (void)clazz;
    const char* const name_text = (*env)->GetStringUTFChars(env, name, NULL);
    if (name_text == NULL)
        return;
    const char* const value_text = (*env)->GetStringUTFChars(env, value, NULL);
    if (value_text != NULL) {
        char error[ERROR_BYTES];
        const int result = parse(name_text, value_text, error, sizeof error);
        (*env)->ReleaseStringUTFChars(env, value, value_text);
        jclass thrown =
            result != 0 ? (*env)->FindClass(env, "java/lang/IllegalArgumentException") : NULL;
        if (thrown != NULL)
            (*env)->ThrowNew(env, thrown, error);
    }
    (*env)->ReleaseStringUTFChars(env, name, name_text);
}

JNIEXPORT void JNICALL Java_demo_Vm_list(JNIEnv* env, jclass clazz, jstring file) {
    (void)clazz;
    const char* const path = (*env)->GetStringUTFChars(env, file, NULL);
    if (path == NULL)
        return;
    FILE* const out = strcmp(path, "-") == 0 ? stdout : fopen(path, "a");
    (*env)->ReleaseStringUTFChars(env, file, path);
    if (out == NULL)
        return;
    _log_print_moduleinfo(NULL, LOG_ALL_MODULES, out);
    if (out != stdout)
        fclose(out);
}

JNIEXPORT void JNICALL Java_demo_Vm_collect(JNIEnv* env, jclass clazz, jint round) {
    (void)env;
    (void)clazz;
    logPrint(DBG_VM_GC, MSG_INFO, "native: round %d", (int)round);
}
