// Which names the agent tells of: a set of patterns for each kind. Without one, all are told.
#pragma once

#include "util/export/logging_types.h"

#include <cstddef>

enum Filter { CLASSES, METHODS, EXCEPTIONS, NUM_FILTERS };

// Replaces the patterns of a kind; the empty string takes them away. Returns 0, or -1 with a
// message. From any thread.
int set_filter(Filter filter, const char* patterns, char* errbuf, size_t errlen);

// The level at which a name is told: `usual` for a plain pattern, WARN for one with '+', and for
// all other names MSG_MAX, which is never printed. A method's name is that of its class, a dot and
// its own.
MsgLevel filter_level(Filter filter, MsgLevel usual, const char* type,
                      const char* method = nullptr);

// The first of the levels that filter_level() can give any name.
MsgLevel filter_first_level(Filter filter, MsgLevel usual);
