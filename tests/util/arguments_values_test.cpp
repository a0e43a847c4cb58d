#include "util/export/arguments.h"

#include <gtest/gtest.h>
#include <cstring>

using std::string;

constexpr auto NO_TYPE = static_cast<ArgType>(9);

// The size of a text's value in bytes; 0 when it has none.
const std::tuple<ArgType, const char*, size_t> CONVERT_CASES[] = {
    {TYPE_bool, "", 1},        {TYPE_bool, "yes", 0},  {TYPE_int, "-5k", 4},
    {TYPE_int, "x", 0},        {TYPE_s8, "-5k", 8},    {TYPE_double, "1.5", 8},
    {TYPE_double, "1.5 k", 0}, {TYPE_size_t, "7m", 8}, {TYPE_u8, "9", 8},
    {TYPE_nanotime, "3ms", 8}, {TYPE_pcchar, "x", 8},  {TYPE_pvoid, "0x10", 8},
    {NO_TYPE, "5", 0}};

// Both ways, by a value that is then copied and directly into the variable, store the same bytes
// and none after them, and give the same reason for a failure.
TEST(ArgConvert, StoresOnlyWhatConverts) {
    for (const auto& [type, text, width] : CONVERT_CASES) {
        SCOPED_TRACE(text);
        const bool converts = width > 0;
        ArgVal value;
        char direct[] = "########", copied[] = "########";
        ArgPtr to_direct = {.pv = direct}, to_copied = {.pv = copied};
        const char *error = nullptr, *second_error = nullptr;
        EXPECT_EQ(argConvert(type, &to_direct, text, &error), converts);
        EXPECT_EQ(argConvert2(type, &value, text, &second_error), converts);
        if (converts || type == NO_TYPE)
            argCopy(type, &to_copied, &value);
        EXPECT_EQ(string(direct, 8), string(copied, 8));
        EXPECT_STREQ(direct + width, &"########"[width]);
        EXPECT_EQ(error == nullptr, converts || type == NO_TYPE);
        EXPECT_STREQ(second_error, error);
    }
}

static const char STRINGS[] = "low\0mid\0top";  // their addresses are compared

struct BoundsCase {
    ArgType type;
    const char *value, *minimum, *maximum;
    int result = 0;
    const char *shown = "", *bound = "";  // in the message
};

const BoundsCase BOUNDS_CASES[] = {
    {TYPE_bool, "1", "0", "0", 1, "true", "false"},
    {TYPE_bool, "0", "1", "1", -1, "false", "true"},
    {TYPE_int, "20", "10", "20"},
    {TYPE_int, "10", "10", "20"},
    {TYPE_int, "-1", "-9", "-2", 1, "-1", "-2"},
    {TYPE_int, "5", "9", "1", -1, "5", "9"},
    {TYPE_s8, "-8g", "0", "1", -1, "-8589934592", "0"},
    {TYPE_double, ".5", "1", "2", -1, "0.500000", "1.000000"},
    {TYPE_double, "nan", "1", "2"},
    {TYPE_size_t, "1m", "2m", "3m", -1, "1M", "2M"},
    {TYPE_size_t, "0x-1", "0", "1536", 1, "18446744073709551615", "1536"},
    {TYPE_u8, "0x-1", "0", "1g", 1, "-1", "1G"},
    {TYPE_nanotime, "500ms", "1s", "0", -1, "500ms", "1s"},
    {TYPE_nanotime, "-1us", "0", "0", -1, "-1000ns", "0s"},
    {TYPE_pcchar, STRINGS, STRINGS + 4, STRINGS + 8, -1, "low", "mid"},
    {TYPE_pcchar, STRINGS + 8, nullptr, nullptr, 1, "top", "(null)"},
    {TYPE_pvoid, "0x-1", "0", "10h", 1, "0xffffffffffffffff", "0x10"},
    {NO_TYPE, "5", "10", "20"},
};

TEST(ArgCheckBounds, ExplainsABrokenBoundInTheTypesOwnWords) {
    for (const BoundsCase& c : BOUNDS_CASES) {
        const size_t width = c.type == TYPE_bool ? 1 : c.type == TYPE_int ? 4 : 8;
        const char* const rule =
            c.result < 0 ? "less than minimum required" : "more than maximum allowed";
        const string message = string("(") + c.shown + "B) is " + rule + " (" + c.bound + "B)";
        ArgVal value, minimum, maximum;
        argConvert2(c.type, &value, c.value, nullptr);
        argConvert2(c.type, &minimum, c.minimum, nullptr);
        argConvert2(c.type, &maximum, c.maximum, nullptr);
        char bounds[16];
        memcpy(bounds, &minimum, width);
        memcpy(bounds + width, &maximum, width);
        for (size_t len : {128, 8, 0}) {
            char text[128] = "#";
            EXPECT_EQ(argCheckBounds(c.type, &value, bounds, len > 0 ? text : nullptr, len),
                      c.result);
            EXPECT_EQ(text, c.result == 0 || len == 0 ? "#" : message.substr(0, len - 1));
        }
    }
}
