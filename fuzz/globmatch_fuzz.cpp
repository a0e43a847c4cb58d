// A pattern against a subject in pieces, compared with fnmatch(), and a list of patterns split into
// a set.
//
// The input's lines are the pattern (or list), the first string, and then for each further string
// its separator, one byte, and the string. They end at a zero byte, as C strings do.

#include "support/glob_judge.h"

#include <algorithm>
#include <cstdint>
#include <sstream>

static void require(bool condition) {
    if (!condition)
        __builtin_trap();
}

// The list with one comma for each gap, made of the set's patterns.
static std::string list_of(const patternset& set) {
    std::string list;
    for (unsigned i = 0; i < set.num_patterns; i++) {
        const auto& [text, type] = set.patterns[i];
        require(type != NOMATCH && (type != MATCH || (*text != '+' && *text != '-')));
        list += std::string(i > 0, ',') + (type == FORCE ? "+" : type == REJECT ? "-" : "") + text;
    }
    return list;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::istringstream input(std::string(data, data + size));
    std::string list, line, commas;
    std::getline(input, list);
    std::getline(input, line);
    list = list.c_str();
    Subject subject = {{line.c_str()}, ""};
    while (std::getline(input, line)) {
        subject.separators += line.c_str()[0];
        subject.strings.push_back(line.empty() ? "" : line.c_str() + 1);
    }
    if (std::ranges::count(list, '*') <= 4 && size <= 80)  // takes little time
        require(glob_matches(list, subject) == should_match(list, subject));

    patternset set;
    require(patternSetCreate(&set, list.c_str()) == 0);
    for (const char c : list)
        if ((c != ' ' && c != ',') || commas.empty() || commas.back() != ',')
            commas += c == ' ' ? ',' : c;
    require(list_of(set) == commas);
    patternSetFree(&set);
    return 0;
}
