// Which names the agent reports: a set of patterns for each kind. Without a set, all are reported.
#pragma once

#include "util/export/logging_types.h"

#include <cstddef>

enum Filter { CLASSES, METHODS, EXCEPTIONS, NUM_FILTERS };

// Replaces the patterns of a kind; the empty string removes them. Returns 0, or -1 with a message.
// From any thread.
int set_filter(Filter filter, const char* patterns, char* errbuf, size_t errlen);

// The level at which a name is reported: `usual` for a plain pattern, WARN for one with '+', and
// for all other names MSG_MAX, which is never printed. A method's name is that of its class, a dot
// and its own.
MsgLevel filter_level(Filter filter, MsgLevel usual, const char* type,
                      const char* method = nullptr);

// The most important of the levels that filter_level() can return for any name.
MsgLevel filter_first_level(Filter filter, MsgLevel usual);
