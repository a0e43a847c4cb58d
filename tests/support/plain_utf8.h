// The virtual machine's UTF-8, checked by decoding: encoding valid text gives the same bytes.
#ifndef TESTS_SUPPORT_PLAIN_UTF8_H
#define TESTS_SUPPORT_PLAIN_UTF8_H

#include "util/export/utf8.h"

#include <string>

// An overlong sequence differs, because it is encoded in fewer bytes.
inline bool plain_utf8_validate(const std::string& text, bool relax) {
    for (const char* p = text.c_str(); p < text.c_str() + text.size();) {
        const char* const begin = p;
        const wchar_t c = next_utf2wchar(&p);
        char bytes[3];
        const std::string decoded(begin, p), encoded(bytes, wchar2utf8(bytes, c));
        if (decoded != encoded && !(relax && decoded.size() > encoded.size()))
            return false;
    }
    return true;
}

#endif
