#include "support/plain_json.h"

#include "support/plain_utf8.h"
#include "util/export/utf8.h"

#include <strings.h>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>

namespace {

struct Stop {};  // thrown when the parse ends early

struct Reader {
    const char* pos;
    size_t errlen;
    const AbortRequest& abort_request;
    JsonOutcome outcome = {};
    const char* prev = nullptr;
    const char* mark = nullptr;
    unsigned line = 1;
    std::string buffer = {};

    [[noreturn]] void abort(const std::string& message) {
        std::string& text = outcome.error;
        text = message.substr(0, errlen - 1);
        const char* extract = mark != nullptr ? mark : prev;
        if (extract != nullptr) {
            text = (text + ", line " + std::to_string(line) + ", \"").substr(0, errlen - 1);
            while (errlen - text.size() > 2 && *extract != '\n' && *extract != '\0')
                text += *extract++;
            if (errlen - text.size() >= 2)
                text += '"';
        }
        outcome.result = -1;
        throw Stop();
    }

    wchar_t next() {
        prev = pos;
        const wchar_t c = next_utf2wchar(&pos);
        if (c == '\n')
            line++;
        return c;
    }

    wchar_t peek() const {
        const char* copy = pos;
        return next_utf2wchar(&copy);
    }

    void back() {
        pos = prev;
        if (peek() == '\n')
            line--;
    }

    // Of the character after the comment's opening "/", which has been read, up to its end; the
    // last character read.
    wchar_t skip_comment() {
        wchar_t c = next();
        if (c == '/') {
            while (c != '\n' && c != 0)
                c = next();
            return c;
        }
        for (wchar_t before = 0; (c = next()) != 0; before = c)
            if (before == '*' && c == '/')
                break;
        return c;
    }

    wchar_t next_clean() {
        for (;;) {
            wchar_t c = next();
            if (c == '/') {
                if (peek() != '/' && peek() != '*')
                    return c;
                c = skip_comment();
                if (c != 0)
                    continue;
            }
            if (c == 0 || c > 0x20)
                return c;
        }
    }

    void append_char(wchar_t c) {
        char bytes[3];
        buffer.append(bytes, wchar2utf8(bytes, c));
    }

    wchar_t hexadecimal_escape(size_t length) {
        std::wstring digits;
        while (digits.size() < length) {
            digits += next();
            if (digits.back() == 0)
                abort("Unexpected end of input");
        }
        unsigned value;
        if (std::swscanf(digits.c_str(), L"%x", &value) != 1)
            abort("Bad format number");
        return static_cast<wchar_t>(value);
    }

    wchar_t escape() {
        switch (next()) {
            case 'b': return '\b';
            case 'f': return '\f';
            case 'n': return '\n';
            case 'r': return '\r';
            case 't': return '\t';
            case 'u': return hexadecimal_escape(4);
            case 'x': return hexadecimal_escape(2);
            default: abort("Bad escape sequence");
        }
    }

    void scan_string_escaped(wchar_t end) {
        for (;;) {
            const wchar_t c = next();
            if (c == 0 || c == '\n' || c == '\r')
                abort("Unterminated string");
            if (c == end)
                return;
            append_char(c == '\\' ? escape() : c);
        }
    }

    // True for a quoted string, false for a bare word.
    bool scan_string() {
        wchar_t c = next_clean();
        buffer.clear();
        mark = prev;
        if (c == '"' || c == '\'') {
            scan_string_escaped(c);
            return true;
        }
        while (c > 0x20 && std::wcschr(L",:]}/\\\"[{;=#", c) == nullptr) {
            append_char(c);
            c = next();
        }
        back();
        if (buffer.empty())
            abort("Missing value");
        return false;
    }

    void deliver(JSONType type, std::string bytes = {}, uint64_t number = 0) {
        outcome.events.push_back({type, std::move(bytes), number});
        if (outcome.events.size() - 1 == abort_request.at)
            abort(abort_request.text);
        mark = nullptr;
    }

    bool try_send_number() {
        double floating;
        long integer;
        char more;
        if (buffer.find_first_of(".e") != std::string::npos &&
            std::sscanf(buffer.c_str(), "%lf%c", &floating, &more) == 1) {
            deliver(JSON_FLOAT, {}, std::bit_cast<uint64_t>(floating));
            return true;
        }
        const std::string digits = buffer.substr(buffer.find_first_not_of("+-") == 1);
        const bool is_binary = digits.starts_with("0b") || digits.starts_with("0B");
        if (is_binary || std::sscanf(buffer.c_str(), "%li%c", &integer, &more) != 1)
            return false;
        deliver(JSON_INTEGER, {}, static_cast<uint64_t>(integer));
        return true;
    }

