// What the number parsers must agree on about any text. Doubles and durations are what the
// platform's scanner reads; integers have the same value in whatever way they are written.
#ifndef TESTS_SUPPORT_NUMBER_TEXTS_H
#define TESTS_SUPPORT_NUMBER_TEXTS_H

#include "util/export/strparse.h"

#include <strings.h>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <string>

// The value after a call, and the reason of a failure or "".
template <typename Value>
struct Parsed {
    Value value;
    std::string error = "";
    bool operator==(const Parsed& other) const {
        return std::memcmp(&value, &other.value, sizeof value) == 0 && error == other.error;
    }
};

template <typename Value>
using Parser = bool(const char*, Value*, const char**);

template <typename Value>
Parsed<Value> parse(Parser<Value>* parser, const std::string& text, Value value = {}) {
    const char* error = "";
    const bool ok = parser(text.c_str(), &value, &error);
    return {value, ok == (*error == '\0') ? error : "result and reason differ"};
}

inline Parsed<double> scan_double(const char* text, double value) {
    char suffix = '\0';
    u8 factor = 1;
    if (std::sscanf(text, "%lf%c", &value, &suffix) <= 0)
        return {value, "illegal floating point value"};
    const bool fits = suffix == '\0' || strSuffixToMultiplier(suffix, &factor);
    return {value * static_cast<double>(factor), fits ? "" : "illegal suffix"};
}

inline Parsed<nanotime> scan_duration(const char* text) {
    s8 number = 0;
    char unit[3] = "";
    const int items = std::sscanf(text, "%ld%2s", &number, unit);
    if (items < 2)
        return {0, items <= 0 ? "syntax error" : number != 0 ? "unit required" : ""};
    const Parsed<nanotime> one = parse(strToSuffixNanoTime, std::string("1 ") + unit);
    return {static_cast<nanotime>(static_cast<u8>(number) * static_cast<u8>(one.value)), one.error};
}

// The same outcome with 64 bits. A blank in front leads past the reader of plain numbers, a '+'
// before the digits to the platform's scanner: neither may change anything.
template <typename Value>
Parsed<u8> integer(Parser<Value>* parser, const std::string& text) {
    const size_t start = strncasecmp(text.c_str(), "0x", 2) == 0 ? 2 : 0;
    const auto first = static_cast<unsigned char>(text[start]);
    const bool is_digit = start > 0 ? std::isxdigit(first) != 0 : std::isdigit(first) != 0;
    const std::string signed_text = std::string(text).insert(start, is_digit ? "+" : "");
    const Parsed<Value> parsed = parse(parser, text);
    if (parse(parser, " " + text) != parsed || parse(parser, signed_text) != parsed)
        return {0, "depends on the way it is written"};
    return {(u8)parsed.value, parsed.error};
}

// Whether all parsers read the text as the others and the scanner do.
inline bool parsers_agree(const std::string& text) {
    constexpr double KEPT = 77;
    const bool is_plain = std::isdigit(static_cast<unsigned char>(text[0])) != 0;
    const auto [number, error] = integer(strToSuffixULong, text);
    const Parsed<u8> plain = {number, error}, with_sign = integer(strToSuffixLong, text);
    const Parsed<u8> as_int = {(u8) static_cast<int>(with_sign.value), with_sign.error};
    return (!is_plain || integer(strToSuffixLong, "-" + text) == Parsed<u8>{-number, error}) &&
           (error == "negative value not allowed" || plain == with_sign) &&
           (error == "could not parse number" || plain == integer(strToSuffixAddress, text)) &&
           plain == integer(strToSuffixSize, text) && as_int == integer(strToSuffixInt, text) &&
           integer(strToSuffixUInt, text) == Parsed<u8>{static_cast<unsigned>(number), error} &&
           parse(strToSuffixDouble, text, KEPT) == scan_double(text.c_str(), KEPT) &&
           parse(strToSuffixNanoTime, text) == scan_duration(text.c_str());
}

#endif
