// What a parse comes to. The events are told in the dialect itself, so reading them gives them
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
#include <vector>

struct JsonOutcome {
    std::string events = {}, error = {};
    int result = 0;
    size_t events_left = SIZE_MAX;  // until the callback aborts
};

inline void require(bool condition) {
    if (!condition)
        std::abort();
}

inline std::string float_text(double value) {
    if (!std::isfinite(value))
        return std::isnan(value) ? "nan(e)" : value > 0 ? "1e999" : "-1e999";
    char digits[40];
    const std::string text(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
    return text.find_first_of(".e") == std::string::npos ? text + "." : text;
}

inline std::string quoted_text(const std::string& bytes) {
    std::string text = "'";
    for (size_t i = 0; i < bytes.size(); i++) {
        const bool is_zero = bytes[i] == '\xC0';  // U+0000, in two bytes
        char escape[] = {bytes[i], '\0', '\0', '\0', '\0'};
        if (is_zero || (bytes[i] & 0xE0) == 0 || bytes[i] == '\'' || bytes[i] == '\\')
            std::snprintf(escape, sizeof escape, "\\x%02x", is_zero ? 0U : bytes[i]);
        text += escape;
        i += is_zero;
    }
    return text + "'";
}

inline std::string event_text(JSONType type, const JSONVal* value) {
    const bool is_text = type == JSON_KEY || type == JSON_STRING;
    require((value != nullptr) == (is_text || type == JSON_INTEGER || type == JSON_FLOAT));
    if (type == JSON_INTEGER)
        return std::to_string(value->int_value) + ",";
    if (type == JSON_FLOAT)
        return float_text(value->double_value) + ",";
    const char* const PLAIN[] = {"?", "[", "],", "{", "},", "", "", "null,", "true,", "false,"};
    if (!is_text)
        return PLAIN[type];
    const auto& [bytes, length] = value->str;
    require(bytes[length] == '\0' && utf8_validate(bytes, length, false));
    return quoted_text({bytes, length}) + (type == JSON_KEY ? ":" : ",");
}

// Of a parse whose callback aborts at the event of number `abort_at`, counted from 0.
inline JsonOutcome json_outcome(const char* document, size_t errlen = 5000,
                                size_t abort_at = SIZE_MAX) {
    JsonOutcome outcome;
    outcome.events_left = abort_at;
    const auto tell = [](JSONType type, const JSONVal* value, void* arg) {
        auto* told = static_cast<JsonOutcome*>(arg);
        told->events += event_text(type, value);
        if (told->events_left-- == 0)
            jsonAbort("%s", "stop");
    };
    std::vector<char> error(errlen + 1, '\x7f');
    outcome.result = jsonParse(document, tell, &outcome, error.data(), errlen);
    require(error[errlen] == '\x7f' && (outcome.result == 0) == (error[0] == '\x7f'));
    if (outcome.result != 0)
        outcome.error = error.data();
    return outcome;
}

// A failure's text as a buffer of that size cuts it. A cut extract still gets its closing quote.
inline std::string cut_error(const std::string& error, size_t errlen) {
    const size_t extract = error.find(", \"");
    if (error.size() < errlen)
        return error;
    return extract < error.size() && errlen > extract + 4 ? error.substr(0, errlen - 2) + '"'
                                                          : error.substr(0, errlen - 1);
}

#endif
