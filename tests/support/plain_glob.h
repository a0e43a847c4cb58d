// Glob matching as it is described: every star tries every place, recursively. Takes time
// exponential in the number of stars.
#ifndef TESTS_SUPPORT_PLAIN_GLOB_H
#define TESTS_SUPPORT_PLAIN_GLOB_H

#include "util/export/globmatch.h"

#include <string>
#include <utility>
#include <vector>

struct PlainSubject {
    std::vector<std::string> strings;  // at least one
    std::string separators;            // one for each boundary
};

inline bool plain_glob(const char* p, const PlainSubject& subject, size_t string = 0,
                       size_t at = 0) {
    const auto is_last = [&] { return string + 1 == subject.strings.size(); };
    const auto at_end = [&] { return at == subject.strings[string].size(); };
    for (; *p != '\0';) {
        if (*p == '*') {
            while (*p == '*')
                p++;
            if (*p == '\0')
                return true;
            for (;;) {
                if (plain_glob(p, subject, string, at))
                    return true;
                if (!at_end()) {
                    at++;
                } else if (!is_last()) {
                    string++;
                    at = 0;
                } else {
                    return false;
                }
            }
        } else if (at_end()) {
            if (is_last())
                return false;
            const char separator = subject.separators[string];
            if (separator != '\0' && separator != *p++)
                return false;
            string++;
            at = 0;
        } else if (subject.strings[string][at++] != *p++) {
            return false;
        }
    }
    return is_last() && at_end();
}

// The patterns of a set's source, one character at a time.
inline std::vector<std::pair<MatchType, std::string>> plain_patterns(const std::string& source) {
    std::vector<std::string> pieces(source.empty() ? 0 : 1);
    bool in_gap = false;
    for (char c : source) {
        const bool is_split = c == ' ' || c == ',';
        if (is_split && !in_gap)
            pieces.emplace_back();
        else if (!is_split)
            pieces.back() += c;
        in_gap = is_split;
    }
    std::vector<std::pair<MatchType, std::string>> patterns;
    for (const std::string& piece : pieces) {
        const char prefix = piece.empty() ? '\0' : piece[0];
        const MatchType type = prefix == '+' ? FORCE : prefix == '-' ? REJECT : MATCH;
        patterns.emplace_back(type, type == MATCH ? piece : piece.substr(1));
    }
    return patterns;
}

#endif
