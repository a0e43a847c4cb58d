// Names of classes, methods and threads, as the machine gives them.
#pragma once

#include <jvmti.h>
#include <cstring>

// A text that the machine allocates, freed at the end of the block.
//
//     MachineText name(machine);
//     machine->GetMethodName(method, name.place(), nullptr, nullptr);
class MachineText {
  public:
    explicit MachineText(jvmtiEnv* machine) : machine_(machine) {}
    MachineText(const MachineText&) = delete;
    MachineText& operator=(const MachineText&) = delete;
    ~MachineText() {
        machine_->Deallocate(reinterpret_cast<unsigned char*>(text_));
    }
    char** place() {
        return &text_;
    }
    // "?" when the machine gave none, as it does while it ends.
    const char* text() const {
        return text_ != nullptr ? text_ : "?";
    }

  protected:
    jvmtiEnv* const machine_;
    char* text_ = nullptr;
};

// The name of a class in dotted form: "java.util.Map$Entry". The machine gives
// "Ljava/util/Map$Entry;", in memory that we own until we free it, so it is changed in place.
class ClassName : public MachineText {
  public:
    ClassName(jvmtiEnv* machine, jclass type) : MachineText(machine) {
        if (machine->GetClassSignature(type, &text_, nullptr) != JVMTI_ERROR_NONE)
            return;
        const size_t length = std::strlen(text_) - std::strlen("L;");
        for (size_t i = 0; i < length; i++)
            text_[i] = text_[i + 1] == '/' ? '.' : text_[i + 1];
        text_[length] = '\0';
    }
};

// The name of a method, and that of its class.
class MethodName : public MachineText {
  public:
    MethodName(jvmtiEnv* machine, jmethodID method)
        : MachineText(machine), type_(machine, class_of(machine, method)) {
        machine->GetMethodName(method, &text_, nullptr, nullptr);
    }
    const char* type() const {
        return type_.text();
    }

  private:
    static jclass class_of(jvmtiEnv* machine, jmethodID method) {
        jclass type = nullptr;
        machine->GetMethodDeclaringClass(method, &type);
        return type;
    }
    const ClassName type_;
};
