#include "json_peers.h"

#define RAPIDJSON_SSE42
#include <rapidjson/reader.h>
#include <simdjson.h>
#include <yajl/yajl_parse.h>
#include <nlohmann/json.hpp>

using namespace simdjson;

// simdjson builds a tree, or an index of the text; walking every value makes events of either. Its
// parsers keep their memory from one document to the next.

static void walk(dom::element element, Totals* totals) {
    dom::array array;
    dom::object object;
    switch (element.type()) {
        case dom::element_type::ARRAY:
            totals->events += 2;
            if (element.get(array) == SUCCESS)
                for (dom::element child : array)
                    walk(child, totals);
            break;
        case dom::element_type::OBJECT:
            totals->events += 2;
            if (element.get(object) == SUCCESS)
                for (dom::key_value_pair field : object) {
                    totals->text(field.key.size());
                    walk(field.value, totals);
                }
            break;
        case dom::element_type::STRING:
            totals->text(element.get_string_length().value_unsafe());
            break;
        case dom::element_type::INT64:
            totals->integer(static_cast<uint64_t>(element.get_int64().value_unsafe()));
            break;
        case dom::element_type::UINT64: totals->integer(element.get_uint64().value_unsafe()); break;
        case dom::element_type::DOUBLE: totals->decimal(element.get_double().value_unsafe()); break;
        case dom::element_type::BOOL:
        case dom::element_type::NULL_VALUE: totals->events++; break;
    }
}

static bool read_dom(const std::string& document, Totals* totals) {
    static dom::parser parser;
    dom::element root;
    if (parser.parse(document.data(), document.size(), false).get(root) != SUCCESS)
        return false;
    walk(root, totals);
    return true;
}

template <typename Value>
static bool walk_on_demand(Value& value, Totals* totals) {
    ondemand::json_type type;
    if (value.type().get(type) != SUCCESS)
        return false;
    switch (type) {
        case ondemand::json_type::array: {
            totals->events += 2;
            ondemand::array array;
            if (value.get_array().get(array) != SUCCESS)
                return false;
            for (auto child : array)
                if (ondemand::value v; child.get(v) != SUCCESS || !walk_on_demand(v, totals))
                    return false;
            return true;
        }
        case ondemand::json_type::object: {
            totals->events += 2;
            ondemand::object object;
            if (value.get_object().get(object) != SUCCESS)
                return false;
            for (auto field : object) {
                std::string_view key;
                if (field.unescaped_key().get(key) != SUCCESS)
                    return false;
                totals->text(key.size());
                if (ondemand::value v;
                    field.value().get(v) != SUCCESS || !walk_on_demand(v, totals))
                    return false;
            }
            return true;
        }
        case ondemand::json_type::string: {
            std::string_view text;
            if (value.get_string().get(text) != SUCCESS)
                return false;
            totals->text(text.size());
            return true;
        }
        case ondemand::json_type::number: {
            ondemand::number number;
            if (value.get_number().get(number) != SUCCESS)
                return false;
            if (number.is_double())
                totals->decimal(number.get_double());
            else if (number.is_int64())
                totals->integer(static_cast<uint64_t>(number.get_int64()));
            else
                totals->integer(number.get_uint64());
            return true;
        }
        case ondemand::json_type::boolean: {
            bool truth;
            totals->events++;
            return value.get_bool().get(truth) == SUCCESS;
        }
        case ondemand::json_type::null: totals->events++; return value.is_null();
    }
    return false;
}

static bool read_on_demand(const std::string& document, Totals* totals) {
    static ondemand::parser parser;
    ondemand::document root;
    const padded_string_view text(document.data(), document.size(),
                                  document.size() + PADDING_BYTES);
    return parser.iterate(text).get(root) == SUCCESS && walk_on_demand(root, totals);
}

struct RapidHandler : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, RapidHandler> {
    Totals* totals;
    explicit RapidHandler(Totals* t) : totals(t) {}

