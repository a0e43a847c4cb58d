// Prints after each collection how much of the heap is in use.
#pragma once

#include <jvmti.h>
#include <cstddef>

// Starts the thread that asks the machine, unless it runs already. Called while the machine is up.
void watch_heap(jvmtiEnv* machine, JNIEnv* jni);

// Wakes that thread; may be called where the agent may not call the machine.
void heap_collected();

// Ends that thread. Called before the machine ends.
void stop_watching_heap();

// More bytes in use give a warning; with 0, the initial value, none do. From any thread.
void set_heap_limit(size_t bytes);
size_t heap_limit();
