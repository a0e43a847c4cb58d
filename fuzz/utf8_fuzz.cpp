// Validation of UTF-8 in both modes, against the check that goes one character at a time.

#include "support/plain_utf8.h"
#include "util/export/utf8.h"

#include <cstdint>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::vector<char> text(data, data + size);  // a block of its own size
    for (bool relax : {false, true})
        if (utf8_validate(text.data(), text.size(), relax) !=
            plain_utf8_validate({text.data(), text.size()}, relax))
            __builtin_trap();
    return 0;
}
