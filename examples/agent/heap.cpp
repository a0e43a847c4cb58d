// The end of a collection is reported while Java is stopped, when the agent may not call the
// machine. So a thread of the agent asks it afterwards. It waits on a semaphore, which a callback
// can post without waiting.

#include "heap.h"

#include "agent_log.h"
#include "util/export/scaled_printfmt.h"

#include <semaphore.h>
#include <algorithm>
#include <atomic>

namespace {

constexpr size_t BYTES_PER_MB = size_t{1} << 20;

sem_t collected;
std::atomic<bool> running, ending;
std::atomic<size_t> limit;

// The machine's java.lang.Runtime. Every machine has the methods that are looked up here, and none
// of them throws.
class Runtime {
  public:
    explicit Runtime(JNIEnv* jni) : jni_(jni), type_(jni->FindClass("java/lang/Runtime")) {
        jmethodID get = jni->GetStaticMethodID(type_, "getRuntime", "()Ljava/lang/Runtime;");
        object_ = jni->CallStaticObjectMethod(type_, get);
        jni->ExceptionClear();
    }
    size_t ask(const char* method) const {
        const jmethodID id = jni_->GetMethodID(type_, method, "()J");
        const jlong bytes = jni_->CallLongMethod(object_, id);
        jni_->ExceptionClear();
        return static_cast<size_t>(bytes);
    }

  private:
    JNIEnv* const jni_;
    const jclass type_;
    jobject object_;
};

void report(size_t used, size_t total, size_t most) {
    const size_t used_mb = scaledownSizeFixed(used, BYTES_PER_MB);
    if (most != 0 && used > most)
        logPrint(DBG_GC, MSG_WARN, "%zuM in use, more than %zu%s", used_mb, scaledownSize(most),
                 scaledDownSizeSuffix(most));
    else
        logPrint(DBG_GC, MSG_INFO, "%zuM of %zu%s in use", used_mb, scaledownSize(total),
                 scaledDownSizeSuffix(total));
}

// Collections that follow each other faster than this thread wakes are reported as one.
void JNICALL watch(jvmtiEnv*, JNIEnv* jni, void*) {
    const Runtime runtime(jni);
    for (;;) {
        while (sem_wait(&collected) != 0) {
        }
        while (sem_trywait(&collected) == 0) {
        }
        if (ending)
            return;
        const size_t free = runtime.ask("freeMemory"), total = runtime.ask("totalMemory");
        report(total - std::min(free, total), total, heap_limit());  // it may shrink in between
    }
}

}  // namespace

void watch_heap(jvmtiEnv* machine, JNIEnv* jni) {
    if (running)
        return;
    jclass type = jni->FindClass("java/lang/Thread");
    jmethodID make = jni->GetMethodID(type, "<init>", "(Ljava/lang/String;)V");
    jobject thread = jni->NewObject(type, make, jni->NewStringUTF("kxagent heap"));
    sem_init(&collected, 0, 0);
    running = machine->RunAgentThread(thread, watch, nullptr, JVMTI_THREAD_NORM_PRIORITY) ==
              JVMTI_ERROR_NONE;
}

void heap_collected() {
    if (running)
        sem_post(&collected);
}

// The machine waits a while for threads that are in native code, as this one is.
void stop_watching_heap() {
    ending = true;
    heap_collected();
}

void set_heap_limit(size_t bytes) {
    limit = bytes;
}

size_t heap_limit() {
    return limit;
}
