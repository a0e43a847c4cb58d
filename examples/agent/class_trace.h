// A file of all classes that are loaded and that the patterns let through. Each record is, as
// Java's DataInputStream reads it: the time in nanoseconds since 1970 (readLong), the loading
// thread's id (readInt) and the name (readUTF).
#pragma once

#include <cstddef>

// Continues the trace in a new file; the empty path ends it. Returns 0, or -1 with a message.
int set_class_trace(const char* path, char* errbuf, size_t errlen);

bool tracing_classes();

// Does nothing without a file. From any thread.
void trace_class(const char* name);
