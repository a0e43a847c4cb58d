#include "util/export/utf8.h"
#include "support/guarded_text.h"
#include "support/plain_utf8.h"

#include "util/c/shared/vector/choice.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <tuple>

using std::string;

// A space ends each sequence.
const string RIGHT =
    "\x01~plain~\x7f \xC0\x80 \xC2\x80 \xDF\xBF \xC2\xA9\xE2\x82\xAC \xE0\xA0\x80 \xEF\xBF\xBF "
    "\xED\xA0\xBD\xED\xB8\x80 \xED\xA0\x80 ";  // at the end a pair of surrogates, and a lone one
const string OVERLONG = "\xC0\x81 \xC1\x81 \xC1\xBF \xE0\x80\x80 \xE0\x9F\xBF ";
const string WRONG =
    "\xF0\x9F\x98\x80 \xC3 \xE2\x82 \xE2 \xC3~ \xE2\x82~ \x80 \xBF \xC2\x80\x80 \xFF \xF0 \xE0\xA0 "
    "\xE2\x82\xC2\x80 \xE2\x82\xAC\x80 ";

// Memory after the text cannot be read. The text ends at every place near the end of a block.
TEST(Utf8Validate, JudgesEverySequenceAtEveryPlace) {
    const auto check = [](string list, bool strict, bool relaxed) {
        for (size_t end; (end = list.find(' ')) != string::npos; list.erase(0, end + 1))
            for (size_t block : {1, 16, 32, 64, 128, 256})
                for (size_t before = block < 16 ? 0 : block - 4; before < block + 2; before++)
                    for (size_t after : {0, 1, 15, 31, 64, 100, 127}) {
                        const string text =
                            string(before, 'x') + list.substr(0, end) + string(after, 'y');
                        const char* const exact = guarded(text);
                        EXPECT_EQ(utf8_validate(exact, text.size(), false), strict) << text;
                        EXPECT_EQ(utf8_validate(exact, text.size(), true), relaxed) << text;
                    }
    };
    check(RIGHT, true, true);
    check(OVERLONG, false, true);
    check(WRONG, false, false);
    check(string("a\0b \0 ", 6), false, false);
}

TEST(Utf8Validate, AgreesWithTheDecoderOnAllPairs) {
    for (int first = 0; first < 256; first++)
        for (int second = 0; second < 256; second++)
            for (const char* third : {"", "A", "\x80", "\xBF", "\xC2\x80"})
                for (bool relax : {false, true}) {
                    const string text = string(31, 'x') + static_cast<char>(first) +
                                        static_cast<char>(second) + third + string(33, 'y');
                    ASSERT_EQ(utf8_validate(text.data(), text.size(), relax),
                              plain_utf8_validate(text, relax))
                        << first << " " << second;
                }
}

// Each run is named for the library that it tests, which may be limited to narrower vectors.
TEST(Utf8Validate, RunsAtItsWidthOrSaysWhyNot) {
    const char* const variable = getenv("LD_LIBRARY_PATH");
    const string folders = variable == nullptr ? "" : variable;
    const string folder = folders.substr(0, folders.find(':'));
    Dl_info library;
    ASSERT_NE(dladdr(reinterpret_cast<void*>(&utf8_validate), &library), 0);
    EXPECT_EQ(string(library.dli_fname).find(folder), 0) << library.dli_fname;
    const int width = folder.ends_with("/narrow") ? 16 : folder.ends_with("/width32") ? 32 : 64;
    if (vector_bytes < width)
        GTEST_SKIP() << "left out: this processor has no vectors of " << width << " bytes for it";
}

TEST(Utf8, DecodesOneCharacter) {
    const std::tuple<const char*, wchar_t, int> CASES[] = {{"", 0, 1},
                                                           {"A", 'A', 1},
                                                           {"\xC3\xA9", 0xE9, 2},
                                                           {"\xC0\x80", 0, 2},
                                                           {"\xE2\x82\xAC", 0x20AC, 3},
                                                           {"\xED\xA0\xBD\xED\xB8\x80", 0xD83D, 3},
                                                           {"\x80", 0x80, 1},
                                                           {"\xF0\x9F", 0xF0, 1},
                                                           {"\xC3~", 0xC3, 1},
                                                           {"\xE2~", 0xE2, 1},
                                                           {"\xE2\x82~", 0xE2, 2},
                                                           {"\xE2\x82", 0xE2, 2}};
    for (const auto& [text, value, bytes] : CASES) {
        const char* cursor = text;
        EXPECT_EQ(next_utf2wchar(&cursor), value) << text;
        EXPECT_EQ(cursor - text, bytes) << text;
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
