// Option strings and declared arguments as their rules are written, on strings of the C++ library.
#ifndef TESTS_SUPPORT_PLAIN_ARGUMENTS_H
#define TESTS_SUPPORT_PLAIN_ARGUMENTS_H

#include "support/plain_strparse.h"
#include "support/platform.h"
#include "util/export/arguments.h"

#include <deque>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

using Items = std::vector<std::pair<std::string, std::string>>;

// The items of a text, one rule after the other, with a search of its own for each.
inline Items plain_walk(const std::string& text, char delim) {
    Items items;
    const auto next = [&](size_t p, char c) { return std::min(text.find(c, p), text.size()); };
    for (size_t p = 0; (p = text.find_first_not_of(delim, p)) != std::string::npos;) {
        const size_t equals = next(p, '=');
        size_t stop = next(p, delim);
        if (equals >= stop) {
            items.emplace_back(text.substr(p, stop - p), "");
        } else {
            size_t value = equals + 1;
            if (const char quote = text.c_str()[value]; quote == '"' || quote == '\'') {
                stop = next(++value, quote);
                while (stop < text.size() && text[stop - 1] == '\\')
                    stop = next(stop + 1, quote);
            }
            items.emplace_back(text.substr(p, equals - p), text.substr(value, stop - value));
        }
        p = next(stop, delim);
    }
    return items;
}

// An argument, what became of it, and the library's side of both.
struct DeclaredArgument {
    const char* name;
    ArgType type;
    const char* aliases = nullptr;
    unsigned flags = 0;
    bool is_sink = false;

    std::string value = {};  // the variable's bytes; of a string, its characters
    std::string pos = {};    // of a catch-all, the name of the unknown item
    unsigned handled = 0;

    argInfo info = {};
    ArgVal variable = {};
    const char* unknown = "";
};

// A deque, because the library keeps pointers to its elements.
using Declarations = std::deque<DeclaredArgument>;

inline size_t width_of(ArgType type) {
    return type == TYPE_bool ? 1 : type == TYPE_int ? 4 : 8;
}

inline std::string bytes_of(const void* value, ArgType type) {
    if (type != TYPE_pcchar)
        return {static_cast<const char*>(value), width_of(type)};
    const char* text;
    std::memcpy(&text, value, sizeof text);
    return text != nullptr ? text : "(null)";
}

// The bytes of the value that a text stands for. Returns the parser's message, or null.
inline const char* plain_convert(ArgType type, const std::string& text, std::string* bytes) {
    const auto store = [&](const auto& parsed) {
        if (parsed.error == nullptr)
            *bytes = bytes_of(&parsed.value, type);
        return parsed.error;
    };
    const char* const s = text.c_str();
    const auto is = [&](const char* word) { return strcasecmp(s, word) == 0; };
    switch (type) {
        case TYPE_bool:
            if (is("") || is("1") || is("true") || is("on"))
                return store(Parsed<bool>{true});
            if (is("0") || is("false") || is("off"))
                return store(Parsed<bool>{false});
            return "illegal boolean value";
        case TYPE_int:
        case TYPE_s8: return store(plain_number(s, false, true));
        case TYPE_double: return store(plain_double(s, 0));
        case TYPE_size_t:
        case TYPE_u8: return store(plain_number(s, false, false));
        case TYPE_nanotime: return store(plain_nanotime(s));
        case TYPE_pcchar: return store(Parsed<const char*>{s});
        case TYPE_pvoid: return store(plain_number(s, true, false));
    }
    return "no such type";
}

inline bool plain_match(const DeclaredArgument& arg, const std::string& name) {
    bool found = arg.name == name;
    std::istringstream aliases(arg.aliases != nullptr ? arg.aliases : "");
    for (std::string alias; std::getline(aliases, alias, ',');)
        found |= alias == name;
    return found;
}

// Parses a text into the model's side of the declarations. Returns the message, or "".
inline std::string plain_parse(Declarations& args, const std::string& text, char delim) {
    const auto message = [](const std::string& whole) { return whole.substr(0, 127); };
    for (const auto& [name, value] : plain_walk(text, delim)) {
        DeclaredArgument *taker = nullptr, *sink = nullptr;
        for (DeclaredArgument& arg : args)
            if (arg.is_sink)
                sink = &arg;
            else if (taker == nullptr && plain_match(arg, name))
                taker = &arg;
        if (taker == nullptr && sink == nullptr)
            return message("Unknown parameter " + name);
        if (taker == nullptr) {
            sink->pos = name;
            sink->value = value;
            continue;
        }
        if (taker->handled != 0 && (taker->flags & _multiple) == 0)
            return message("Duplicate parameter " + name);
        const char* const error = plain_convert(taker->type, value, &taker->value);
        taker->pos = name;
        taker->handled++;
        if (error != nullptr)
            return message("Could not parse value for argument '" + name + "': " + value + " (" +
                           error + ")");
    }
    for (const DeclaredArgument& arg : args)
        if ((arg.flags & _required) != 0 && arg.handled == 0)
            return message(std::string("Required parameter ") + arg.name + " missing");
    return "";
}

