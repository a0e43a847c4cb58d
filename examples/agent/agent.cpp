// Where the machine calls the agent: at its start, and at every attach.

#define LOG_DEFINE_COMPONENT
#include "agent_log.h"

#include "events.h"
#include "options.h"

#include <cstdio>

namespace {

constexpr size_t MESSAGE_BYTES = 256;

jvmtiEnv* machine;  // of the first entry; an attach finds the agent running

template <class Environment>
Environment* environment(JavaVM* vm, jint version) {
    void* found = nullptr;
    return vm->GetEnv(&found, version) == JNI_OK ? static_cast<Environment*>(found) : nullptr;
}

// Rejected options may have changed some levels already, so events are chosen again in both cases.
jint enter(JavaVM* vm, const char* options, JNIEnv* jni) {
    if (machine == nullptr) {
        machine = environment<jvmtiEnv>(vm, JVMTI_VERSION_11);
        if (machine == nullptr || !prepare_events(machine))
            return JNI_ERR;
    }
    char message[MESSAGE_BYTES];
    const bool applied = apply_options(options != nullptr ? options : "", message, sizeof message);
    choose_events(machine, jni);
    if (applied)
        return JNI_OK;
    std::fprintf(stderr, "kxagent: %s\n", message);
    return JNI_ERR;
}

}  // namespace

JNIEXPORT jint JNICALL Agent_OnLoad(JavaVM* vm, char* options, void*) {
    return enter(vm, options, nullptr);
}

JNIEXPORT jint JNICALL Agent_OnAttach(JavaVM* vm, char* options, void*) {
    return enter(vm, options, environment<JNIEnv>(vm, JNI_VERSION_10));
}
