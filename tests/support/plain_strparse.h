// The number parsers as their rules are written: everything is read by sscanf().
#ifndef TESTS_SUPPORT_PLAIN_STRPARSE_H
#define TESTS_SUPPORT_PLAIN_STRPARSE_H

#include "util/export/strparse.h"

#include <strings.h>
#include <cctype>
#include <cstdio>
#include <cstring>

// What a parser says: the value after the call, and the reason for a failure or null.
template <typename Value>
struct Parsed {
    Value value;
    const char* error = nullptr;
};

inline u8 plain_multiplier(char suffix) {
    const char* const letters = "kKmMgG";
    const char* const found = suffix != '\0' ? std::strchr(letters, suffix) : nullptr;
    return found == nullptr ? 0 : u8{1} << (10 + (found - letters) / 2 * 10);
}

inline bool plain_is_hex_char(char c) {
    return c != '\0' && std::strchr("abcdefxABCDEFX", c) != nullptr;
}

inline Parsed<u8> plain_number(const char* text, bool undecorated_hex, bool allow_negative) {
    while (std::isspace(static_cast<unsigned char>(*text)))
        text++;
    const bool negative = *text == '-';
    if (negative && !allow_negative)
        return {0, "negative value not allowed"};
    text += negative;
    bool hex = strncasecmp(text, "0x", 2) == 0;
    text += hex ? 2 : 0;
    u8 number = 0;
    char c1, c2;
    int items;
    while (true) {
        c1 = c2 = '\0';
        items = std::sscanf(text, hex ? "%lx%c%c" : "%lu%c%c", &number, &c1, &c2);
        if (!hex &&
            ((items == 0 && plain_is_hex_char(*text)) || (items >= 2 && plain_is_hex_char(c1)))) {
            if (!undecorated_hex)
                return {0, "could not parse number"};
        } else if (hex || (c1 != 'h' && c1 != 'H')) {
            break;
        }
        hex = true;
    }
    bool has_suffix = items >= 2;
    if (c1 == 'h' || c1 == 'H') {
        has_suffix = items == 3;
        c1 = c2;
    }
    if (has_suffix) {
        if (plain_multiplier(c1) == 0)
            return {0, "illegal suffix"};
        number *= plain_multiplier(c1);
    }
    if (items <= 0)
        return {0, "could not parse number"};
    return {negative ? -number : number};
}

inline Parsed<double> plain_double(const char* text, double value) {
    char suffix;
    const int items = std::sscanf(text, "%lf%c", &value, &suffix);
    if (items <= 0)
        return {value, "illegal floating point value"};
    if (items == 1)
        return {value};
    if (plain_multiplier(suffix) == 0)
        return {value, "illegal suffix"};
    return {value * static_cast<double>(plain_multiplier(suffix))};
}

inline Parsed<s8> plain_nanotime(const char* text) {
    static const struct {
        const char* name;
        u8 factor;
    } UNITS[] = {{"us", 1000},         {"ms", 1000000},       {"s", 1000000000}, {"m", 60000000000},
                 {"h", 3600000000000}, {"d", 86400000000000}, {"ns", 1}};
    s8 v = 0;
    char unit[3] = "";
    const int items = std::sscanf(text, "%ld%2s", &v, unit);
    if (items == 1)
        return v == 0 ? Parsed<s8>{0} : Parsed<s8>{0, "unit required"};
    if (items != 2)
        return {0, "syntax error"};
    for (const auto& [name, factor] : UNITS)
        if (std::strcmp(unit, name) == 0)
            return {static_cast<s8>(static_cast<u8>(v) * factor)};
    return {0, "illegal unit"};
}

// What the library's parser says; the value is as given when the parser did not store one.
template <typename Value>
Parsed<Value> parse(bool (*parser)(const char*, Value*, const char**), const char* text,
                    Value value = {}) {
    const char* error = nullptr;
    const bool ok = parser(text, &value, &error);
    return {value, !ok && error == nullptr ? "no reason" : ok && error != nullptr ? "ok" : error};
}

template <typename Value>
bool same(const Parsed<Value>& a, const Parsed<Value>& b) {
    const char *left = a.error != nullptr ? a.error : "",
               *right = b.error != nullptr ? b.error : "";
    return std::memcmp(&a.value, &b.value, sizeof(Value)) == 0 && std::strcmp(left, right) == 0;
}

template <typename Value>
Parsed<Value> narrowed(const Parsed<u8>& number) {
    return {static_cast<Value>(number.value), number.error};
}

// Which of the library's parsers reads the text otherwise than above, or null.
inline const char* differing_parser(const char* text) {
    constexpr double KEPT = 77;
    const Parsed<u8> number = plain_number(text, false, false);
    const Parsed<u8> with_sign = plain_number(text, false, true);
    const Parsed<u8> address = plain_number(text, true, false);
    if (!same(parse(strToSuffixULong, text), number))
        return "ULong";
    if (!same(parse(strToSuffixSize, text), number))
        return "Size";
    if (!same(parse(strToSuffixUInt, text), narrowed<unsigned>(number)))
        return "UInt";
    if (!same(parse(strToSuffixLong, text), narrowed<s8>(with_sign)))
        return "Long";
    if (!same(parse(strToSuffixInt, text), narrowed<int>(with_sign)))
        return "Int";
    if (!same(parse(strToSuffixAddress, text),
              {reinterpret_cast<void*>(address.value), address.error}))
        return "Address";
    if (!same(parse(strToSuffixDouble, text, KEPT), plain_double(text, KEPT)))
        return "Double";
    if (!same(parse(strToSuffixNanoTime, text), plain_nanotime(text)))
        return "NanoTime";
    return nullptr;
}

#endif
