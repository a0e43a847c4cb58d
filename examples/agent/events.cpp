// The callbacks. They run on any thread, also at the same time, and while the machine starts or
// ends.

#include "events.h"

#include "agent_log.h"
#include "class_trace.h"
#include "filters.h"
#include "gc.h"
#include "heap.h"
#include "names.h"
#include "osal/export/osal_timing.h"

namespace {

constexpr double NANOS_PER_MILLI = 1e6;

s8 start_ticks;

long uptime_millis() {
    const auto ticks = static_cast<double>(timingGetCounterTime() - start_ticks);
    return static_cast<long>(ticks * counterToNanoMultiplier / NANOS_PER_MILLI);
}

void JNICALL machine_is_up(jvmtiEnv* machine, JNIEnv* jni, jthread) {
    MachineText name(machine), version(machine);
    machine->GetSystemProperty("java.vm.name", name.place());
    machine->GetSystemProperty("java.vm.version", version.place());
    logPrint(DBG_MACHINE, MSG_INFO, "%s %s is up after %ldms", name.text(), version.text(),
             uptime_millis());
    choose_events(machine, jni);
}

void JNICALL machine_ends(jvmtiEnv*, JNIEnv*) {
    stop_watching_heap();
    gc_summarize();
    logPrint(DBG_MACHINE, MSG_INFO, "ends after %ldms", uptime_millis());
}

void JNICALL collection_starts(jvmtiEnv*) {
    gc_started();
}

void JNICALL collection_ends(jvmtiEnv*) {
    gc_finished();
    heap_collected();
}

void JNICALL class_is_loaded(jvmtiEnv* machine, JNIEnv*, jthread, jclass type) {
    const ClassName name(machine, type);
    const MsgLevel level = filter_level(CLASSES, MSG_INFO, name.text());
    if (level == MSG_MAX)
        return;
    trace_class(name.text());
    logPrint(DBG_CLASS, level, "%s", name.text());
}

void JNICALL method_is_compiled(jvmtiEnv* machine, jmethodID method, jint size, const void*, jint,
                                const jvmtiAddrLocationMap*, const void*) {
    const MethodName name(machine, method);
    const MsgLevel level = filter_level(METHODS, MSG_INFO, name.type(), name.text());
    logPrint(DBG_JIT, level, "%s.%s, %d bytes", name.type(), name.text(), size);
}

void tell_of_thread(jvmtiEnv* machine, jthread thread, const char* what) {
    jvmtiThreadInfo info = {};
    MachineText name(machine);
    if (machine->GetThreadInfo(thread, &info) == JVMTI_ERROR_NONE)
        *name.place() = info.name;
    logPrint(DBG_THREAD, MSG_INFO, "%s %s", name.text(), what);
}

void JNICALL thread_starts(jvmtiEnv* machine, JNIEnv*, jthread thread) {
    tell_of_thread(machine, thread, "starts");
}

void JNICALL thread_ends(jvmtiEnv* machine, JNIEnv*, jthread thread) {
    tell_of_thread(machine, thread, "ends");
}

// Programs may throw often, so names are read only when they may be printed.
void JNICALL exception_is_thrown(jvmtiEnv* machine, JNIEnv* jni, jthread, jmethodID method,
                                 jlocation, jobject exception, jmethodID catcher, jlocation) {
    const MsgLevel usual = catcher != nullptr ? MSG_DEBUG : MSG_INFO;
    if (!logEnabled(DBG_EXCEPT, filter_first_level(EXCEPTIONS, usual)))
        return;
    const ClassName name(machine, jni->GetObjectClass(exception));
    const MethodName thrower(machine, method);
    logPrint(DBG_EXCEPT, filter_level(EXCEPTIONS, usual, name.text()), "%s thrown by %s.%s, %s",
             name.text(), thrower.type(), thrower.text(), catcher ? "caught" : "not caught");
}

bool always() {
    return true;
}

bool collections_wanted() {
    const bool limited = gc_pause_limit() != 0 || heap_limit() != 0;
    return logEnabled(DBG_GC, limited ? MSG_WARN : MSG_INFO);
}

bool classes_wanted() {
    return tracing_classes() || logEnabled(DBG_CLASS, filter_first_level(CLASSES, MSG_INFO));
}

bool methods_wanted() {
    return logEnabled(DBG_JIT, filter_first_level(METHODS, MSG_INFO));
}

bool threads_wanted() {
    return logEnabled(DBG_THREAD, MSG_INFO);
}

bool exceptions_wanted() {
    return logEnabled(DBG_EXCEPT, filter_first_level(EXCEPTIONS, MSG_INFO));
}

struct Event {
    jvmtiEvent event;
    LogModule module;
    bool (*wanted)();
};

constexpr Event EVENTS[] = {
    {JVMTI_EVENT_VM_INIT, DBG_MACHINE, always},
    {JVMTI_EVENT_VM_DEATH, DBG_MACHINE, always},
    {JVMTI_EVENT_GARBAGE_COLLECTION_START, DBG_GC, collections_wanted},
    {JVMTI_EVENT_GARBAGE_COLLECTION_FINISH, DBG_GC, collections_wanted},
    {JVMTI_EVENT_CLASS_LOAD, DBG_CLASS, classes_wanted},
    {JVMTI_EVENT_COMPILED_METHOD_LOAD, DBG_JIT, methods_wanted},
    {JVMTI_EVENT_THREAD_START, DBG_THREAD, threads_wanted},
    {JVMTI_EVENT_THREAD_END, DBG_THREAD, threads_wanted},
    {JVMTI_EVENT_EXCEPTION, DBG_EXCEPT, exceptions_wanted},
};

}  // namespace

bool prepare_events(jvmtiEnv* machine) {
    start_ticks = timingGetCounterTime();
    jvmtiCapabilities wanted = {};
    wanted.can_generate_garbage_collection_events = 1;
    wanted.can_generate_compiled_method_load_events = 1;
    jvmtiEventCallbacks callbacks = {};
    callbacks.VMInit = machine_is_up;
    callbacks.VMDeath = machine_ends;
    callbacks.GarbageCollectionStart = collection_starts;
    callbacks.GarbageCollectionFinish = collection_ends;
    callbacks.ClassLoad = class_is_loaded;
    callbacks.CompiledMethodLoad = method_is_compiled;
    callbacks.ThreadStart = thread_starts;
    callbacks.ThreadEnd = thread_ends;
    callbacks.Exception = exception_is_thrown;
    return machine->AddCapabilities(&wanted) == JVMTI_ERROR_NONE &&
           machine->SetEventCallbacks(&callbacks, sizeof callbacks) == JVMTI_ERROR_NONE;
}

// The capability for exception events makes compiled code throw many times slower, even when the
// events are not enabled, and machines grant it at their start only. So it is requested only when
// exceptions are wanted.
void choose_events(jvmtiEnv* machine, JNIEnv* jni) {
    jvmtiCapabilities exceptions = {};
    exceptions.can_generate_exception_events = exceptions_wanted();
    machine->AddCapabilities(&exceptions);
    if (jni != nullptr && collections_wanted())
        watch_heap(machine, jni);
    for (const Event& e : EVENTS) {
        const jvmtiEventMode mode = e.wanted() ? JVMTI_ENABLE : JVMTI_DISABLE;
        const jvmtiError error = machine->SetEventNotificationMode(mode, e.event, nullptr);
        if (error != JVMTI_ERROR_NONE && mode == JVMTI_ENABLE)
            logPrint(e.module, MSG_ERROR,
                     "the machine tells of these only when asked at its start (error %d)", error);
    }
}
