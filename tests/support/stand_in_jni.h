// A stand-in for a Java virtual machine: the table of JNI functions that natives call, over plain
// objects. Each allocation can be made to fail, which leaves an exception pending as it does in a
// real one; a call that JNI forbids in that state is a failure of the running test.
#ifndef TESTS_SUPPORT_STAND_IN_JNI_H
#define TESTS_SUPPORT_STAND_IN_JNI_H

#include <gtest/gtest.h>
#include <jni.h>
#include <algorithm>
#include <cstdarg>
#include <deque>
#include <string>
#include <vector>

struct StandInObject : _jobject {
    std::string text;  // of a string or class; the exception's class and message
    std::vector<StandInObject*> elements = {};
};

class StandInJni : public JNIEnv_ {
  public:
    size_t failing_allocation = 0;  // the n-th from now on, counted from 1; 0 for none
    std::string pending;            // the exception, as "class: message"
    long local_refs = 0;            // live ones
    long most_local_refs = 0;
    long borrowed_texts = 0;  // not released yet
    std::vector<JNINativeMethod> registered;
    jint registration_result = 0;

    StandInJni() : JNIEnv_{&table()} {}

    // Forgets the exception and the references, as the return to Java does, and what is to fail.
    void return_to_java() {
        pending.clear();
        failing_allocation = 0;
        local_refs = most_local_refs = 0;
    }
    StandInObject* object(std::string text) {
        objects_.push_back({{}, std::move(text)});
        return &objects_.back();
    }
    static StandInObject* of(jobject object) {
        return static_cast<StandInObject*>(object);
    }

  private:
    std::deque<StandInObject> objects_;

    static StandInJni& self(JNIEnv* env) {
        return *static_cast<StandInJni*>(env);
    }
    // The stand-in, for a call that is forbidden while an exception is pending.
    static StandInJni& careful(JNIEnv* env) {
        EXPECT_EQ(self(env).pending, "");
        return self(env);
    }
    bool fails() {
        if (failing_allocation == 0 || --failing_allocation > 0)
            return false;
        pending = "java/lang/OutOfMemoryError: stand-in";
        return true;
    }
    // A new local reference; null when it is this allocation's turn to fail.
    template <typename Reference>
    Reference allocate(std::string text) {
        if (fails())
            return nullptr;
        most_local_refs = std::max(most_local_refs, ++local_refs);
        return reinterpret_cast<Reference>(static_cast<jobject>(object(std::move(text))));
    }

    static const JNINativeInterface_& table() {
        static JNINativeInterface_ functions = {};
        functions.FindClass = [](JNIEnv* env, const char* name) {
            return careful(env).allocate<jclass>(name);
        };
        functions.NewGlobalRef = [](JNIEnv* env, jobject object) {
            return careful(env).fails() ? nullptr : object;
        };
        functions.GetMethodID = [](JNIEnv* env, jclass, const char*, const char*) {
            return careful(env).fails() ? nullptr : reinterpret_cast<jmethodID>(env);
        };
        functions.NewStringUTF = [](JNIEnv* env, const char* text) {
            return careful(env).allocate<jstring>(text);
        };
        functions.NewObjectArray = [](JNIEnv* env, jsize count, jclass clazz, jobject initial) {
            EXPECT_EQ(of(clazz)->text, "java/lang/String");
            auto array = careful(env).allocate<jobjectArray>("array");
            if (array != nullptr)
                of(array)->elements.assign(count, of(initial));
            return array;
        };
        functions.SetObjectArrayElement = [](JNIEnv* env, jobjectArray array, jsize i, jobject e) {
            careful(env);
            of(array)->elements.at(i) = of(e);
        };
        functions.DeleteLocalRef = [](JNIEnv* env, jobject) { self(env).local_refs--; };
        functions.NewDirectByteBuffer = [](JNIEnv* env, void*, jlong) {
            return careful(env).allocate<jobject>("buffer");
        };
        functions.GetStringUTFChars = [](JNIEnv* env, jstring text, jboolean*) {
            StandInJni& jni = careful(env);
            const char* const chars = jni.fails() ? nullptr : of(text)->text.c_str();
            jni.borrowed_texts += chars != nullptr;
            return chars;
        };
        functions.ReleaseStringUTFChars = [](JNIEnv* env, jstring text, const char* chars) {
            EXPECT_EQ(chars, of(text)->text.c_str());
            self(env).borrowed_texts--;
        };
        functions.ThrowNew = [](JNIEnv* env, jclass clazz, const char* message) {
            careful(env).pending = of(clazz)->text + ": " + message;
            return 0;
        };
        functions.NewObjectV = [](JNIEnv* env, jclass clazz, jmethodID, va_list) {
            return careful(env).allocate<jobject>(of(clazz)->text);
        };
        functions.RegisterNatives = [](JNIEnv* env, jclass, const JNINativeMethod* all,
                                       jint count) {
            careful(env).registered.assign(all, all + count);
            return self(env).registration_result;
        };
        return functions;
    }
};

#endif
