// Prints what random odd numbers and escapes mean, which must be the same on every platform. Each
// run uses the same texts.
//
//   odd_texts COUNT
#include "util/export/json.h"
#include "util/export/strparse.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

// clang-format off
static const char* const NUMBERS[] = {
    "0x", "0X", "0", "00", "08", "0b1", "7e", "E", "e+", "e-", "p", "p-1", "-", "+", ".", "0x.",
    "0x1.", "inf", "INFi", "nity", "infi", "x", "a", "F", "nan", "(1)", " ", "\t", "\f", "5", "0xf",
    "k", "G", "h", "ms", "s", "_", "e99999", "1e-3", "4.9e-324", "1e400", "1.7976931348623159e308",
    "9223372036854775808", "18446744073709551615", "18446744073709551616", "0xfffffffffffffffff",
    "e-99999999999999999999"};
static const char* const ESCAPES[] = {
    "\\u", "\\x", "\\u", "\\x", "0x", "+", "-", " ", "\t", "0", "7", "f", "G", "n", "\xC3\xA9",
    "\xE2\x82\xAC"};
// clang-format on
#define PICK(list) list[rand_below(sizeof list / sizeof *list)]

static unsigned long state;

static unsigned rand_below(size_t end) {
    state = state * 6364136223846793005 + 1442695040888963407;
    return (unsigned)((state >> 33) % end);
}

static void print_event(JSONType type, const JSONVal* value, void* arg) {
    (void)arg;
    printf(" %d", (int)type);
    if (type == JSON_INTEGER || type == JSON_FLOAT)
        printf(":%llx", (unsigned long long)value->int_value);
    if (type == JSON_STRING)
        printf(":%s", value->str.utf8);
}

#define PRINT(parse, type)                                    \
    do {                                                      \
        type value = (type)0;                                 \
        const char* reason = "";                              \
        u8 bits = 0;                                          \
        parse(text, &value, &reason);                         \
        memcpy(&bits, &value, sizeof value);                  \
        printf("%llx %s;", (unsigned long long)bits, reason); \
    } while (0)

int main(int argc, char** argv) {
    for (int count = argc == 2 ? atoi(argv[1]) : 0; count > 0; count--) {
        char text[200] = "", document[300], error[100] = "";
        const bool escapes = rand_below(4) == 0;
        for (unsigned pieces = 1 + rand_below(escapes ? 7 : 4); pieces > 0; pieces--)
            strcat(text, escapes ? PICK(ESCAPES) : PICK(NUMBERS));
        printf("%s: ", text);
        PRINT(strToSuffixInt, int);
        PRINT(strToSuffixULong, u8);
        PRINT(strToSuffixAddress, void*);
        PRINT(strToSuffixDouble, double);
        PRINT(strToSuffixNanoTime, nanotime);
        snprintf(document, sizeof document, escapes ? "['%s0000']" : "[%s]", text);
        jsonParse(document, print_event, NULL, error, sizeof error);
        printf(" %s\n", error);
    }
    return 0;
}
