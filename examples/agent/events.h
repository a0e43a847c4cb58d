// The events that the agent gets from the machine.
#pragma once

#include <jvmti.h>

// Prepares an environment for all events, but enables none yet. Returns false when the machine
// refuses.
bool prepare_events(jvmtiEnv* machine);

// Enables the events that the present levels, patterns and files need, and no others, because
// events cost time even when nothing is printed.
//
//   jni  null before the machine is up
void choose_events(jvmtiEnv* machine, JNIEnv* jni);
