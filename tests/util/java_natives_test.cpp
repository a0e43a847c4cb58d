// What tests/java cannot provoke of the natives for Java: failures of the virtual machine, for
// which there is a stand-in here.

#include "osal/export/osal_timing.h"
#include "support/platform.h"
#include "support/stand_in_jni.h"
#include "support/test_logger.h"

extern "C" {
void Java_veltra_kestrum_log_NativeLogModule_initIDs(JNIEnv*, jclass);
jobject Java_veltra_kestrum_log_NativeLogModule_getModule0(JNIEnv*, jobject, jstring);
jobjectArray Java_veltra_kestrum_log_NativeLogModule_getModuleNames0(JNIEnv*, jclass);
void Java_veltra_kestrum_log_NativeLogModule_output(JNIEnv*, jclass, jlong, jint, jstring);
jlong Java_veltra_kestrum_os_Timing_init(JNIEnv*, jclass);
}

using std::string;
using Texts = std::vector<string>;

static const char* const UNFILLED = "-";

static Texts texts(jobject array) {
    Texts all;
    for (const StandInObject* element : StandInJni::of(array)->elements)
        all.push_back(element != nullptr ? element->text : UNFILLED);
    return all;
}

struct JavaNatives : testing::Test {
    static inline StandInJni jni;  // the library keeps global references to its objects
    static inline const jclass clazz = static_cast<jclass>(static_cast<jobject>(jni.object("nlm")));
    static inline logger* const log =
        make_logger({.modules = {{"mill", "grinder"}, {"Zoo"}, {.name = "util", .is_linked = true}},
                     .obsoletes = {{"old", "mill", 0, MSG_INFO, OBSOLETE_WARN}}});

    void SetUp() override {
        platform = Platform{};
        jni.return_to_java();
        init_ids();
        jni.return_to_java();
    }
    // Null when an exception is pending.
    static jobject init_ids() {
        Java_veltra_kestrum_log_NativeLogModule_initIDs(&jni, clazz);
        return jni.pending.empty() ? clazz : nullptr;
    }
    static jobject module(const char* name) {
        return Java_veltra_kestrum_log_NativeLogModule_getModule0(
            &jni, nullptr, name != nullptr ? string_of(name) : nullptr);
    }
    static jobjectArray names() {
        return Java_veltra_kestrum_log_NativeLogModule_getModuleNames0(&jni, clazz);
    }
    static jobject output(const char* text) {
        Java_veltra_kestrum_log_NativeLogModule_output(
            &jni, clazz, reinterpret_cast<intptr_t>(&log->loggers[0]), MSG_TRACE,
            text != nullptr ? string_of(text) : nullptr);
        return jni.pending.empty() ? clazz : nullptr;
    }
    static jstring string_of(const char* text) {
        return static_cast<jstring>(static_cast<jobject>(jni.object(text)));
    }
};

struct FailingCase {
    const char* call;
    jobject (*make)();
    size_t allocations;
    string outcome;  // the exception when all of them succeed
};

const FailingCase FAILING_CASES[] = {
    {"a module", [] { return JavaNatives::module("mill"); }, 7, ""},
    {"no module", [] { return JavaNatives::module("ill"); }, 2,
     "java/lang/IllegalArgumentException: no such logmodule"},
    {"a retired one", [] { return JavaNatives::module("old"); }, 2,
     "java/lang/IllegalArgumentException: no such logmodule"},
    {"no name", [] { return JavaNatives::module(nullptr); }, 1, "java/lang/NullPointerException: "},
    {"text", [] { return JavaNatives::output(""); }, 1, ""},
    {"no text", [] { return JavaNatives::output(nullptr); }, 1, "java/lang/NullPointerException: "},
    {"ids", [] { return JavaNatives::init_ids(); }, 4, ""},
};

// The n-th allocation fails; the one after the last is never asked for.
TEST_F(JavaNatives, ReturnAtOnceWhenAnAllocationFails) {
    for (const FailingCase& c : FAILING_CASES)
        for (size_t n = 1; n <= c.allocations + 1; n++) {
            SCOPED_TRACE(c.call + std::to_string(n));
            const bool fails = n <= c.allocations;
            SetUp();
            jni.failing_allocation = n;
            EXPECT_EQ(c.make() == nullptr, fails || c.outcome != "");
            EXPECT_EQ(jni.pending, fails ? "java/lang/OutOfMemoryError: stand-in" : c.outcome);
            EXPECT_EQ(jni.failing_allocation, fails ? 0U : 1U);
            EXPECT_EQ(jni.borrowed_texts, 0);
        }
}

TEST_F(JavaNatives, LeaveTheRestOfTheNamesNullWhenOneCannotBeMade) {
    const Texts all = texts(names());
    for (size_t filled = 0; filled < all.size(); filled++) {
        Texts expected(all.size(), UNFILLED);
        std::copy_n(all.begin(), filled, expected.begin());
        jni.return_to_java();
        jni.failing_allocation = 2 + filled;
        EXPECT_EQ(texts(names()), expected);
        EXPECT_NE(jni.pending, "");
    }
    jni.return_to_java();
    jni.failing_allocation = 1;
    EXPECT_EQ(names(), nullptr);
    make_logger({{{"registered"}}});  // the lock is free again
}

TEST_F(JavaNatives, ListManyModulesWithFewReferencesAndFailWithoutMemory) {
    const size_t before = texts(names()).size();
    make_logger({.modules = std::vector<TestModule>(300, {"many"})});
    jni.return_to_java();
    EXPECT_EQ(texts(names()).size(), before + 300);
    EXPECT_TRUE(jni.local_refs == 1 && jni.most_local_refs == 2);
    platform.failing_allocation = 1;
    EXPECT_EQ(names(), nullptr);
    EXPECT_EQ(jni.pending, "java/lang/OutOfMemoryError: no memory for the list of log modules");
    EXPECT_EQ(platform.live_blocks, 0);
}

TEST_F(JavaNatives, RegisterTheCounterAndTellItsFrequencyOrZero) {
    EXPECT_EQ(Java_veltra_kestrum_os_Timing_init(&jni, clazz),
              static_cast<jlong>(timingGetCounterFreq()));
    ASSERT_EQ(jni.registered.size(), 1U);
    EXPECT_STREQ(jni.registered[0].name, "counterTime");
    EXPECT_STREQ(jni.registered[0].signature, "()J");
    jni.registration_result = JNI_ERR;
    EXPECT_EQ(Java_veltra_kestrum_os_Timing_init(&jni, clazz), 0);
}
