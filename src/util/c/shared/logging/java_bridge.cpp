// The natives of veltra.kestrum.log.NativeLogModule: log modules for Java.
//
// A Java object stands for one module. It has the address of the module's record, which it passes
// back to print, and two direct buffers over the module's level cells, so both sides read and write
// the same levels. Modules are never removed, so the addresses stay valid.
//
// A JNI call that fails leaves an exception pending. After that a native makes only the calls that
// JNI still allows, and returns.

#include "util/c/shared/logging/logging_internal.h"

#include "osal/export/osal_threads.h"
#include "util/c/shared/logging/cancellation.h"

#include <jni.h>
#include <bit>

// Set once, by initIDs(), before Java calls any other native; never released.
static jclass nlmClazz;
static jclass strClazz;
static jmethodID nlmInit;

constexpr const char* CONSTRUCTOR_SIGNATURE =
    "(J[Ljava/lang/String;Ljava/nio/ByteBuffer;Ljava/nio/ByteBuffer;II)V";

static void throw_new(JNIEnv* env, const char* class_name, const char* message) {
    jclass clazz = env->FindClass(class_name);
    if (clazz != nullptr)
        env->ThrowNew(clazz, message);
}

// The UTF-8 characters of a string, to be released; null with an exception pending.
static const char* utf_of(JNIEnv* env, jstring str) {
    if (str != nullptr)
        return env->GetStringUTFChars(str, nullptr);
    throw_new(env, "java/lang/NullPointerException", "");
    return nullptr;
}

static logmodule* find_by_name(const char* name) {
    logger* log;
    size_t index;
    if (!find_logmodule(name, nullptr, &log, &index, nullptr, 0))
        return nullptr;
    return &log->loggers[index];
}

// Stores a new string in an array; false with an exception pending.
static bool store_string(JNIEnv* env, jobjectArray array, size_t index, const char* text) {
    jstring str = env->NewStringUTF(text);
    if (str == nullptr)
        return false;
    env->SetObjectArrayElement(array, static_cast<jsize>(index), str);
    env->DeleteLocalRef(str);  // a native has room for few local references
    return true;
}

// The names of a module as an array of strings; null with an exception pending.
static jobjectArray names_of(JNIEnv* env, const logmodule* m) {
    const size_t count = m->names[1] != nullptr ? 2 : 1;
    jobjectArray names = env->NewObjectArray(static_cast<jsize>(count), strClazz, nullptr);
    for (size_t i = 0; names != nullptr && i < count; i++)
        if (!store_string(env, names, i, m->names[i]))
            return nullptr;
    return names;
}

// The Java object of a module; null with an exception pending.
static jobject object_of(JNIEnv* env, logmodule* m) {
    jobjectArray names = names_of(env, m);
    if (names == nullptr)
        return nullptr;
    jobject level = env->NewDirectByteBuffer(m->pMsgLevel, sizeof *m->pMsgLevel);
    if (level == nullptr)
        return nullptr;
    jobject sanity = env->NewDirectByteBuffer(m->pSanityLevel, sizeof *m->pSanityLevel);
    if (sanity == nullptr)
        return nullptr;
    return env->NewObject(nlmClazz, nlmInit, std::bit_cast<jlong>(m), names, level, sanity,
                          static_cast<jint>(m->log->msg_default),
                          static_cast<jint>(m->log->sanity_default));
}

// Fills a list with every module, linked ones included, in the order of their names. Needs
// loggers_lock.
static void list_all_modules(ModuleList* list) {
    for (logger* l = all_loggers.load(std::memory_order_relaxed); l != nullptr; l = l->next)
        for (size_t i = 0; i < l->num_loggers && list->count < list->capacity; i++)
            list->modules[list->count++] = &l->loggers[i];
    module_list_sort(list);
}

// The names of the modules in a list as an array, or null when there is no memory for it. When a
// name cannot be made, the elements from there on are null. Both leave an exception pending.
static jobjectArray array_of_names(JNIEnv* env, const ModuleList* list) {
    jobjectArray names = env->NewObjectArray(static_cast<jsize>(list->count), strClazz, nullptr);
    for (size_t i = 0; names != nullptr && i < list->count; i++)
        if (!store_string(env, names, i, list->modules[i]->names[0]))
            break;
    return names;
}

extern "C" {

// The native of NativeLogModule.initIDs(): remembers the class, its constructor and String.
JNIEXPORT void JNICALL Java_veltra_kestrum_log_NativeLogModule_initIDs(JNIEnv* env, jclass clazz) {
    nlmClazz = static_cast<jclass>(env->NewGlobalRef(clazz));
    if (nlmClazz == nullptr)
        return;
    jclass string = env->FindClass("java/lang/String");
    if (string == nullptr)
        return;
    strClazz = static_cast<jclass>(env->NewGlobalRef(string));
    if (strClazz == nullptr)
        return;
    nlmInit = env->GetMethodID(clazz, "<init>", CONSTRUCTOR_SIGNATURE);
}

// The native of NativeLogModule.getModule0(): a new object for the module of that name or alias.
JNIEXPORT jobject JNICALL Java_veltra_kestrum_log_NativeLogModule_getModule0(JNIEnv* env, jobject,
                                                                             jstring name) {
    const char* utf = utf_of(env, name);
    if (utf == nullptr)
        return nullptr;
    logmodule* m = find_by_name(utf);
    env->ReleaseStringUTFChars(name, utf);
    if (m == nullptr) {
        throw_new(env, "java/lang/IllegalArgumentException", "no such logmodule");
        return nullptr;
    }
    return object_of(env, m);
}

// The native of NativeLogModule.getModuleNames0(): the modules' names, without aliases, sorted.
JNIEXPORT jobjectArray JNICALL Java_veltra_kestrum_log_NativeLogModule_getModuleNames0(JNIEnv* env,
                                                                                       jclass) {
    ModuleList list;
    if (!module_list_init(&list)) {
        throw_new(env, "java/lang/OutOfMemoryError", "no memory for the list of log modules");
        return nullptr;
    }
    const CancellationOff cancellation_off;  // a call into the virtual machine may block
    rwReadLock(&loggers_lock);
    list_all_modules(&list);
    jobjectArray names = array_of_names(env, &list);
    rwReadUnlock(&loggers_lock);
    module_list_destroy(&list);
    return names;
}

// The native of NativeLogModule.output(): prints a line, whatever the module's level is.
JNIEXPORT void JNICALL Java_veltra_kestrum_log_NativeLogModule_output(JNIEnv* env, jclass,
                                                                      jlong module, jint level,
                                                                      jstring str) {
    logmodule* m = std::bit_cast<logmodule*>(module);
    const unsigned decorations = load_word(&m->decorations);
    const char* text = utf_of(env, str);
    if (text == nullptr)
        return;
    logprint(m->log, m, static_cast<int>(decorations), static_cast<MsgLevel>(level), text, nullptr);
    env->ReleaseStringUTFChars(str, text);
}

}  // extern "C"
