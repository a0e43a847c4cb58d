#include "util/export/utf8.h"
#include "support/plain_utf8.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

using std::string;
using namespace std::string_literals;

struct TextCase {
    string text;
    bool strict, relaxed;
};

const TextCase TEXT_CASES[] = {
    {"", true, true},
    {"\x01 plain \x7f", true, true},
    {"a\0b"s, false, false},
    {"\xC0\x80", true, true},  // U+0000
    {"\xC0\x81", false, true},
    {"\xC1\x81", false, true},
    {"\xE0\x80\x80", false, true},
    {"\xE0\x9F\xBF", false, true},
    {"\xC2\xA9\xE2\x82\xAC", true, true},
    {"\xED\xA0\xBD\xED\xB8\x80", true, true},
    {"\xED\xA0\x80", true, true},  // a lone surrogate
    {"\xEF\xBF\xBF", true, true},
    {"\xF0\x9F\x98\x80", false, false},
    {"\xC3", false, false},
    {"\xE2\x82", false, false},
    {"\xC3"
     "A",
     false, false},
    {"\xE2\x82"
     "A",
     false, false},
    {"\x80", false, false},
    {"\xC2\x80\x80", false, false},
    {"\xFF", false, false},
};

// In a block of its own size, for the address sanitizer to watch its end.
static bool validate(const string& text, bool relax) {
    const std::vector<char> exact(text.begin(), text.end());
    return utf8_validate(exact.data(), exact.size(), relax);
}

// Every case behind and before ASCII of all lengths that matter to blocks.
TEST(Utf8Validate, JudgesEverySequenceAtEveryPlace) {
    for (const TextCase& c : TEXT_CASES)
        for (size_t before = 0; before < 70; before++)
            for (size_t after : {0, 1, 31, 64, 100}) {
                const string text = string(before, 'x') + c.text + string(after, 'y');
                EXPECT_EQ(validate(text, false), c.strict) << c.text << " at " << before;
                EXPECT_EQ(validate(text, true), c.relaxed) << c.text << " at " << before;
            }
}

TEST(Utf8Validate, AgreesWithThePlainCheckOnAllPairsAndRandomText) {
    for (int first = 0; first < 256; first++)
        for (int second = 0; second < 256; second++)
            for (const char* third : {"", "A", "\x80", "\xBF", "\xC2\x80"})
                for (bool relax : {false, true}) {
                    const string text = string(31, 'x') + static_cast<char>(first) +
                                        static_cast<char>(second) + third + string(33, 'y');
                    ASSERT_EQ(validate(text, relax), plain_utf8_validate(text, relax))
                        << first << " " << second;
                }
    std::mt19937 random(20260329);
    for (int round = 0; round < 20000; round++) {
        string text;
        for (size_t parts = random() % 120; parts > 0; parts--)
            if (const TextCase& c = TEXT_CASES[random() % std::size(TEXT_CASES)];
                c.strict || random() % 200 == 0)
                text += c.text;
        for (bool relax : {false, true})
            ASSERT_EQ(validate(text, relax), plain_utf8_validate(text, relax));
    }
}

struct DecodeCase {
    const char* text;
    wchar_t value;
    int bytes;
};

const DecodeCase DECODE_CASES[] = {
    {"", 0, 1},
    {"A", 'A', 1},
    {"\xC3\xA9", 0xE9, 2},
    {"\xC0\x80", 0, 2},
    {"\xE2\x82\xAC", 0x20AC, 3},
    {"\xED\xA0\xBD\xED\xB8\x80", 0xD83D, 3},
    {"\x80", 0x80, 1},
    {"\xF0\x9F", 0xF0, 1},
    {"\xC3"
     "A",
     0xC3, 1},
    {"\xE2"
     "A",
     0xE2, 1},
    {"\xE2\x82"
     "A",
     0xE2, 2},
    {"\xE2\x82", 0xE2, 2},
};

TEST(Utf8, DecodesOneCharacter) {
    for (const DecodeCase& c : DECODE_CASES) {
        const char* cursor = c.text;
        EXPECT_EQ(next_utf2wchar(&cursor), c.value) << c.text;
        EXPECT_EQ(cursor - c.text, c.bytes) << c.text;
    }
}

TEST(Utf8, EncodesWhatItDecodes) {
    for (wchar_t c = 0; c <= 0xFFFF; c++) {
        char bytes[4] = "###";
        const unsigned length = wchar2utf8(bytes, c);
        const char* cursor = bytes;
        ASSERT_EQ(length, c == 0 ? 2U : c < 0x80 ? 1U : c < 0x800 ? 2U : 3U);
        ASSERT_EQ(bytes[3], '\0');
        ASSERT_EQ(next_utf2wchar(&cursor), c);
        ASSERT_EQ(cursor, bytes + length);
        ASSERT_TRUE(plain_utf8_validate({bytes, length}, false));
    }
    char low[3], negative[3];
    EXPECT_EQ(wchar2utf8(low, 0xFFEC), wchar2utf8(negative, -0x14));  // the low 16 bits count
    EXPECT_EQ(string(low, 3), string(negative, 3));
}
