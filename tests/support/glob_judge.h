// Glob matching on a subject in pieces, by the library and by the platform's fnmatch().
#ifndef TESTS_SUPPORT_GLOB_JUDGE_H
#define TESTS_SUPPORT_GLOB_JUDGE_H

#include "util/export/globmatch.h"

#include <fnmatch.h>
#include <string>
#include <vector>

struct Subject {
    std::vector<std::string> strings;  // at least one
    std::string separators;            // one for each boundary
};

inline bool glob_matches(const std::string& glob, const Subject& subject) {
    std::vector<const char*> strs;
    for (const std::string& s : subject.strings)
        strs.push_back(s.c_str());
    return globMatchArray(glob.c_str(), strs.data(), static_cast<unsigned>(strs.size()),
                          strs.size() > 1 ? subject.separators.data() : nullptr);
}

// The text in one piece must match; an empty last string needs a star at the pattern's end, too.
// The time is exponential in the number of stars.
inline bool should_match(const std::string& glob, const Subject& subject) {
    std::string text = subject.strings[0], quoted;
    for (size_t i = 1; i < subject.strings.size(); i++)
        text += std::string(1, subject.separators[i - 1]).c_str() + subject.strings[i];
    for (const char c : glob)
        quoted += (c == '?' || c == '[' || c == '\\' ? "\\" : "") + std::string(1, c);
    const bool star_is_needed = subject.strings.size() > 1 && subject.strings.back().empty() &&
                                subject.separators.back() == '\0';
    return fnmatch(quoted.c_str(), text.c_str(), 0) == 0 &&
           (!star_is_needed || glob.ends_with('*'));
}

#endif
