// The virtual machine's UTF-8, judged one character at a time by the value it encodes.
#ifndef TESTS_SUPPORT_PLAIN_UTF8_H
#define TESTS_SUPPORT_PLAIN_UTF8_H

#include <string_view>

inline bool plain_utf8_validate(std::string_view text, bool relax) {
    for (size_t i = 0; i < text.size();) {
        const auto byte = [&](size_t n) {
            return i + n < text.size() ? static_cast<unsigned char>(text[i + n]) : 0U;
        };
        const size_t length = byte(0) < 0x80 ? 1 : byte(0) < 0xE0 ? 2 : 3;
        if (byte(0) == 0 || (byte(0) >= 0x80 && byte(0) < 0xC0) || byte(0) >= 0xF0)
            return false;
        unsigned value = length == 1 ? byte(0) : byte(0) & (length == 2 ? 0x1F : 0x0F);
        for (size_t n = 1; n < length; n++) {
            if ((byte(n) & 0xC0) != 0x80)
                return false;
            value = value << 6 | (byte(n) & 0x3F);
        }
        const bool encoded_zero = length == 2 && value == 0;
        const unsigned least = length == 2 ? 0x80 : length == 3 ? 0x800 : 0;
        if (value < least && !relax && !encoded_zero)
            return false;
        i += length;
    }
    return true;
}

#endif
