// The outcome of a parse. The events are written in the dialect itself, so reading them gives them
// again: "{'key':['text',1,0.5,null,],},".
#ifndef TESTS_SUPPORT_JSON_OUTCOME_H
#define TESTS_SUPPORT_JSON_OUTCOME_H

#include "util/export/json.h"
#include "util/export/utf8.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

struct JsonOutcome {
    std::string events = {}, error = {};
    int result = 0;
    size_t events_left = SIZE_MAX;  // until the callback aborts
    std::string line() const {
        return result == 0 ? events : events + "! " + error;
    }
};

inline void require(bool condition) {
    if (!condition)
        std::abort();
}

inline std::string float_text(double value) {
    char digits[40];
    const std::string text(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
    if (std::isinf(value))
        return value > 0 ? "1e999" : "-1e999";
    return text.find_first_of(".e") == std::string::npos ? text + "." : text;
}

inline std::string event_text(JSONType type, const JSONVal* value) {
    const char* const PLAIN[] = {"?", "[", "],", "{", "},", "", "", "null,", "true,", "false,"};
    const bool is_text = type == JSON_KEY || type == JSON_STRING;
    require((value != nullptr) == (is_text || type == JSON_INTEGER || type == JSON_FLOAT));
    if (!is_text)
        return type == JSON_INTEGER ? std::to_string(value->int_value) + ','
               : type == JSON_FLOAT ? float_text(value->double_value) + ','
                                    : PLAIN[type];
    const auto& [bytes, length] = value->str;
    require(bytes[length] == '\0' && utf8_validate(bytes, length, false));
    std::string text = "'";
    for (const char* p = bytes; p < bytes + length; p++) {
        const bool is_zero = *p == '\xC0';  // U+0000, in two bytes
        char escape[] = {*p, '\0', '\0', '\0', '\0'};
        if (is_zero || (*p & 0xE0) == 0 || *p == '\'' || *p == '\\')
            std::snprintf(escape, sizeof escape, "\\x%02x", is_zero ? 0U : *p);
        text += escape;
        p += is_zero;
    }
    return text + (type == JSON_KEY ? "':" : "',");
}

inline std::string repeated(size_t times, const char* text) {
    std::string result;
    while (times-- > 0)
        result += text;
    return result;
}

// The outcome when the callback aborts at the event of number `abort_at`, counted from 0.
inline JsonOutcome json_outcome(const char* document, size_t errlen = 5000,
                                size_t abort_at = SIZE_MAX) {
    JsonOutcome outcome = {.events_left = abort_at};
    const auto tell = [](JSONType type, const JSONVal* value, void* arg) {
        auto* told = static_cast<JsonOutcome*>(arg);
        told->events += event_text(type, value);
        if (told->events_left-- == 0)
            jsonAbort("%s", "stop");
    };
    std::string error(errlen + 1, '\x7f');
    outcome.result = jsonParse(document, tell, &outcome, &error[0], errlen);
    require(error[errlen] == '\x7f' && outcome.result == (error[0] == '\x7f' ? 0 : -1));
    if (outcome.result != 0)
        outcome.error = error.c_str();
    return outcome;
}

// A failure's text as a buffer of that size cuts it. A cut extract still gets its closing quote.
inline std::string cut_error(const std::string& error, size_t errlen) {
    const size_t extract = error.find(", \"");
    const bool in_extract = extract < error.size() && errlen > extract + 4;
    return error.size() < errlen ? error
           : in_extract          ? error.substr(0, errlen - 2) + '"'
                                 : error.substr(0, errlen - 1);
}

#endif