    void next_value() {
        const wchar_t c = next_clean();
        if (c == '[')
            return scan_array();
        back();
        if (c == '{')
            return next_obj();
        if (scan_string())
            deliver(JSON_STRING, buffer);
        else if (strcasecmp(buffer.c_str(), "false") == 0)
            deliver(JSON_FALSE);
        else if (strcasecmp(buffer.c_str(), "true") == 0)
            deliver(JSON_TRUE);
        else if (strcasecmp(buffer.c_str(), "null") == 0)
            deliver(JSON_NULL);
        else if (!try_send_number())
            deliver(JSON_STRING, buffer);
    }

    void scan_array() {
        deliver(JSON_ARRAY_BEGIN);
        for (wchar_t c = next_clean(); c != ']'; c = next_clean()) {
            if (c == ',')
                continue;
            back();
            next_value();
        }
        deliver(JSON_ARRAY_END);
    }

    void next_obj() {
        wchar_t c = next_clean();
        if (c == '[')
            return scan_array();
        if (c != '{')
            abort("Object must start with '{'");
        deliver(JSON_OBJECT_BEGIN);
        for (;;) {
            c = next_clean();
            if (c == 0)
                abort("Object must end with '}'");
            if (c == '}')
                break;
            back();
            scan_string();
            deliver(JSON_KEY, buffer);
            c = next_clean();
            if (c != ':' && c != '=')
                abort("Unexpected char");
            next_value();
            c = next_clean();
            if (c == '}')
                break;
            if (c != ',' && c != ';')
                abort("Bad character");
        }
        deliver(JSON_OBJECT_END);
    }
};

struct Collected {
    std::vector<JsonEvent> events;
    const AbortRequest& abort_request;
};

void require(bool condition, const char* what) {
    if (condition)
        return;
    std::fprintf(stderr, "jsonParse: %s\n", what);
    std::abort();
}

void collect(JSONType type, const JSONVal* value, void* arg) {
    auto* collected = static_cast<Collected*>(arg);
    JsonEvent event = {type, {}, 0};
    if (type == JSON_KEY || type == JSON_STRING) {
        event.bytes.assign(value->str.utf8, value->str.length);
        require(plain_utf8_validate(event.bytes, false), "a string is not valid text");
        require(value->str.utf8[value->str.length] == '\0', "a string is not terminated");
    } else if (type == JSON_INTEGER) {
        event.number = static_cast<uint64_t>(value->int_value);
    } else if (type == JSON_FLOAT) {
        event.number = std::bit_cast<uint64_t>(value->double_value);
    } else {
        require(value == nullptr, "a value where there is none");
    }
    collected->events.push_back(std::move(event));
    if (collected->events.size() - 1 == collected->abort_request.at)
        jsonAbort("%s", collected->abort_request.text.c_str());
}

}  // namespace

JsonOutcome plain_json(const char* document, size_t errlen, const AbortRequest& abort) {
    Reader reader = {document, errlen, abort};
    try {
        if (!plain_utf8_validate(document, false))
            reader.abort("Illegal UTF8 text stream");
        reader.next_obj();
    } catch (Stop) {
    }
    return std::move(reader.outcome);
}

JsonOutcome library_json(const char* document, size_t errlen, const AbortRequest& abort) {
    constexpr char UNTOUCHED = '\x7f';
    Collected collected = {{}, abort};
    std::vector<char> buffer(errlen + 1, UNTOUCHED);
    const int result = jsonParse(document, collect, &collected, buffer.data(), errlen);
    require(buffer[errlen] == UNTOUCHED, "the error text leaves its buffer");
    if (result == 0)
        require(buffer[0] == UNTOUCHED, "an error text on success");
    else
        require(std::memchr(buffer.data(), '\0', errlen) != nullptr, "an open error text");
    return {result, result == 0 ? "" : buffer.data(), std::move(collected.events)};
}

static std::string describe_event(const JsonEvent& event) {
    switch (event.type) {
        case JSON_ARRAY_BEGIN: return "[";
        case JSON_ARRAY_END: return "]";
        case JSON_OBJECT_BEGIN: return "{";
        case JSON_OBJECT_END: return "}";
        case JSON_NULL: return "null";
        case JSON_TRUE: return "true";
        case JSON_FALSE: return "false";
        case JSON_INTEGER: return "i:" + std::to_string(static_cast<int64_t>(event.number));
        case JSON_FLOAT: {
            char digits[40];
            std::snprintf(digits, sizeof digits, "f:%.17g", std::bit_cast<double>(event.number));
            return digits;
        }
        case JSON_STRING: return "s:" + event.bytes;
        case JSON_KEY: return "k:" + event.bytes;
        default: return "?";
    }
}

std::string describe(const JsonOutcome& outcome) {
    std::string text;
    for (const JsonEvent& event : outcome.events)
        text += (text.empty() ? "" : " ") + describe_event(event);
    if (outcome.result != 0)
        text += (text.empty() ? "! " : " ! ") + outcome.error;
    return text;
}
