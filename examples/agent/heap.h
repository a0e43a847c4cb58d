// Tells after each collection how much of the heap is in use.
#pragma once

#include <jvmti.h>
#include <cstddef>

// Starts the thread that asks the machine, unless it runs. While the machine is up.
void watch_heap(jvmtiEnv* machine, JNIEnv* jni);

// Wakes that thread; may be called where the machine may not be asked.
void heap_collected();

// Ends it, before the machine ends.
void stop_watching_heap();

// More bytes in use are worth a warning; 0 for none, as at the start. From any thread.
void set_heap_limit(size_t bytes);
size_t heap_limit();
