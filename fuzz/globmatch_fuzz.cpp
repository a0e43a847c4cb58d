// A pattern against a subject in pieces, and a list of patterns split into a set, both compared
// with the plain matcher.
//
// The input's lines are the pattern (or list), the first string, and then for each further string
// its separator, one byte, and the string. The plain matcher is asked only where it ends soon.

#include "support/plain_glob.h"

#include <algorithm>
#include <cstdint>

static void require(bool condition) {
    if (!condition)
        __builtin_trap();
}

static std::vector<std::string> lines_of(const uint8_t* data, size_t size) {
    std::vector<std::string> lines(2);
    size_t line = 0;
    for (size_t i = 0; i < size; i++) {
        if (data[i] != '\n')
            lines[line] += static_cast<char>(data[i]);
        else if (++line == lines.size())
            lines.emplace_back();
    }
    return lines;
}

static std::string until_zero(const std::string& text) {
    return text.c_str();
}

// Makes `subject` out of the lines after the pattern; pieces end at a zero byte, as C strings do.
static PlainSubject make_subject(const std::vector<std::string>& lines) {
    PlainSubject subject = {{until_zero(lines[1])}, ""};
    for (size_t i = 2; i < lines.size(); i++) {
        subject.separators += lines[i].empty() ? '\0' : lines[i][0];
        subject.strings.push_back(until_zero(lines[i].empty() ? "" : lines[i].substr(1)));
    }
    return subject;
}

static bool ends_soon(const std::string& text, const PlainSubject& subject) {
    size_t length = subject.strings.size();
    for (const std::string& s : subject.strings)
        length += s.size();
    return std::ranges::count(text, '*') <= 4 && length <= 60;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::vector<std::string> lines = lines_of(data, size);
    const std::string source = until_zero(lines[0]);
    const PlainSubject subject = make_subject(lines);
    std::vector<const char*> strs;
    for (const std::string& s : subject.strings)
        strs.push_back(s.c_str());
    const unsigned count = strs.size();
    const char* separators = subject.separators.data();
    const bool compare = ends_soon(source, subject);

    const bool matches = globMatchArray(source.c_str(), strs.data(), count, separators);
    require(!compare || matches == plain_glob(source.c_str(), subject));
    if (count == 1)
        require(globMatch(source.c_str(), strs[0]) == matches);

    patternset set;
    require(patternSetCreate(&set, source.c_str()) == 0);
    const auto expected = plain_patterns(source);
    require(set.num_patterns == expected.size());
    MatchType first = NOMATCH;
    for (size_t i = expected.size(); i-- > 0;) {
        require(set.patterns[i].type == expected[i].first);
        require(set.patterns[i].str == expected[i].second);
        if (compare && plain_glob(expected[i].second.c_str(), subject))
            first = expected[i].first;
    }
    const MatchType type = patternSetMatchArray(&set, strs.data(), count, separators);
    require(!compare || type == first);
    patternSetFree(&set);
    return 0;
}
