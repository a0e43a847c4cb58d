// Documents, against the reader that goes one character at a time.
//
// The first byte of the input chooses the size of the error buffer, the second the event at which
// the callback aborts; the rest is the document. Events, result and error text have to be the
// same, strings valid text, and the error text terminated within its buffer.

#include "support/plain_json.h"

#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2)
        return 0;
    const size_t errlen = 1 + data[0];
    const AbortRequest abort = {data[1], "stop"};
    std::vector<char> document(data + 2, data + size);  // a block of its own size
    document.push_back('\0');
    const JsonOutcome expected = plain_json(document.data(), errlen, abort);
    const JsonOutcome found = library_json(document.data(), errlen, abort);
    if (found == expected)
        return 0;
    std::fprintf(stderr, "expected: %s\n   found: %s\n", describe(expected).c_str(),
                 describe(found).c_str());
    __builtin_trap();
}
