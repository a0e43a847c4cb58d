#include "support/test_logger.h"

#include <gtest/gtest.h>
#include <thread>

static std::vector<std::string> walk_everything(logger* newest) {
    std::vector<std::string> names;
    logiter iter = {newest, nullptr, true, 0, newest->num_loggers};
    logmodule* m;
    while (logiter_next(&iter, &m))
        names.emplace_back(m->names[0]);
    return names;
}

TEST(Registry, StartsWithTheLibraryItself) {
    logger* util = library_logger(make_logger({{{"newer"}}}));
    ASSERT_EQ(util->num_loggers, 1U);
    EXPECT_STREQ(util->loggers[0].names[0], "util");
    EXPECT_EQ(util->loggers[0].names[1], nullptr);
    EXPECT_EQ(level_of(util, 0), MSG_WARN);
    EXPECT_EQ(*util->loggers[0].pSanityLevel, SANITY_NONE);
    EXPECT_EQ(_log_get_decorations(util, 0), 3U);
    EXPECT_EQ(util->loggers[0].out, stderr);
    EXPECT_EQ(util->loggers[0].log, util);
    EXPECT_EQ(util->max_decoration_size, 0U);
}

TEST(Registry, WalksNewestFirstWithLinksAndSkipsEmptyLoggers) {
    logger* oldest = make_logger({{{"o1"}, {"o2"}}});
    make_logger({{}});
    logger* middle = make_logger({{{"m1"}, {"m2"}}});
    logger* newest = make_logger({{{"n1"}}});
    link_modules(middle, 0, &oldest->loggers[1]);
    link_modules(newest, 0, &middle->loggers[0]);
    const std::vector<std::string> names = walk_everything(newest);
    const std::vector<std::string> expected = {"n1", "m1", "o2", "m1", "o2", "m2", "o1", "o2"};
    ASSERT_GE(names.size(), expected.size() + 1);
    EXPECT_EQ(std::vector<std::string>(names.begin(), names.begin() + 8), expected);
    EXPECT_EQ(names.back(), "util");
}

TEST(Registry, IgnoresASecondRegistration) {
    logger* log = make_logger({{{"once"}}});
    logger* const next = log->next;
    log->loggers[0].out = stdout;
    _log_add_logger(log);
    EXPECT_EQ(log->next, next);
    EXPECT_EQ(log->loggers[0].out, stdout);
}

TEST(Registry, RegistersFromManyThreadsWhileWalking) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; t++)
        threads.emplace_back([] {
            for (int i = 0; i < 50; i++) {
                logger* log = make_logger({{{"r1"}, {"r2"}}});
                _log_set_msglevel(nullptr, 0, MSG_INFO);
                EXPECT_EQ(level_of(log, 1), MSG_INFO);
            }
        });
    for (std::thread& t : threads)
        t.join();
    logger* last = make_logger({{{"last"}}});
    const std::vector<std::string> names = walk_everything(last);
    EXPECT_EQ(std::count(names.begin(), names.end(), "r2"), 200);
}

TEST(Registry, ListsTheAliasOnlyWhenThereIsOne) {
    logger* log = make_logger({{{"plain"}, {"long", "l"}}});
    int count = 0;
    EXPECT_STREQ(_log_get_aliases(log, 0, &count)[0], "plain");
    EXPECT_EQ(count, 1);
    EXPECT_STREQ(_log_get_aliases(log, 1, &count)[1], "l");
    EXPECT_EQ(count, 2);
}

// Three loggers; the middle one's second module follows the oldest one's first.
struct Selection : testing::Test {
    logger* oldest = make_logger(
        {.modules = {{"o1"}, {"o2"}}, .msg_default = MSG_ERROR, .sanity_default = SANITY_MINIMAL});
    logger* middle = make_logger({.modules = {{"m1"}, {"m2"}}, .msg_default = MSG_QUIET});
    logger* newest = make_logger({.modules = {{"n1"}}, .msg_default = MSG_INFO});

    void SetUp() override {
        link_modules(middle, 1, &oldest->loggers[0]);
    }

    std::vector<unsigned> words(unsigned (*word)(logmodule*)) const {
        std::vector<unsigned> all;
        for (logger* log : {oldest, middle, newest})
            for (size_t i = 0; i < log->num_loggers; i++)
                all.push_back(word(&log->loggers[i]));
        return all;
    }

    std::vector<unsigned> levels() const {
        return words([](logmodule* m) -> unsigned { return *m->pMsgLevel; });
    }
    std::vector<unsigned> sanities() const {
        return words([](logmodule* m) -> unsigned { return *m->pSanityLevel; });
    }
    std::vector<unsigned> decorations() const {
        return words([](logmodule* m) {
            return _log_get_decorations(m->log, static_cast<LogModule>(m - m->log->loggers));
        });
    }
};

using Words = std::vector<unsigned>;

TEST_F(Selection, ReachesOneModuleALoggerOrEverythingWithLinks) {
    _log_set_msglevel(oldest, 0, MSG_TRACE);
    EXPECT_EQ(levels(), (Words{5, 1, 0, 0, 3}));
    _log_set_msglevel(middle, LOG_ALL_MODULES, MSG_DEBUG);
    EXPECT_EQ(levels(), (Words{4, 1, 4, 4, 3}));
    _log_set_sanitylevel(middle, 1, SANITY_TRACE);
    EXPECT_EQ(sanities(), (Words{4, 1, 0, 4, 0}));
    _log_set_msglevel(nullptr, 5, MSG_WARN);
    EXPECT_EQ(levels(), (Words{2, 2, 2, 2, 2}));
    EXPECT_EQ(level_of(library_logger(newest), 0), MSG_WARN);
}

TEST_F(Selection, ResetsEachModuleToItsOwnLoggersDefault) {
    _log_set_msglevel(nullptr, 0, MSG_TRACE);
    _log_set_sanitylevel(nullptr, 0, SANITY_TRACE);
    logResetMsgLevels();
    EXPECT_EQ(levels(), (Words{1, 1, 0, 0, 3}));
    EXPECT_EQ(sanities(), (Words{4, 4, 4, 4, 4}));
    logResetSanityLevels();
    EXPECT_EQ(sanities(), (Words{1, 1, 0, 0, 0}));
}

TEST_F(Selection, SetsAndClearsDecorationBits) {
    _log_set_decorations(middle, 1, 0x86);
    EXPECT_EQ(decorations(), (Words{0x86, 0, 0, 0x86, 0}));
    _log_set_decorations(nullptr, 0, 1);
    _log_clear_decorations(oldest, LOG_ALL_MODULES, 0x81);
    EXPECT_EQ(decorations(), (Words{6, 0, 1, 0x87, 1}));
}

TEST_F(Selection, LosesNoDecorationBitToConcurrentChanges) {
    std::vector<std::thread> threads;
    for (unsigned bit = 0; bit < 4; bit++)
        threads.emplace_back([this, bit] {
            for (int i = 0; i < 20000; i++) {
                _log_clear_decorations(newest, 0, 1U << bit);
                _log_set_decorations(newest, 0, 1U << bit);
            }
        });
    for (std::thread& t : threads)
        t.join();
    EXPECT_EQ(_log_get_decorations(newest, 0), 15U);
}