// All types, names that are aliases of others, lists of aliases with and without a last comma.
inline Declarations every_type() {
    return {
        {"flag", TYPE_bool, "f,no,"},
        {"count", TYPE_int, "f,c", _multiple},
        {"", TYPE_s8, nullptr, _multiple},
        {"ratio", TYPE_double, "", _multiple},
        {"size", TYPE_size_t, "s,,sz,"},
        {"mask", TYPE_u8, ",", _multiple},
        {"a-long-name-of-more-than-16", TYPE_nanotime, "a-long-name-or-more-than-16,t", _multiple},
        {"*", TYPE_pcchar, nullptr, 0, true},
        {"text", TYPE_pcchar, "c,s,", _multiple},
        {"count", TYPE_pvoid, "address,no", _multiple},
    };
}

// Declares an argument to the library, with a default of bytes that are 1.
inline void declare(argsParse* pa, DeclaredArgument* arg) {
    const auto add = [&](auto function, auto* variable, auto initial) {
        if constexpr (!std::is_same_v<decltype(initial), pcchar>)
            std::memset(&initial, 1, sizeof initial);
        *variable = function(arg->name, pa, &arg->info, variable, initial, "for the test",
                             arg->aliases, arg->flags);
    };
    ArgVal& v = arg->variable;
    switch (arg->type) {
        case TYPE_bool: add(argAddbool, &v.vbool, false); break;
        case TYPE_int: add(argAddint, &v.vint, 0); break;
        case TYPE_s8: add(argAdds8, &v.vs8, s8{}); break;
        case TYPE_double: add(argAdddouble, &v.vdouble, 0.0); break;
        case TYPE_size_t: add(argAddsize_t, &v.vsize_t, size_t{}); break;
        case TYPE_u8: add(argAddu8, &v.vu8, u8{}); break;
        case TYPE_nanotime: add(argAddnanotime, &v.vnanotime, nanotime{}); break;
        case TYPE_pvoid: add(argAddpvoid, &v.vpvoid, pvoid{}); break;
        case TYPE_pcchar:
            if (arg->is_sink)
                v.vpcchar = argAddFallback(pa, &arg->info, &arg->unknown, &v.vpcchar);
            else
                add(argAddpcchar, &v.vpcchar, pcchar{"default"});
            break;
    }
    arg->value = bytes_of(&v, arg->type);
}

// What argGetValues() stores, element by element, and how many failed checks it reports.
struct PlainValues {
    std::vector<std::string> elements;
    size_t reports = 0;
};

inline PlainValues plain_values(const DeclaredArgument& arg, const std::string& text, char delim,
                                size_t count) {
    const ArgVal zero = {};
    PlainValues values = {{count, bytes_of(&zero, arg.type)}};
    size_t next = 0;
    for (const auto& [name, value] : plain_walk(text, delim))
        if (plain_match(arg, name) && next < count && next < arg.handled)
            values.reports += plain_convert(arg.type, value, &values.elements[next++]) != nullptr;
    return values;
}

inline PlainValues read_values(argsParse* pa, DeclaredArgument* arg, size_t count) {
    std::vector<char> block((count + 1) * sizeof(ArgVal), '#');
    platform.reports.clear();
    argGetValues(pa, &arg->info, block.data(), count);
    PlainValues values = {{}, platform.reports.size()};
    for (size_t i = 0; i < count; i++)
        values.elements.push_back(bytes_of(&block[i * width_of(arg->type)], arg->type));
    if (block[count * width_of(arg->type)] != '#')
        values.elements.push_back("written past the end");
    return values;
}

// Declares and parses on both sides, and compares what became of each argument. Returns what
// differs, or "".
inline std::string first_difference(Declarations& args, const std::string& text, char delim) {
    argsParse pa = {};
    for (DeclaredArgument& arg : args)
        declare(&pa, &arg);
    const std::vector<char> exact(text.begin(), text.end());
    const int result = argParse(&pa, exact.data(), exact.size(), delim);
    const std::string expected = plain_parse(args, text, delim);
    std::string difference;
    if (argError(&pa) != expected || result != (expected.empty() ? 0 : -1))
        difference = std::string("message: ") + argError(&pa);
    for (DeclaredArgument& arg : args) {
        const char* const pos = arg.is_sink ? arg.unknown : arg.info.pos;
        if (bytes_of(&arg.variable, arg.type) != arg.value || arg.info.handled != arg.handled ||
            (pos != nullptr ? pos : "") != arg.pos)
            difference = arg.name;
        const size_t count = arg.handled + 1;
        if (result != 0 || arg.is_sink)
            continue;
        const PlainValues read = read_values(&pa, &arg, count);
        const PlainValues plain = plain_values(arg, text, delim, count);
        if (read.elements != plain.elements || read.reports != plain.reports)
            difference = std::string("values of ") + arg.name;
    }
    argFree(&pa);
    return difference;
}

#endif
