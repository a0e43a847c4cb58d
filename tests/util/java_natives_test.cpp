// What tests/java cannot provoke of the natives for Java: failures of the virtual machine, for
// which there is a table of functions here. All of them are one, which notes the call and gives
// back its first argument; strings, classes and references are plain texts.

#include "osal/export/osal_timing.h"
#include "support/platform.h"
#include "support/test_logger.h"

#include <gtest/gtest.h>
#include <jni.h>
#include <algorithm>
#include <utility>

extern "C" {
void Java_veltra_kestrum_log_NativeLogModule_initIDs(JNIEnv*, jclass);
jobject Java_veltra_kestrum_log_NativeLogModule_getModule0(JNIEnv*, jobject, jstring);
jobjectArray Java_veltra_kestrum_log_NativeLogModule_getModuleNames0(JNIEnv*, jclass);
void Java_veltra_kestrum_log_NativeLogModule_output(JNIEnv*, jclass, jlong, jint, jstring);
jlong Java_veltra_kestrum_os_Timing_init(JNIEnv*, jclass);
}

using std::string;

static string calls;         // made so far, each with its blank
static size_t failing_call;  // the n-th that may fail, counted from 1

static string text(void* argument) {
    return static_cast<const char*>(argument);
}

static string number(void* argument) {
    return std::to_string(static_cast<jint>(reinterpret_cast<intptr_t>(argument)));
}

#define PLACE(function) (offsetof(JNINativeInterface_, function) / sizeof(void*))

// Calls that may fail have capitals.
static string note(size_t place, void* a, void* b, void* c) {
    switch (place) {
        case PLACE(FindClass): return "Class:" + text(a);
        case PLACE(NewGlobalRef): return "Global:" + text(a);
        case PLACE(GetMethodID): return "Method:" + text(b) + text(c);
        case PLACE(NewObjectV): return "Object:" + text(a);
        case PLACE(GetStringUTFChars): return "Chars:" + text(a);
        case PLACE(NewStringUTF): return "String:" + text(a);
        case PLACE(NewObjectArray): return "Array:" + number(a) + text(b);
        case PLACE(NewDirectByteBuffer): return "Buffer:" + number(b);
        case PLACE(RegisterNatives): {
            const auto* native = static_cast<JNINativeMethod*>(b);
            return "Natives:" + number(c) + native->name + native->signature;
        }
        case PLACE(ReleaseStringUTFChars): return "release:" + text(b);
        case PLACE(SetObjectArrayElement): return "set:" + number(b) + text(c);
        case PLACE(DeleteLocalRef): return "delete:" + text(a);
        case PLACE(ThrowNew): return "throw:" + text(b);
        default: return "unexpected:" + std::to_string(place);
    }
}

template <size_t place>
static void* call(JNIEnv*, void* a, void* b, void* c) {
    string noted = note(place, a, b, c);
    std::replace(noted.begin(), noted.end(), ' ', '_');
    calls += noted + " ";
    const bool fails = noted[0] <= 'Z' && failing_call > 0 && --failing_call == 0;
    return fails != (place == PLACE(RegisterNatives)) ? nullptr : a;  // 0 when it registers
}

template <size_t... places>
static JNIEnv make_jni(std::index_sequence<places...>) {
    static void* table[] = {reinterpret_cast<void*>(call<places>)...};
    return {reinterpret_cast<JNINativeInterface_*>(table)};
}

static JNIEnv jni = make_jni(std::make_index_sequence<sizeof(JNINativeInterface_) / 8>());
static const auto clazz = reinterpret_cast<jclass>(const_cast<char*>("Module"));
// More modules than a listing has room for without memory.
static logger* const many = make_logger({.modules = std::vector<TestModule>(300, {"many"})});
static logger* const mills = make_logger(
    {.modules = {{"mill", "grinder"}}, .obsoletes = {{"old", "mill", 0, MSG_INFO, OBSOLETE_WARN}}});