    bool Default() {
        totals->events++;
        return true;
    }
    bool String(const char*, rapidjson::SizeType length, bool) {
        totals->text(length);
        return true;
    }
    bool Key(const char*, rapidjson::SizeType length, bool) {
        totals->text(length);
        return true;
    }
    bool Uint64(uint64_t value) {
        totals->integer(value);
        return true;
    }
    bool Int64(int64_t value) {
        return Uint64(static_cast<uint64_t>(value));
    }
    bool Uint(unsigned value) {
        return Uint64(value);
    }
    bool Int(int value) {
        return Int64(value);
    }
    bool Double(double value) {
        totals->decimal(value);
        return true;
    }
};

template <unsigned flags>
static bool read_rapidjson(const std::string& document, Totals* totals) {
    static rapidjson::Reader reader;
    rapidjson::StringStream text(document.c_str());
    RapidHandler handler(totals);
    return !reader.Parse<flags>(text, handler).IsError();
}

constexpr unsigned PLAIN = rapidjson::kParseDefaultFlags;
constexpr unsigned CAREFUL =
    PLAIN | rapidjson::kParseValidateEncodingFlag | rapidjson::kParseFullPrecisionFlag;

static int yajl_event(void* totals) {
    static_cast<Totals*>(totals)->events++;
    return 1;
}

static int yajl_text(void* totals, const unsigned char*, size_t length) {
    static_cast<Totals*>(totals)->text(length);
    return 1;
}

static bool read_yajl(const std::string& document, Totals* totals) {
    static const yajl_callbacks CALLBACKS = {
        yajl_event,
        [](void* t, int) { return yajl_event(t); },
        [](void* t, long long value) {
            static_cast<Totals*>(t)->integer(static_cast<uint64_t>(value));
            return 1;
        },
        [](void* t, double value) {
            static_cast<Totals*>(t)->decimal(value);
            return 1;
        },
        nullptr,
        yajl_text,
        yajl_event,
        yajl_text,
        yajl_event,
        yajl_event,
        yajl_event};
    const yajl_handle handle = yajl_alloc(&CALLBACKS, nullptr, totals);
    const auto* const text = reinterpret_cast<const unsigned char*>(document.data());
    const bool read = yajl_parse(handle, text, document.size()) == yajl_status_ok &&
                      yajl_complete_parse(handle) == yajl_status_ok;
    yajl_free(handle);
    return read;
}

struct NlohmannHandler {
    Totals* totals;

    bool event() {
        totals->events++;
        return true;
    }
    bool null() {
        return event();
    }
    bool boolean(bool) {
        return event();
    }
    bool number_integer(int64_t value) {
        return number_unsigned(static_cast<uint64_t>(value));
    }
    bool number_unsigned(uint64_t value) {
        totals->integer(value);
        return true;
    }
    bool number_float(double value, const std::string&) {
        totals->decimal(value);
        return true;
    }
    bool string(std::string& text) {
        totals->text(text.size());
        return true;
    }
    bool key(std::string& text) {
        return string(text);
    }
    bool binary(nlohmann::json::binary_t&) {
        return false;
    }
    bool start_object(size_t) {
        return event();
    }
    bool end_object() {
        return event();
    }
    bool start_array(size_t) {
        return event();
    }
    bool end_array() {
        return event();
    }
    bool parse_error(size_t, const std::string&, const nlohmann::json::exception&) {
        return false;
    }
};

static bool read_nlohmann(const std::string& document, Totals* totals) {
    NlohmannHandler handler = {totals};
    return nlohmann::json::sax_parse(document, &handler);
}

const Contender PEERS[] = {
    {"simdjson DOM", read_dom},
    {"simdjson On-Demand", read_on_demand},
    {"RapidJSON plain", read_rapidjson<PLAIN>, false},
    {"RapidJSON", read_rapidjson<CAREFUL>},
    {"yajl", read_yajl},
    {"nlohmann", read_nlohmann},
};
