// What tests/java cannot provoke of the natives for Java: failures of the virtual machine, for
// which there is a table of functions here. All of them are one, which notes the call and gives
// back its first argument; strings, classes and references are plain texts.

#include "osal/export/osal_timing.h"
#include "support/platform.h"
#include "support/test_logger.h"

#include <gtest/gtest.h>
#include <jni.h>
#include <algorithm>
#include <bit>
#include <map>
#include <utility>

#define LOG_NATIVE(name) Java_veltra_kestrum_log_NativeLogModule_##name

extern "C" {
void LOG_NATIVE(initIDs)(JNIEnv*, jclass);
jobject LOG_NATIVE(getModule0)(JNIEnv*, jobject, jstring);
jobjectArray LOG_NATIVE(getModuleNames0)(JNIEnv*, jclass);
void LOG_NATIVE(output)(JNIEnv*, jclass, jlong, jint, jstring);
jlong Java_veltra_kestrum_os_Timing_init(JNIEnv*, jclass);
}

using std::string;

static string calls;         // made so far, each with its blank
static size_t failing_call;  // the n-th that may fail, counted from 1

#define PLACE(function) (offsetof(JNINativeInterface_, function) / sizeof(void*))

// How a call is noted, in capitals when it may fail; its first argument follows a colon.
static const std::map<size_t, const char*> NOTES = {{PLACE(FindClass), "Class:"},
                                                    {PLACE(NewGlobalRef), "Global:"},
                                                    {PLACE(GetMethodID), "Method:"},
                                                    {PLACE(NewObjectV), "Object:"},
                                                    {PLACE(GetStringUTFChars), "Chars:"},
                                                    {PLACE(NewStringUTF), "String:"},
                                                    {PLACE(NewObjectArray), "Array"},
                                                    {PLACE(NewDirectByteBuffer), "Buffer"},
                                                    {PLACE(RegisterNatives), "Natives:"},
                                                    {PLACE(ReleaseStringUTFChars), "release:"},
                                                    {PLACE(SetObjectArrayElement), "set"},
                                                    {PLACE(DeleteLocalRef), "delete:"},
                                                    {PLACE(ThrowNew), "throw:"}};

template <size_t place>
static void* call(JNIEnv*, void* a, void* b) {
    const auto found = NOTES.find(place);
    string note = found != NOTES.end() ? found->second : "unexpected";
    if (note.back() == ':')
        note += static_cast<const char*>(place == PLACE(ThrowNew) ? b : a);
    std::replace(note.begin(), note.end(), ' ', '_');
    calls += note + " ";
    const bool fails = note[0] <= 'Z' && failing_call > 0 && --failing_call == 0;
    return fails != (place == PLACE(RegisterNatives)) ? nullptr : a;  // 0 when it registers
}

template <size_t... places>
static JNIEnv make_jni(std::index_sequence<places...>) {
    static void* table[] = {reinterpret_cast<void*>(call<places>)...};
    return {reinterpret_cast<JNINativeInterface_*>(table)};
}

static JNIEnv jni = make_jni(std::make_index_sequence<sizeof(JNINativeInterface_) / 8>());
static const char* const module_class = "Module";
static const auto clazz = std::bit_cast<jclass>(module_class);
// More modules than a listing has room for without memory.
static logger* const many = make_logger({.modules = std::vector<TestModule>(300, {"many"})});
static logger* const mills = make_logger(
    {.modules = {{"mill", "grinder"}}, .obsoletes = {{"old", "mill", 0, MSG_INFO, OBSOLETE_WARN}}});

static bool module(const char* name) {
    return LOG_NATIVE(getModule0)(&jni, nullptr, std::bit_cast<jstring>(name));
}

static bool names() {
    return LOG_NATIVE(getModuleNames0)(&jni, clazz);
}

static bool output(const char* text) {
    const auto java_text = std::bit_cast<jstring>(text);
    LOG_NATIVE(output)(&jni, clazz, (jlong)&mills->loggers[0], MSG_TRACE, java_text);
    return true;
}

static string calls_for_names() {
    string all = "Array ";
    for (size_t i = 0; i < 302; i++) {
        const string name = i < 300 ? "many" : i == 300 ? "mill" : "util";
        all += "String:" + name + " set delete:" + name + " ";
    }
    return all;
}

struct NativeCase {
    bool (*native)();
    string calls;
    string result = "";  // the call that makes it; "" when there is none
};

const NativeCase NATIVE_CASES[] = {
    {[] { return LOG_NATIVE(initIDs)(&jni, clazz), true; },
     "Global:Module Class:java/lang/String Global:java/lang/String Method:Module "},
    {[] { return module("mill"); },
     "Chars:mill release:mill Array String:mill set delete:mill String:grinder set delete:grinder "
     "Buffer Buffer Object:Module ",
     "Object"},
    {[] { return module("old"); },
     "Chars:old release:old Class:java/lang/IllegalArgumentException throw:no_such_logmodule ",
     "Object"},
    {[] { return module(nullptr); }, "Class:java/lang/NullPointerException throw: ", "Object"},
    {[] { return output(""); }, "Chars: release: "},
    {[] { return output(nullptr); }, "Class:java/lang/NullPointerException throw: "},
    {names, calls_for_names(), "Array"},
    {[] {
         return Java_veltra_kestrum_os_Timing_init(&jni, clazz) == (jlong)timingGetCounterFreq();
     },
     "Natives:Module ", "Natives"},
};

// The n-th call that may fail does, which leaves an exception pending: no other call follows. After
// that, the locks are free again.
TEST(JavaNatives, MakeNoFurtherCallWhenOneFails) {
    NATIVE_CASES[0].native();  // makes the ids
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
    NATIVE_CASES[0].native();  // makes the ids
    calls.clear();
    platform.failing_allocation = 1;
    EXPECT_FALSE(names());
    EXPECT_EQ(calls,
              "Class:java/lang/OutOfMemoryError "
              "throw:no_memory_for_the_list_of_log_modules ");
    EXPECT_TRUE(names());
    EXPECT_EQ(platform.live_blocks, 0);
}