static jstring string_of(const char* text) {
    return reinterpret_cast<jstring>(const_cast<char*>(text));
}

static bool make_ids() {
    Java_veltra_kestrum_log_NativeLogModule_initIDs(&jni, clazz);
    return true;
}

static bool module(const char* name) {
    return Java_veltra_kestrum_log_NativeLogModule_getModule0(&jni, nullptr, string_of(name));
}

static bool names() {
    return Java_veltra_kestrum_log_NativeLogModule_getModuleNames0(&jni, clazz) != nullptr;
}

static bool output(const char* text) {
    const auto module = reinterpret_cast<intptr_t>(&mills->loggers[0]);
    Java_veltra_kestrum_log_NativeLogModule_output(&jni, clazz, module, MSG_TRACE, string_of(text));
    return true;
}

static bool register_counter() {
    return Java_veltra_kestrum_os_Timing_init(&jni, clazz) ==
           static_cast<jlong>(timingGetCounterFreq());
}

static string calls_for_names() {
    string all = "Array:302java/lang/String ";
    for (size_t i = 0; i < 302; i++) {
        const string name = i < 300 ? "many" : i == 300 ? "mill" : "util";
        all += "String:" + name + " set:" + std::to_string(i) + name + " delete:" + name + " ";
    }
    return all;
}

struct NativeCase {
    bool (*native)();
    string calls;
    string result = "";  // the call that makes it; "" when there is none
};

const NativeCase NATIVE_CASES[] = {
    {make_ids,
     "Global:Module Class:java/lang/String Global:java/lang/String Method:<init>"
     "(J[Ljava/lang/String;Ljava/nio/ByteBuffer;Ljava/nio/ByteBuffer;II)V "},
    {[] { return module("mill"); },
     "Chars:mill release:mill Array:2java/lang/String String:mill set:0mill delete:mill "
     "String:grinder set:1grinder delete:grinder Buffer:4 Buffer:4 Object:Module ",
     "Object"},
    {[] { return module("old"); },
     "Chars:old release:old Class:java/lang/IllegalArgumentException throw:no_such_logmodule ",
     "Object"},
    {[] { return module(nullptr); }, "Class:java/lang/NullPointerException throw: ", "Object"},
    {[] { return output(""); }, "Chars: release: "},
    {[] { return output(nullptr); }, "Class:java/lang/NullPointerException throw: "},
    {names, calls_for_names(), "Array"},
    {register_counter, "Natives:1counterTime()J ", "Natives"},
};

// The n-th call that may fail does, which leaves an exception pending: no other call follows. After
// that, the locks are free again.
TEST(JavaNatives, MakeNoFurtherCallWhenOneFails) {
    make_ids();
    for (const NativeCase& c : NATIVE_CASES) {
        calls.clear();
        EXPECT_EQ(c.native(), c.calls.find(c.result) != string::npos);
        ASSERT_EQ(calls, c.calls);
        size_t n = 0, end = 0;
        for (size_t start = 0; start < c.calls.size(); start = end) {
            end = c.calls.find(' ', start) + 1;
            if (c.calls[start] > 'Z')
                continue;
            failing_call = ++n;
            calls.clear();
            EXPECT_EQ(c.native(), c.result.empty() || c.calls.find(c.result) < start)
                << n << c.calls;
            EXPECT_EQ(calls, c.calls.substr(0, end));
        }
    }
    make_logger({{{"registered"}}});
}

TEST(JavaNatives, ThrowWithoutMemoryForTheList) {
    platform = Platform{};
    make_ids();
    calls.clear();
    platform.failing_allocation = 1;
    EXPECT_FALSE(names());
    EXPECT_EQ(calls,
              "Class:java/lang/OutOfMemoryError "
              "throw:no_memory_for_the_list_of_log_modules ");
    EXPECT_TRUE(names());
    EXPECT_EQ(platform.live_blocks, 0);
}
