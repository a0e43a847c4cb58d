#include "config.h"

#include "util/export/json.h"
#include "util/export/logging.h"

#include <cstdio>
#include <cstring>

namespace {

using Parser = decltype(&logParseMsgLevelsEx);

struct Setting {
    const char* key;
    Parser parse;
};

constexpr Setting SETTINGS[] = {{"level", logParseMsgLevelsEx}, {"file", logParseLogFilesEx}};

// What is being read. The callback is abandoned when it rejects something, so everything that
// lives across events is here, and nothing needs a destructor.
struct Reading {
    int depth = 0;
    char module[64] = "";
    const Setting* setting = nullptr;
};

void begin_module(Reading& reading, const char* name) {
    if (std::strlen(name) >= sizeof reading.module)
        jsonAbort("Module name too long");
    std::strcpy(reading.module, name);
}

void begin_setting(Reading& reading, const char* key) {
    reading.setting = nullptr;
    for (const Setting& setting : SETTINGS)
        if (std::strcmp(setting.key, key) == 0)
            reading.setting = &setting;
    if (reading.setting == nullptr)
        jsonAbort("No such setting");
}

// A value is handed to the option's parser between quotes, so it may hold commas.
void apply(const Reading& reading, const char* value) {
    char option[512], message[256];
    const char quote = std::strchr(value, '\'') != nullptr ? '"' : '\'';
    const int length =
        std::snprintf(option, sizeof option, "%s=%c%s%c", reading.module, quote, value, quote);
    if (length < 0 || static_cast<size_t>(length) >= sizeof option)
        jsonAbort("Value too long");
    if (reading.setting->parse(option, message, sizeof message, nullptr) != 0)
        jsonAbort("%s", message);
}

void read_event(JSONType type, const JSONVal* value, void* arg) {
    Reading& reading = *static_cast<Reading*>(arg);
    if (type == JSON_OBJECT_BEGIN && reading.depth < 2)
        reading.depth++;
    else if (type == JSON_OBJECT_END)
        reading.depth--;
    else if (type == JSON_KEY && reading.depth == 1)
        begin_module(reading, value->str.utf8);
    else if (type == JSON_KEY)
        begin_setting(reading, value->str.utf8);
    else if (type == JSON_STRING && reading.depth == 2)
        apply(reading, value->str.utf8);
    else
        jsonAbort(reading.depth < 2 ? "An object is expected" : "A word or a string is expected");
}

}  // namespace

int apply_config(const char* path, char* errbuf, size_t errlen) {
    Reading reading;
    return jsonParseFile(path, read_event, &reading, errbuf, errlen);
}
