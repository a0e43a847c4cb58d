#include "util/export/arguments.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using std::string;

struct WalkCase {
    const char *text, *items;  // each '@' stands for some characters
    char delim = ',';
};

const WalkCase WALK_CASES[] = {
    {",,,", ""},
    {",a=1,,@=2,", "<a:1><@:2>"},
    {"@,a=,=@", "<@:><a:><:@>"},
    {" a = @,b=@=d", "< a : @><b:@=d>"},
    {"a='@,y',@=\"it's\"", "<a:@,y><@:it's>"},
    {"a='@\\'s',b", "<a:@\\'s><b:>"},
    {"a='@\\'',b", "<a:@\\'><b:>"},
    {"a='x\\\\',@'", "<a:x\\\\',@>"},  // a backslash counts even after another one
    {"@='x'@,b", "<@:x><b:>"},
    {"a='@,b=2", "<a:@,b=2>"},
    {"@=\"b", "<@:b>"},
    {"@=x'y,z='", "<@:x'y><z:>"},  // quotes count only at the start of a value
    {"x=@  y=2", "<x:@><y:2>", ' '},
    {"a='b'c'@", "<a:b><c:><@:>", '\''},
};

// The text is copied to a block of exactly its size, so that the address sanitizer watches its end.
static string walk(const string& text, char delim) {
    const std::vector<char> exact(text.begin(), text.end());
    string items;
    ArgIter iter;
    argIterInit(&iter, exact.data(), exact.size(), delim);
    while (!argIterDone(&iter)) {
        argIterNext(&iter);
        EXPECT_LE(iter.n_len + iter.v_len, exact.size());
        items += "<" + string(iter.name, iter.n_len) + ":" + string(iter.value, iter.v_len) + ">";
    }
    argIterNext(&iter);  // stays at the end
    EXPECT_TRUE(argIterDone(&iter) && iter.n_len + iter.v_len == 0);
    EXPECT_FALSE(argIterGetNext(&iter, nullptr, nullptr));
    return items;
}

static string stretched(string text, size_t length) {
    for (size_t at = 0; (at = text.find('@', at)) != text.npos;)
        text.replace(at, 1, length, '\xE9');
    return text;
}

// Lengths that move the text after them across the ends of the iterator's blocks.
TEST(ArgIter, SplitsTextIntoItems) {
    for (size_t length = 1; length <= 40; length++)
        for (const auto& [text, items, delim] : WALK_CASES)
            EXPECT_EQ(walk(stretched(text, length), delim), stretched(items, length));
}

// Its items have no meaning, but they lie within the text.
TEST(ArgIter, StaysWithinTheTextWhenTheDelimiterIsAnEqualsSign) {
    for (size_t length = 0; length < 70; length++)
        walk("a=b=" + string(length, 'c') + "=d", '=');
}
