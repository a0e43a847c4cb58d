// The host's configuration file: levels and log files of modules, by name.
#pragma once

#include <cstddef>

// Reads and applies the file, as in
//
//     { gc: { level: debug, file: gc.log }, heap: { level: info } }
//
// Settings take effect in their order. Returns 0, or -1 with a message when the file cannot be
// read, is no such document, or a setting is refused; those before it stay.
int apply_config(const char* path, char* errbuf, size_t errlen);
