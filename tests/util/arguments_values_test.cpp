#include "util/export/arguments.h"

#include <gtest/gtest.h>
#include <bit>
#include <cmath>

TEST(ArgConvert, StoresOnlyWhatConverts) {
    ArgPtr p;
    const char* error = nullptr;
    struct {
        int before = 1, value = 2, after = 3;
    } i;
    p.pint = &i.value;
    EXPECT_TRUE(argConvert(TYPE_int, &p, "12k", &error));
    EXPECT_EQ(i.value, 12288);
    EXPECT_FALSE(argConvert(TYPE_int, &p, "x", &error));
    EXPECT_STREQ(error, "could not parse number");
    EXPECT_EQ(i.value, 12288);
    EXPECT_EQ(i.before * 10 + i.after, 13);

    double d = 7;
    p.pdouble = &d;
    EXPECT_FALSE(argConvert(TYPE_double, &p, "1.5 k", &error));  // the parser stores 1.5
    EXPECT_STREQ(error, "illegal suffix");
    EXPECT_EQ(d, 7);

    char bytes[2] = {0, '#'};
    p.pv = bytes;
    EXPECT_TRUE(argConvert(TYPE_bool, &p, "", nullptr));
    EXPECT_EQ(bytes[0], 1);
    EXPECT_EQ(bytes[1], '#');

    const char *text = "abc", *stored = nullptr;
    p.ppcchar = &stored;
    EXPECT_TRUE(argConvert(TYPE_pcchar, &p, text, nullptr));
    EXPECT_EQ(stored, text);

    error = "untouched";
    EXPECT_FALSE(argConvert(static_cast<ArgType>(9), &p, text, &error));
    EXPECT_STREQ(error, "untouched");
}

struct CopyCase {
    ArgType type;
    const char* text;
    size_t width;
};

// What is copied out of a value is what a conversion stores in its place, and no byte more.
TEST(ArgCopy, StoresWhatWasConverted) {
    for (const CopyCase& c :
         {CopyCase{TYPE_bool, "true", 1}, CopyCase{TYPE_int, "-5", 4}, CopyCase{TYPE_s8, "-5k", 8},
          CopyCase{TYPE_double, "1.5", 8}, CopyCase{TYPE_size_t, "7m", 8},
          CopyCase{TYPE_u8, "9", 8}, CopyCase{TYPE_nanotime, "3ms", 8},
          CopyCase{TYPE_pcchar, "x", 8}, CopyCase{TYPE_pvoid, "0x10", 8},
          CopyCase{static_cast<ArgType>(9), "", 0}}) {
        ArgVal value;
        char direct[9], copied[9];
        memset(direct, '#', sizeof direct);
        memset(copied, '#', sizeof copied);
        ArgPtr to_direct, to_copied;
        to_direct.pv = direct;
        to_copied.pv = copied;
        EXPECT_EQ(argConvert2(c.type, &value, c.text, nullptr), c.width > 0) << c.text;
        EXPECT_EQ(argConvert(c.type, &to_direct, c.text, nullptr), c.width > 0) << c.text;
        argCopy(c.type, &to_copied, &value);
        EXPECT_EQ(memcmp(direct, copied, sizeof direct), 0) << c.text;
        EXPECT_EQ(copied[c.width], '#') << c.text;
    }
}

static s8 bits(double value) {
    return std::bit_cast<s8>(value);
}

static const char STRINGS[] = "low\0mid\0top";

static s8 string(size_t offset) {
    return reinterpret_cast<s8>(STRINGS + offset);
}

struct BoundsCase {
    ArgType type;
    s8 value, bounds[2];
    int result;
    const char* message = "untouched";
};

const BoundsCase BOUNDS_CASES[] = {
    {TYPE_bool, 1, {0, 0}, 1, "(trueB) is more than maximum allowed (falseB)"},
    {TYPE_bool, 0, {1, 1}, -1, "(falseB) is less than minimum required (trueB)"},
    {TYPE_int, 5, {10, 20}, -1, "(5B) is less than minimum required (10B)"},
    {TYPE_int, 20, {10, 20}, 0},
    {TYPE_int, 10, {10, 20}, 0},
    {TYPE_int, -1, {-9, -2}, 1, "(-1B) is more than maximum allowed (-2B)"},
    {TYPE_int, 5, {9, 1}, -1, "(5B) is less than minimum required (9B)"},
    {TYPE_s8, INT64_MIN, {0, 1}, -1, "(-9223372036854775808B) is less than minimum required (0B)"},
    {TYPE_double,
     bits(0.5),
     {bits(1), bits(2)},
     -1,
     "(0.500000B) is less than minimum required (1.000000B)"},
    {TYPE_double, bits(NAN), {bits(1), bits(2)}, 0},
    {TYPE_size_t, 1 << 20, {2 << 20, 3 << 20}, -1, "(1MB) is less than minimum required (2MB)"},
    {TYPE_size_t, -1, {0, 1536}, 1, "(18446744073709551615B) is more than maximum allowed (1536B)"},
    {TYPE_u8, -1, {0, 1 << 30}, 1, "(-1B) is more than maximum allowed (1GB)"},
    {TYPE_nanotime, 500000000, {1000000000, 0}, -1, "(500msB) is less than minimum required (1sB)"},
    {TYPE_nanotime, -1000, {0, 0}, -1, "(-1000nsB) is less than minimum required (0sB)"},
    {TYPE_pcchar,
     string(0),
     {string(4), string(8)},
     -1,
     "(lowB) is less than minimum required (midB)"},
    {TYPE_pcchar, string(8), {0, 0}, 1, "(topB) is more than maximum allowed ((null)B)"},
    {TYPE_pvoid, -1, {0, 16}, 1, "(0xffffffffffffffffB) is more than maximum allowed (0x10B)"},
    {static_cast<ArgType>(9), 5, {10, 20}, 0},
};

TEST(ArgCheckBounds, ExplainsABrokenBoundInTheTypesOwnWords) {
    for (const BoundsCase& c : BOUNDS_CASES) {
        const size_t width = c.type == TYPE_bool ? 1 : c.type == TYPE_int ? 4 : 8;
        char bounds[16], message[128] = "untouched", cut[8] = "#";
        memcpy(bounds, &c.bounds[0], width);
        memcpy(bounds + width, &c.bounds[1], width);
        ArgVal value;
        value.vs8 = c.value;
        SCOPED_TRACE(c.message);
        EXPECT_EQ(argCheckBounds(c.type, &value, bounds, message, sizeof message), c.result);
        EXPECT_STREQ(message, c.message);
        EXPECT_EQ(argCheckBounds(c.type, &value, bounds, cut, sizeof cut), c.result);
        EXPECT_EQ(std::string(cut), c.result == 0 ? "#" : std::string(c.message).substr(0, 7));
        EXPECT_EQ(argCheckBounds(c.type, &value, bounds, nullptr, 0), c.result);
    }
}
