#include "util/export/arguments.h"

#include <gtest/gtest.h>
#include <cstring>

constexpr auto NO_TYPE = static_cast<ArgType>(9);

struct ConvertCase {
    ArgType type;
    const char* text;
    size_t width;  // 0 when it fails
    const char* error = "untouched";
};

const ConvertCase CONVERT_CASES[] = {
    {TYPE_bool, "", 1},
    {TYPE_bool, "yes", 0, "illegal boolean value"},
    {TYPE_int, "-5k", 4},
    {TYPE_int, "x", 0, "could not parse number"},
    {TYPE_s8, "-5k", 8},
    {TYPE_double, "1.5", 8},
    {TYPE_double, "1.5 k", 0, "illegal suffix"},  // the parser stores 1.5
    {TYPE_size_t, "7m", 8},
    {TYPE_u8, "9", 8},
    {TYPE_nanotime, "3ms", 8},
    {TYPE_pcchar, "x", 8},
    {TYPE_pvoid, "0x10", 8},
    {NO_TYPE, "5", 0},
};

// Both ways, as a value that is copied then and straight into the variable, store the same bytes
// and none behind them.
TEST(ArgConvert, StoresOnlyWhatConverts) {
    for (const ConvertCase& c : CONVERT_CASES) {
        SCOPED_TRACE(c.text);
        const bool converts = c.width > 0;
        ArgVal value;
        char direct[] = "########", copied[] = "########";
        ArgPtr to_direct = {.pv = direct}, to_copied = {.pv = copied};
        const char *error = "untouched", *second_error = "untouched";
        EXPECT_EQ(argConvert(c.type, &to_direct, c.text, &error), converts);
        EXPECT_EQ(argConvert2(c.type, &value, c.text, &second_error), converts);
        if (converts || c.type == NO_TYPE)
            argCopy(c.type, &to_copied, &value);
        EXPECT_EQ(memcmp(direct, copied, sizeof direct), 0);
        EXPECT_STREQ(direct + c.width, &"########"[c.width]);
        EXPECT_STREQ(error, c.error);
        EXPECT_STREQ(second_error, c.error);
    }
}

static const char STRINGS[] = "low\0mid\0top";  // their addresses are compared

struct BoundsCase {
    ArgType type;
    const char *value, *minimum, *maximum;
    int result;
    const char* message = "untouched";
};

const BoundsCase BOUNDS_CASES[] = {
    {TYPE_bool, "1", "0", "0", 1, "(trueB) is more than maximum allowed (falseB)"},
    {TYPE_bool, "0", "1", "1", -1, "(falseB) is less than minimum required (trueB)"},
    {TYPE_int, "20", "10", "20", 0},
    {TYPE_int, "10", "10", "20", 0},
    {TYPE_int, "-1", "-9", "-2", 1, "(-1B) is more than maximum allowed (-2B)"},
    {TYPE_int, "5", "9", "1", -1, "(5B) is less than minimum required (9B)"},
    {TYPE_s8, "-8g", "0", "1", -1, "(-8589934592B) is less than minimum required (0B)"},
    {TYPE_double, ".5", "1", "2", -1, "(0.500000B) is less than minimum required (1.000000B)"},
    {TYPE_double, "nan", "1", "2", 0},
    {TYPE_size_t, "1m", "2m", "3m", -1, "(1MB) is less than minimum required (2MB)"},
    {TYPE_size_t, "0x-1", "0", "1536", 1,
     "(18446744073709551615B) is more than maximum allowed (1536B)"},
    {TYPE_u8, "0x-1", "0", "1g", 1, "(-1B) is more than maximum allowed (1GB)"},
    {TYPE_nanotime, "500ms", "1s", "0", -1, "(500msB) is less than minimum required (1sB)"},
    {TYPE_nanotime, "-1us", "0", "0", -1, "(-1000nsB) is less than minimum required (0sB)"},
    {TYPE_pcchar, STRINGS, STRINGS + 4, STRINGS + 8, -1,
     "(lowB) is less than minimum required (midB)"},
    {TYPE_pcchar, STRINGS + 8, nullptr, nullptr, 1,
     "(topB) is more than maximum allowed ((null)B)"},
    {TYPE_pvoid, "0x-1", "0", "10h", 1,
     "(0xffffffffffffffffB) is more than maximum allowed (0x10B)"},
    {NO_TYPE, "5", "10", "20", 0},
};

TEST(ArgCheckBounds, ExplainsABrokenBoundInTheTypesOwnWords) {
    for (const BoundsCase& c : BOUNDS_CASES) {
        SCOPED_TRACE(c.message);
        const size_t width = c.type == TYPE_bool ? 1 : c.type == TYPE_int ? 4 : 8;
        char bounds[16], message[128] = "untouched", cut[8] = "#";
        ArgVal value, minimum, maximum;
        argConvert2(c.type, &value, c.value, nullptr);
        argConvert2(c.type, &minimum, c.minimum, nullptr);
        argConvert2(c.type, &maximum, c.maximum, nullptr);
        memcpy(bounds, &minimum, width);
        memcpy(bounds + width, &maximum, width);
        EXPECT_EQ(argCheckBounds(c.type, &value, bounds, message, sizeof message), c.result);
        EXPECT_STREQ(message, c.message);
        EXPECT_EQ(argCheckBounds(c.type, &value, bounds, cut, sizeof cut), c.result);
        EXPECT_EQ(std::string(cut), c.result == 0 ? "#" : std::string(c.message).substr(0, 7));
        EXPECT_EQ(argCheckBounds(c.type, &value, bounds, nullptr, 0), c.result);
    }
}
