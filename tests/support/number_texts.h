// What all number parsers must agree on for any text. Doubles and durations are what the platform's
// scanner reads; an integer has the same value in every notation.
#ifndef TESTS_SUPPORT_NUMBER_TEXTS_H
#define TESTS_SUPPORT_NUMBER_TEXTS_H

#include "util/export/strparse.h"

#include <strings.h>
#include <array>
#include <bit>
#include <cctype>
#include <cstdio>
#include <string>

// The bits of the value after a call, and the reason of a failure or "".
using Parsed = std::pair<u8, std::string>;

template <typename Value>
using Parser = bool(const char*, Value*, const char**);

template <typename Value>
u8 bits_of(Value value) {
    if constexpr (std::is_same_v<Value, double>)
        return std::bit_cast<u8>(value);
    else
        return (u8)value;
}

template <typename Value>
Parsed parse(Parser<Value>* parser, const std::string& text, Value value = {}) {
    const char* error = "";
    const bool ok = parser(text.c_str(), &value, &error);
    return {bits_of(value), ok == (*error == '\0') ? error : "result and reason differ"};
}

inline Parsed scan_double(const std::string& text, double value) {
    char suffix = '\0';
    u8 factor = 1;
    if (std::sscanf(text.c_str(), "%lf%c", &value, &suffix) <= 0)
        return {bits_of(value), "illegal floating point value"};
    const bool fits = suffix == '\0' || strSuffixToMultiplier(suffix, &factor);
    return {bits_of(value * static_cast<double>(factor)), fits ? "" : "illegal suffix"};
}

inline Parsed scan_duration(const std::string& text) {
    s8 number = 0;
    char unit[3] = "";
    const int items = std::sscanf(text.c_str(), "%ld%2s", &number, unit);
    if (items < 2)
        return {0, items <= 0 ? "syntax error" : number != 0 ? "unit required" : ""};
    const auto& [nanoseconds, error] = parse(strToSuffixNanoTime, std::string("1 ") + unit);
    return {static_cast<u8>(number) * nanoseconds, error};
}

inline std::array<Parsed, 6> integers(const std::string& text) {
    return {parse(strToSuffixULong, text), parse(strToSuffixSize, text),
            parse(strToSuffixUInt, text),  parse(strToSuffixLong, text),
            parse(strToSuffixInt, text),   parse(strToSuffixAddress, text)};
}

// True when all parsers read the text as the others and the scanner do. A leading blank bypasses
// the reader of plain numbers, a '+' before the digits leads to the platform's scanner: neither may
// change anything.
inline bool parsers_agree(const std::string& text) {
    const size_t start = strncasecmp(text.c_str(), "0x", 2) == 0 ? 2 : 0;
    const bool is_plain = text[0] >= '0' && text[0] <= '9';
    const bool starts_digits =
        start > 0 ? std::isxdigit(static_cast<unsigned char>(text[2])) != 0 : is_plain;
    const auto all = integers(text);
    const auto& [plain, size, as_uint, with_sign, as_int, address] = all;
    const auto& [number, error] = plain;
    return integers(" " + text) == all &&
           integers(std::string(text).insert(start, starts_digits ? "+" : "")) == all &&
           size == plain && as_uint == Parsed(static_cast<unsigned>(number), error) &&
           as_int == Parsed(static_cast<int>(with_sign.first), with_sign.second) &&
           (error == "negative value not allowed" || with_sign == plain) &&
           (error == "could not parse number" || address == plain) &&
           (!is_plain || parse(strToSuffixLong, "-" + text) == Parsed(-number, error)) &&
           parse(strToSuffixDouble, text, 77.0) == scan_double(text, 77) &&
           parse(strToSuffixNanoTime, text) == scan_duration(text);
}

#endif
