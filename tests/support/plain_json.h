// The JSON dialect read one character at a time, to compare the library's reader with.
#ifndef TESTS_SUPPORT_PLAIN_JSON_H
#define TESTS_SUPPORT_PLAIN_JSON_H

#include "util/export/json.h"

#include <cstdint>
#include <string>
#include <vector>

struct JsonEvent {
    JSONType type;
    std::string bytes;  // of a key or string
    uint64_t number;    // an integer, or the bits of a float
    bool operator==(const JsonEvent&) const = default;
};

struct JsonOutcome {
    int result;
    std::string error;
    std::vector<JsonEvent> events;
    bool operator==(const JsonOutcome&) const = default;
};

// What the callback does: at the event of this number, counted from 0, it aborts with this text.
struct AbortRequest {
    size_t at = SIZE_MAX;
    std::string text = {};
};

// What a parse of `document` with an error buffer of `errlen` bytes, at least 1, comes to.
JsonOutcome plain_json(const char* document, size_t errlen, const AbortRequest& abort = {});

// The same from jsonParse(). A string event that is not valid text, and an error text that is not
// terminated within its buffer or follows on success, end the program.
JsonOutcome library_json(const char* document, size_t errlen, const AbortRequest& abort = {});

// The outcome as one line: `{ } [ ]` for begin and end events, `k:` for keys, `s:` for strings,
// `i:` and `f:` for numbers, the literals, and at the end `! ` and the error text of a failure.
std::string describe(const JsonOutcome& outcome);

#endif
