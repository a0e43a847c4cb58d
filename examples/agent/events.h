// What the agent hears from the machine.
#pragma once

#include <jvmti.h>

// Prepares an environment for all events, of which none comes yet. Returns false when the machine
// refuses.
bool prepare_events(jvmtiEnv* machine);

// Asks for the events that somebody wants by the levels, patterns and files of this moment, and for
// no others: events cost time even when nothing is printed.
//
//   jni  null before the machine is up
void choose_events(jvmtiEnv* machine, JNIEnv* jni);
