// Declared arguments, parsed from any text. Their values must be those of the text's items, which a
// regular expression finds.

#include "util/export/arguments.h"

#include <algorithm>
#include <cstdint>
#include <regex>

using std::string;

static void require(bool condition) {
    if (!condition)
        __builtin_trap();
}

// An item's name, and its value in double quotes, in single ones, or without. A quote after a
// backslash does not end the value; without an end the value takes the rest.
static const std::regex ITEM(
    R"(,*(?=[^,])([^=,]*)(?:=(?:"((?:[^"]*\\")*[^"]*)|'((?:[^']*\\')*[^']*)|([^,]*)))?[^,]*)");

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // In a block of exactly its size. Regular expressions need much stack for long texts.
    const std::vector<char> text(data, std::find(data, data + std::min(size, size_t{2000}), '\0'));
    const string names[] = {"flag", "c", "", "a-long-name-of-more-than-16"};
    int variables[std::size(names)] = {}, expected[std::size(names)] = {};
    argInfo infos[std::size(names)], sink;
    const char *unknown_name = "", *unknown_value = "";
    argsParse pa = {};
    for (size_t i = 0; i < std::size(names); i++)
        argAddint(names[i].c_str(), &pa, &infos[i], &variables[i], 0, "", "f,c,",
                  i > 0 ? _multiple : 0);
    argAddFallback(&pa, &sink, &unknown_name, &unknown_value);
    const int result = argParse(&pa, text.data(), text.size(), ',');

    string error, last_name, last_value;
    int flags = 0;
    std::cregex_iterator item(text.data(), text.data() + text.size(), ITEM);
    for (; error.empty() && item != std::cregex_iterator(); ++item) {
        const string name = item->str(1), value = item->str(2) + item->str(3) + item->str(4);
        const bool is_flag = name == "f" || name == "c";  // an alias of all, so of the first
        const size_t i = is_flag ? 0 : std::find(names, std::end(names), name) - names;
        ArgPtr number = {.pint = &expected[i]};
        const char* reason = "";
        if (i == std::size(names)) {
            last_name = name;
            last_value = value;
        } else if (i == 0 && flags++ > 0) {
            error = "Duplicate parameter " + name;
        } else if (!argConvert(TYPE_int, &number, value.c_str(), &reason)) {
            error =
                "Could not parse value for argument '" + name + "': " + value + " (" + reason + ")";
        }
    }
    require(result == (error.empty() ? 0 : -1) && argError(&pa) == error.substr(0, 127));
    require(unknown_name == last_name && unknown_value == last_value);
    require(std::ranges::equal(variables, expected));
    argFree(&pa);
    return 0;
}
