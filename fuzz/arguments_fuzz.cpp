// Declared arguments, parsed from any text.
//
// The first byte of the input is the delimiter, and the second chooses an allocation to fail. What
// becomes of the arguments must follow from the items of the text, and no memory may be lost.

#include "support/platform.h"
#include "util/export/arguments.h"

#include <algorithm>
#include <cstdint>

using std::string;

static void require(bool condition) {
    if (!condition)
        __builtin_trap();
}

struct Item {
    string name = "", value = "";
};

// The items of a text, one rule after the other.
static std::vector<Item> walk(const string& text, char delim) {
    std::vector<Item> items;
    const auto next = [&](size_t p, const string& characters) {
        return std::min(text.find_first_of(characters, p), text.size());
    };
    for (size_t p = 0; (p = text.find_first_not_of(delim, p)) != string::npos;) {
        size_t stop = next(p, {'=', delim});
        const string name = text.substr(p, stop - p);
        size_t value = stop + (text.c_str()[stop] == '=');
        const char quote = value > stop ? text.c_str()[value] : '\0';
        if (quote == '"' || quote == '\'') {
            stop = next(++value, {quote});
            while (stop < text.size() && text[stop - 1] == '\\')
                stop = next(stop + 1, {quote});
        } else {
            stop = next(value, {delim});
        }
        items.push_back({name, text.substr(value, stop - value)});
        p = next(stop, {delim});
    }
    return items;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2 || data[0] == '=' || data[0] == '\0')
        return 0;
    const string names[] = {"flag", "count", "", "a-long-name-of-more-than-16"};
    std::vector<int> values[std::size(names)];
    argInfo infos[std::size(names)], sink;
    int variables[std::size(names)] = {};
    const char *unknown_name = "", *unknown_value = "";
    argsParse pa = {};
    for (size_t i = 0; i < std::size(names); i++)
        argAddint(names[i].c_str(), &pa, &infos[i], &variables[i], 0, "", i > 0 ? nullptr : "f,c,",
                  i > 0 ? _multiple : 0);
    argAddFallback(&pa, &sink, &unknown_name, &unknown_value);
    const std::vector<char> text(data + 2, std::find(data + 2, data + size, '\0'));
    const char delim = static_cast<char>(data[0]);
    const size_t failing = platform.failing_allocation = data[1] % 8;
    const int result = argParse(&pa, text.data(), text.size(), delim);
    platform.failing_allocation = 0;

    string error = failing == 1 ? "Could not allocate memory" : "";
    Item unknown;
    for (const auto& item : walk({text.begin(), text.end()}, delim)) {
        if (!error.empty())
            break;
        const bool is_alias = item.name == "f" || item.name == "c";
        const size_t i = is_alias ? 0 : std::find(names, std::end(names), item.name) - names;
        ArgVal number;
        const char* reason = "";
        if (i == std::size(names))
            unknown = item;
        else if (i == 0 && !values[i].empty())
            error = "Duplicate parameter " + item.name;
        else if (argConvert2(TYPE_int, &number, item.value.c_str(), &reason))
            values[i].push_back(number.vint);
        else
            error = "Could not parse value for argument '" + item.name + "': " + item.value + " (" +
                    reason + ")";
    }
    require(result == (error.empty() ? 0 : -1));
    require(argError(&pa) == (failing == 2 ? "" : error.substr(0, 127)));
    require(unknown_name == unknown.name && unknown_value == unknown.value);
    for (size_t i = 0; i < std::size(names); i++) {
        require(variables[i] == (values[i].empty() ? 0 : values[i].back()));
        if (result != 0)
            continue;
        std::vector<int> read(values[i].size() + 1);
        argGetValues(&pa, &infos[i], read.data(), read.size());
        values[i].push_back(0);
        require(read == values[i]);
    }
    argFree(&pa);
    require(platform.live_blocks == 0);
    return 0;
}
