#include "support/heap.h"
#include "support/platform.h"
#include "support/test_logger.h"

#include <gtest/gtest.h>

static char* nothing(char* position, size_t*) {
    return position;
}

struct Decorations : testing::Test {
    struct Loggers {
        logger* older;
        logger* newer;
    };
    static const Loggers& loggers() {
        static const Loggers both = {
            make_logger(
                {.modules = {{"o1"}, {"o2"}}, .decorators = {{"heap", nothing}, {"pid", nothing}}}),
            make_logger({.modules = {{"n1"}},
                         .decorators = {{"unused", nullptr},
                                        {nullptr, nothing},
                                        {"Heap", nothing},
                                        {"phase", nothing},
                                        {"", nothing}}})};
        return both;
    }
    void SetUp() override {
        loggers();
        platform = Platform{};
        heap().failing_allocation = 0;
        _log_clear_decorations(nullptr, 0, ~0U);
        _log_set_decorations(nullptr, 0, 0x80000000);
    }
    static std::vector<unsigned> words() {
        return {_log_get_decorations(loggers().older, 0), _log_get_decorations(loggers().older, 1),
                _log_get_decorations(loggers().newer, 0)};
    }
};

using Words = std::vector<unsigned>;

struct DecorationCase {
    const char* option;
    int result;
    Words words;  // of o1, o2 and n1
};

const DecorationCase CASES[] = {
    {"", 0, {0x46, 0x46, 0x46}},
    {",", 0, {0, 0, 0}},
    {"level,millis", 0, {9, 9, 9}},
    {"LEVEL=anything,=x", 0, {1, 1, 0x801}},  // only the name of an item counts
    {"level,nosuch,pid", -1, {1, 1, 1}},
    {"Timestamp,MODULE,nanos,osthreadid", 0, {0x36, 0x36, 0x36}},
    {"heap", 0, {0, 0, 1 << 9}},  // the newer logger takes it first
    {"phase,level", 0, {1, 1, 1 << 10 | 1}},
    {"pid", 0, {0x40 | 1 << 8, 0x40 | 1 << 8, 0x40}},  // both a standard and an extended one
    {"unused", -1, {0, 0, 0}},
    {"level ", -1, {0, 0, 0}},
};

TEST_F(Decorations, ReplaceWhatWasSet) {
    for (const DecorationCase& c : CASES) {
        SCOPED_TRACE(c.option);
        EXPECT_EQ(logParseLogDecorations(c.option), c.result);
        EXPECT_EQ(words(), c.words);
        _log_clear_decorations(nullptr, 0, ~0U);
        EXPECT_EQ(apply_log_decorations(nullptr, c.option), c.result);
        EXPECT_EQ(words(), c.words);
    }
    EXPECT_EQ(platform.live_blocks, 0);
}

TEST_F(Decorations, ApplyToOneLoggerOnly) {
    EXPECT_EQ(apply_log_decorations(loggers().older, "heap,level"), 0);
    EXPECT_EQ(words(), (Words{0x81, 0x81, 0x80000000}));
    EXPECT_EQ(apply_log_decorations(loggers().older, "phase"), -1);
    EXPECT_EQ(apply_log_decorations(loggers().newer, nullptr), 0);
    EXPECT_EQ(words(), (Words{0, 0, 0x46}));
}

TEST_F(Decorations, FindExtendedOnesByName) {
    char heap_name[] = "HEAP", level[] = "level";
    EXPECT_TRUE(apply_extended_log_decorations(loggers().older, heap_name));
    EXPECT_FALSE(apply_extended_log_decorations(loggers().older, level));
    EXPECT_EQ(words(), (Words{0x80000080, 0x80000080, 0x80000000}));
}

TEST_F(Decorations, FailWhenMemoryRunsOutAndLeakNothing) {
    for (size_t failing : {1, 2, 3, 4}) {
        platform.failing_allocation = failing;
        EXPECT_EQ(logParseLogDecorations("level,module"), -1);
        EXPECT_EQ(words(), failing <= 2 ? (Words{0, 0, 0}) : (Words{1, 1, 1}));
        EXPECT_EQ(platform.live_blocks, 0);
    }
}

TEST_F(Decorations, ChangeNothingWhenTheStringCannotBeRemembered) {
    if (!heap().replaced)
        GTEST_SKIP() << "the sanitizer has its own allocator";
    ASSERT_EQ(logParseLogDecorations("level"), 0);
    const long live = heap().live_blocks;
    heap().failing_allocation = 1;
    EXPECT_EQ(logParseLogDecorations("module"), -1);
    heap().failing_allocation = 0;
    EXPECT_EQ(words(), (Words{1, 1, 1}));
    EXPECT_EQ(heap().live_blocks, live);
    EXPECT_EQ(logParseLogDecorations(nullptr), 0);
    EXPECT_EQ(words(), (Words{0x46, 0x46, 0x46}));
}
