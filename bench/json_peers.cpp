#include "json_peers.h"

#define RAPIDJSON_SSE42
#include <rapidjson/reader.h>
#include <simdjson.h>

using namespace simdjson;

// simdjson builds a tree, or an index of the text; walking every value makes events of either. Its
// parsers keep their memory from one document to the next. What it cannot read, it throws.

static void walk(dom::element element, Totals* totals) {
    switch (element.type()) {
        case dom::element_type::ARRAY:
            totals->events += 2;
            for (dom::element child : dom::array(element))
                walk(child, totals);
            break;
        case dom::element_type::OBJECT:
            totals->events += 2;
            for (dom::key_value_pair field : dom::object(element)) {
                totals->text(field.key.size());
                walk(field.value, totals);
            }
            break;
        case dom::element_type::STRING: totals->text(element.get_string_length()); break;
        case dom::element_type::INT64:
            totals->integer(static_cast<uint64_t>(int64_t(element)));
            break;
        case dom::element_type::UINT64: totals->integer(uint64_t(element)); break;
        case dom::element_type::DOUBLE: totals->decimal(double(element)); break;
        default: totals->events++;
    }
}

static bool read_dom(const std::string& document, Totals* totals) {
    static dom::parser parser;
    walk(parser.parse(document.data(), document.size(), false), totals);
    return true;
}

static void add_number(ondemand::number number, Totals* totals) {
    if (number.is_double())
        totals->decimal(number.get_double());
    else
        totals->integer(number.is_int64() ? static_cast<uint64_t>(number.get_int64())
                                          : number.get_uint64());
}

template <typename Value>
static void walk_on_demand(Value& value, Totals* totals) {
    switch (value.type()) {
        case ondemand::json_type::array:
            totals->events += 2;
            for (ondemand::value child : value.get_array())
                walk_on_demand(child, totals);
            break;
        case ondemand::json_type::object:
            totals->events += 2;
            for (ondemand::field field : value.get_object()) {
                totals->text(std::string_view(field.unescaped_key()).size());
                walk_on_demand(field.value(), totals);
            }
            break;
        case ondemand::json_type::string:
            totals->text(std::string_view(value.get_string()).size());
            break;
        case ondemand::json_type::number: add_number(value.get_number(), totals); break;
        case ondemand::json_type::boolean:
            totals->events += value.get_bool().error() == SUCCESS;
            break;
        case ondemand::json_type::null: totals->events += value.is_null(); break;
    }
}

static bool read_on_demand(const std::string& document, Totals* totals) {
    static ondemand::parser parser;
    ondemand::document root =
        parser.iterate(document.data(), document.size(), document.size() + PADDING_BYTES);
    walk_on_demand(root, totals);
    return true;
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

static bool read_rapidjson(const std::string& document, Totals* totals) {
    constexpr unsigned CAREFUL =
        rapidjson::kParseValidateEncodingFlag | rapidjson::kParseFullPrecisionFlag;
    static rapidjson::Reader reader;
    rapidjson::StringStream text(document.c_str());
    RapidHandler handler(totals);
    return !reader.Parse<CAREFUL>(text, handler).IsError();
}

const Contender PEERS[] = {
    {"simdjson DOM", read_dom},
    {"simdjson On-Demand", read_on_demand},
    {"RapidJSON", read_rapidjson},
};

std::string peer_kernels() {
    return "simdjson DOM by " + get_active_implementation()->name() +
           ", On-Demand by " SIMDJSON_STRINGIFY(
               SIMDJSON_BUILTIN_IMPLEMENTATION) ", RapidJSON by SSE4.2";
}
