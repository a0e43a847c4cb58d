// Validation of UTF-8 in both modes, against what decoding and encoding make of the text, and with
// the narrowest vectors.

#include "support/plain_utf8.h"

#include <cstdint>

extern "C" decltype(utf8_validate) narrow_utf8_validate;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(data, data + size);
    for (bool relax : {false, true})
        for (const auto validate : {utf8_validate, narrow_utf8_validate})
            if (validate(reinterpret_cast<const char*>(data), size, relax) !=
                plain_utf8_validate(text, relax))
                __builtin_trap();
    return 0;
}
