// The agent's options, at the start and at every attach.
#pragma once

#include <cstddef>

// Applies the options that are given, in the order of the table in options.cpp. Returns false with
// a message for one that is rejected; those before it stay applied.
bool apply_options(const char* text, char* errbuf, size_t errlen);
