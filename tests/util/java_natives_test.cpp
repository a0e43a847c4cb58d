// The natives for Java in a virtual machine without memory, which tests/java cannot provoke. Here
// it is a table whose entries are all one function: it notes a letter for each call and returns its
// first argument. Strings and classes are plain texts.

#include "support/platform.h"
#include "support/test_logger.h"

#include <gtest/gtest.h>
#include <jni.h>
#include <bit>
#include <functional>
#include <map>
#include <utility>

#define NATIVE(name) Java_veltra_kestrum_log_NativeLogModule_##name

extern "C" {
void NATIVE(initIDs)(JNIEnv*, jclass);
jobject NATIVE(getModule0)(JNIEnv*, jobject, jstring);
jobjectArray NATIVE(getModuleNames0)(JNIEnv*, jclass);
void NATIVE(output)(JNIEnv*, jclass, jlong, jint, jstring);
jlong Java_veltra_kestrum_os_Timing_init(JNIEnv*, jclass);
}

using std::string;

#define PLACE(function) (offsetof(JNINativeInterface_, function) / sizeof(void*))

// Calls with a capital letter may fail.
static const std::map<size_t, char> LETTERS = {{PLACE(FindClass), 'C'},
                                               {PLACE(NewGlobalRef), 'G'},
                                               {PLACE(GetMethodID), 'M'},
                                               {PLACE(NewObjectV), 'O'},
                                               {PLACE(GetStringUTFChars), 'U'},
                                               {PLACE(NewStringUTF), 'S'},
                                               {PLACE(NewObjectArray), 'A'},
                                               {PLACE(NewDirectByteBuffer), 'B'},
                                               {PLACE(RegisterNatives), 'N'},
                                               {PLACE(ReleaseStringUTFChars), 'u'},
                                               {PLACE(SetObjectArrayElement), 'a'},
                                               {PLACE(DeleteLocalRef), 'd'},
                                               {PLACE(ThrowNew), 't'}};

static string calls, thrown;
static size_t failing_call;  // the n-th that may fail, counted from 1

template <size_t place>
static const char* call(JNIEnv*, const char* a, const char* b) {
    const auto found = LETTERS.find(place);
    calls += found != LETTERS.end() ? found->second : '?';
    if (place == PLACE(FindClass) || place == PLACE(ThrowNew))
        thrown = place == PLACE(FindClass) ? a : thrown + ": " + b;
    const bool fails = isupper(calls.back()) && strikes(failing_call);
    return fails != (place == PLACE(RegisterNatives)) ? nullptr : a;  // 0 when it registers
}

template <size_t... places>
static JNIEnv make_jni(std::index_sequence<places...>) {
    static void* table[] = {reinterpret_cast<void*>(call<places>)...};
    return {reinterpret_cast<JNINativeInterface_*>(table)};
}

static JNIEnv jni = make_jni(std::make_index_sequence<sizeof(JNINativeInterface_) / 8>());
static const char *const known = "mill", *const unknown = "none";
static const auto mill = std::bit_cast<jstring>(known), none = std::bit_cast<jstring>(unknown);
static const auto clazz = std::bit_cast<jclass>(known);
static logger* const mills = make_logger({.modules = {{known, "grinder"}}});

// The calls of each native, and the one that makes its result; '-' when it has none.
const std::tuple<std::function<bool()>, string, char> NATIVES[] = {
    {[] { return NATIVE(initIDs)(&jni, clazz), false; }, "GCGM", '-'},
    {[] { return NATIVE(getModule0)(&jni, {}, mill); }, "UuASadSadBBO", 'O'},
    {[] { return NATIVE(getModule0)(&jni, {}, none); }, "UuCt", '-'},
    {[] { return NATIVE(getModuleNames0)(&jni, clazz); }, "ASadSad", 'A'},  // with "util"
    {[] { return NATIVE(output)(&jni, clazz, (jlong)mills->loggers, 0, mill), false; }, "Uu", '-'},
    {[] { return Java_veltra_kestrum_os_Timing_init(&jni, clazz) != 0; }, "N", 'N'}};

// A call that fails leaves an exception pending: no other may follow.
TEST(JavaNatives, MakeNoFurtherCallWhenOneFails) {
    for (const auto& [native, expected, result] : NATIVES) {
        size_t end = expected.size();  // of the calls that are made; at first, none fails
        for (size_t n = 0; end > 0; n++) {
            failing_call = n;
            calls.clear();
            EXPECT_EQ(native(), expected.find(result) < end - (n > 0)) << expected << n;
            EXPECT_EQ(calls, expected.substr(0, end));
            end = expected.find_first_of("ABCGMNOSU", n > 0 ? end : 0) + 1;
        }
    }
}

// More modules than a listing has room for without the heap.
TEST(JavaNatives, ListManyModulesOrThrowAndGiveBackMemoryAndLocks) {
    make_logger({.modules = std::vector<TestModule>(300, {"many"})});
    platform = Platform{};
    platform.failing_allocation = 1;
    EXPECT_FALSE(NATIVE(getModuleNames0)(&jni, clazz));
    EXPECT_EQ(thrown, "java/lang/OutOfMemoryError: no memory for the list of log modules");
    failing_call = 9;
    EXPECT_TRUE(NATIVE(getModuleNames0)(&jni, clazz));
    EXPECT_EQ(platform.live_blocks, 0);
    make_logger({{{"registered"}}});
}
