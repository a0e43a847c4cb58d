#include "util/export/arguments.h"

#include <gtest/gtest.h>
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

// A value and its bounds in the bytes of their type.
struct BoundsCase {
    ArgType type;
    ArgVal value, minimum, maximum;
    int result;
    const char* message = "untouched";
};

static ArgVal of(const char* text) {
    ArgVal v;
    v.vpcchar = text;
    return v;
}
static ArgVal of(double d) {
    ArgVal v;
    v.vdouble = d;
    return v;
}
static ArgVal of(s8 number) {
    ArgVal v;
    v.vs8 = number;
    return v;
}

static const char STRINGS[] = "low\0mid\0top";

const BoundsCase BOUNDS_CASES[] = {
    {TYPE_bool, of(s8{1}), of(s8{0}), of(s8{0}), 1,
     "(trueB) is more than maximum allowed (falseB)"},
    {TYPE_bool, of(s8{0}), of(s8{1}), of(s8{1}), -1,
     "(falseB) is less than minimum required (trueB)"},
    {TYPE_int, of(s8{5}), of(s8{10}), of(s8{20}), -1, "(5B) is less than minimum required (10B)"},
    {TYPE_int, of(s8{20}), of(s8{10}), of(s8{20}), 0},
    {TYPE_int, of(s8{10}), of(s8{10}), of(s8{20}), 0},
    {TYPE_int, of(s8{-1}), of(s8{-9}), of(s8{-2}), 1, "(-1B) is more than maximum allowed (-2B)"},
    {TYPE_int, of(s8{5}), of(s8{9}), of(s8{1}), -1, "(5B) is less than minimum required (9B)"},
    {TYPE_s8, of(INT64_MIN), of(s8{0}), of(s8{1}), -1,
     "(-9223372036854775808B) is less than minimum required (0B)"},
    {TYPE_double, of(0.5), of(1.0), of(2.0), -1,
     "(0.500000B) is less than minimum required (1.000000B)"},
    {TYPE_double, of(NAN), of(1.0), of(2.0), 0},
    {TYPE_size_t, of(s8{1} << 20), of(s8{2} << 20), of(s8{3} << 20), -1,
     "(1MB) is less than minimum required (2MB)"},
    {TYPE_size_t, of(s8{-1}), of(s8{0}), of(s8{1536}), 1,
     "(18446744073709551615B) is more than maximum allowed (1536B)"},
    {TYPE_u8, of(s8{-1}), of(s8{0}), of(s8{1} << 30), 1,
     "(-1B) is more than maximum allowed (1GB)"},
    {TYPE_nanotime, of(s8{500000000}), of(s8{1000000000}), of(s8{0}), -1,
     "(500msB) is less than minimum required (1sB)"},
    {TYPE_nanotime, of(s8{-1000}), of(s8{0}), of(s8{0}), -1,
     "(-1000nsB) is less than minimum required (0sB)"},
    {TYPE_pcchar, of(STRINGS), of(STRINGS + 4), of(STRINGS + 8), -1,
     "(lowB) is less than minimum required (midB)"},
    {TYPE_pcchar, of(STRINGS + 8), of(s8{0}), of(s8{0}), 1,
     "(topB) is more than maximum allowed ((null)B)"},
    {TYPE_pvoid, of(s8{-1}), of(s8{0}), of(s8{0x10}), 1,
     "(0xffffffffffffffffB) is more than maximum allowed (0x10B)"},
    {static_cast<ArgType>(9), of(s8{5}), of(s8{10}), of(s8{20}), 0},
};

TEST(ArgCheckBounds, ExplainsABrokenBoundInTheTypesOwnWords) {
    for (BoundsCase c : BOUNDS_CASES) {
        const size_t width = c.type == TYPE_bool ? 1 : c.type == TYPE_int ? 4 : 8;
        alignas(8) char bounds[16];
        memcpy(bounds, &c.minimum, width);
        memcpy(bounds + width, &c.maximum, width);
        char message[128] = "untouched";
        EXPECT_EQ(argCheckBounds(c.type, &c.value, bounds, message, sizeof message), c.result)
            << c.message;
        EXPECT_STREQ(message, c.message);
        EXPECT_EQ(argCheckBounds(c.type, &c.value, bounds, nullptr, 0), c.result) << c.message;
        char cut[8] = "#";
        argCheckBounds(c.type, &c.value, bounds, cut, sizeof cut);
        EXPECT_EQ(std::string(cut), c.result == 0 ? "#" : std::string(c.message).substr(0, 7));
    }
}
