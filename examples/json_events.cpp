// Prints what the JSON reader reports of a file, an event a line.

#include "util/export/json.h"

#include <cstdio>

namespace {

constexpr const char* NAMES[JSON_MAX] = {"",           "ARRAY_BEGIN", "ARRAY_END", "OBJECT_BEGIN",
                                         "OBJECT_END", "INTEGER",     "FLOAT",     "NULL",
                                         "TRUE",       "FALSE",       "STRING",    "KEY"};

void print(JSONType type, const JSONVal* value, void* arg) {
    int& depth = *static_cast<int*>(arg);
    if (type == JSON_ARRAY_END || type == JSON_OBJECT_END)
        depth--;
    std::printf("%*s%s", 2 * depth, "", NAMES[type]);
    if (type == JSON_ARRAY_BEGIN || type == JSON_OBJECT_BEGIN)
        depth++;
    if (type == JSON_INTEGER)
        std::printf(" %ld", static_cast<long>(value->int_value));
    else if (type == JSON_FLOAT)
        std::printf(" %.17g", value->double_value);
    else if (type == JSON_STRING || type == JSON_KEY)
        std::printf(" %s", value->str.utf8);
    std::putchar('\n');
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: json_events FILE\n");
        return 2;
    }
    int depth = 0;
    char error[256];
    if (jsonParseFile(argv[1], print, &depth, error, sizeof error) == 0)
        return 0;
    std::fflush(stdout);
    std::fprintf(stderr, "json_events: %s\n", error);
    return 1;
}
