// Numbers and durations: what every parser makes of any text.

#include "support/number_texts.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (!parsers_agree(text.c_str()))
        __builtin_trap();
    return 0;
}
