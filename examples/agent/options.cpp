// Options are separated by colons, because commas belong to their values.

#include "options.h"

#include "class_trace.h"
#include "filters.h"
#include "gc.h"
#include "heap.h"
#include "util/export/arguments.h"
#include "util/export/json.h"
#include "util/export/logging.h"

#include <cstdio>
#include <cstring>
#include <iterator>

namespace {

constexpr int NAME_BYTES = 16, OPTION_BYTES = 512, MESSAGE_BYTES = 256;
constexpr size_t HEAP_BOUNDS[] = {size_t{1} << 20, size_t{1} << 40};

// Advice about retired names is left to the library, which prints it.
template <auto parse>
int apply_log(const char* value, char* errbuf, size_t errlen) {
    return parse(value, errbuf, errlen, nullptr);
}

int apply_decorations(const char* names, char* errbuf, size_t errlen) {
    if (logParseLogDecorations(names) == 0)
        return 0;
    std::snprintf(errbuf, errlen, "No such decoration in \"%s\"", names);
    return -1;
}

// Members of a configuration file are options, each applied when it has been read.
//
//   arg  the name of the option being read, empty at first
void read_event(JSONType type, const JSONVal* value, void* arg) {
    const auto name = static_cast<char*>(arg);
    if (type == JSON_KEY) {
        if (value->str.length >= NAME_BYTES || std::strcmp(value->str.utf8, "config") == 0)
            jsonAbort("No such option in a file");
        std::strcpy(name, value->str.utf8);
    } else if (type == JSON_STRING) {
        char option[OPTION_BYTES], message[MESSAGE_BYTES];
        const char quote = std::strchr(value->str.utf8, '\'') != nullptr ? '"' : '\'';
        if (std::snprintf(option, sizeof option, "%s=%c%s%c", name, quote, value->str.utf8,
                          quote) >= int{OPTION_BYTES})
            jsonAbort("Value too long");
        if (!apply_options(option, message, sizeof message))
            jsonAbort("%s", message);
    } else if (type != JSON_OBJECT_END && (type != JSON_OBJECT_BEGIN || *name != '\0')) {
        jsonAbort("A word or a string is expected");
    }
}

int apply_config(const char* path, char* errbuf, size_t errlen) {
    char name[NAME_BYTES] = "";
    return jsonParseFile(path, read_event, name, errbuf, errlen);
}

template <Filter filter>
int apply_filter(const char* patterns, char* errbuf, size_t errlen) {
    return set_filter(filter, patterns, errbuf, errlen);
}

constexpr struct {
    const char* name;
    int (*apply)(const char* value, char* errbuf, size_t errlen);
} TEXTS[] = {
    {"config", apply_config},
    {"level", apply_log<logParseMsgLevelsEx>},
    {"sanity", apply_log<logParseSanityLevelsEx>},
    {"decorations", apply_decorations},
    {"files", apply_log<logParseLogFilesEx>},
    {"classes", apply_filter<CLASSES>},
    {"methods", apply_filter<METHODS>},
    {"exceptions", apply_filter<EXCEPTIONS>},
    {"trace", set_class_trace},
};

struct Options {
    argsParse parse = {};
    argInfo text_args[std::size(TEXTS)], pause_arg, heap_arg;
    pcchar texts[std::size(TEXTS)];  // null for those that are not given
    nanotime pause;
    size_t heap;
};

void declare(Options& o) {
    for (size_t i = 0; i < std::size(TEXTS); i++)
        o.texts[i] = argAddpcchar(TEXTS[i].name, &o.parse, &o.text_args[i], &o.texts[i], nullptr,
                                  nullptr, nullptr, 0);
    o.pause = argAddnanotime("pause", &o.parse, &o.pause_arg, &o.pause, 0,
                             "longest collection without a warning", nullptr, 0);
    o.heap = argAddsize_t("heap", &o.parse, &o.heap_arg, &o.heap, 0,
                          "largest use after a collection without a warning", nullptr, 0);
}

bool reject(char* errbuf, size_t errlen, const char* option, const char* message) {
    std::snprintf(errbuf, errlen, "%s: %s", option, message);
    return false;
}

bool apply(Options& o, char* errbuf, size_t errlen) {
    char message[MESSAGE_BYTES];
    for (size_t i = 0; i < std::size(TEXTS); i++)
        if (o.texts[i] != nullptr && TEXTS[i].apply(o.texts[i], message, sizeof message) != 0)
            return reject(errbuf, errlen, TEXTS[i].name, message);
    if (o.pause_arg.handled != 0)
        gc_set_pause_limit(o.pause);
    if (o.heap_arg.handled != 0) {
        ArgVal heap = {.vsize_t = o.heap};
        if (argCheckBounds(TYPE_size_t, &heap, HEAP_BOUNDS, message, sizeof message) != 0)
            return reject(errbuf, errlen, "heap", message);
        set_heap_limit(o.heap);
    }
    return true;
}

}  // namespace

bool apply_options(const char* text, char* errbuf, size_t errlen) {
    Options o;
    declare(o);
    const bool applied = argParse(&o.parse, text, std::strlen(text), ':') == 0
                             ? apply(o, errbuf, errlen)
                             : reject(errbuf, errlen, "options", argError(&o.parse));
    argFree(&o.parse);
    return applied;
}
