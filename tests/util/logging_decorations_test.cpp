#include "support/platform.h"
#include "support/test_logger.h"

#include <gtest/gtest.h>

using Words = std::vector<unsigned>;

static char* nothing(char* position, size_t*) {
    return position;
}

struct Decorations : testing::Test {
    static logger *older, *newer;
    void SetUp() override {
        platform = Platform{};
        _log_set_decorations(nullptr, 0, 0x80000000);
    }
    static Words words() {
        return {_log_get_decorations(older, 0), _log_get_decorations(older, 1),
                _log_get_decorations(newer, 0)};
    }
};

logger* Decorations::older =
    make_logger({.modules = {{"o1"}, {"o2"}}, .decorators = {{"heap", nothing}, {"pid", nothing}}});
logger* Decorations::newer = make_logger(
    {.modules = {{"n1"}},
     .decorators = {{"unused", nullptr}, {nullptr, nothing}, {"Heap", nothing}, {"", nothing}}});

struct DecorationCase {
    const char* option;
    int result;
    Words words;  // of o1, o2 and n1
};

const DecorationCase CASES[] = {
    {"", 0, {0x46, 0x46, 0x46}},
    {nullptr, 0, {0x46, 0x46, 0x46}},
    {",", 0, {0, 0, 0}},
    {"level,MILLIS=anything,=x", 0, {9, 9, 0x409}},  // only the name of an item counts
    {"level,nosuch,pid", -1, {1, 1, 1}},
    {"Timestamp,module,nanos,osthreadid", 0, {0x36, 0x36, 0x36}},
    {"heap", 0, {0, 0, 1 << 9}},                       // the newer logger takes it first
    {"pid", 0, {0x40 | 1 << 8, 0x40 | 1 << 8, 0x40}},  // a standard and an extended one
    {"unused", -1, {0, 0, 0}},
};

TEST_F(Decorations, ReplaceWhatWasSet) {
    for (const DecorationCase& c : CASES)
        for (const auto parse :
             {+[](const char* args) { return logParseLogDecorations(args); },
              +[](const char* args) { return apply_log_decorations(nullptr, args); }}) {
            EXPECT_EQ(parse(c.option), c.result) << c.option;
            EXPECT_EQ(words(), c.words) << c.option;
        }
    EXPECT_EQ(platform.live_blocks, 0);
}

TEST_F(Decorations, ApplyToOneLoggerOnly) {
    _log_clear_decorations(nullptr, 0, ~0U);
    EXPECT_EQ(apply_log_decorations(older, "heap,level"), 0);
    EXPECT_EQ(apply_log_decorations(newer, nullptr), 0);
    EXPECT_EQ(words(), (Words{0x81, 0x81, 0x46}));
    char heap_name[] = "HEAP", level[] = "level";
    EXPECT_TRUE(apply_extended_log_decorations(newer, heap_name));
    EXPECT_FALSE(apply_extended_log_decorations(newer, level));
    EXPECT_EQ(words(), (Words{0x81, 0x81, 0x246}));
}
