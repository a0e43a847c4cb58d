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
    logger* util = util_module(make_logger({{{"newer"}}}))->log;
    int count = 0;
    EXPECT_STREQ(_log_get_aliases(util, 0, &count)[0], "util");
    EXPECT_TRUE(count == 1 && util->num_loggers == 1 && util->loggers[0].out == stderr);
    EXPECT_EQ(*util->loggers[0].pMsgLevel, MSG_WARN);
    EXPECT_EQ(*util->loggers[0].pSanityLevel, SANITY_NONE);
    EXPECT_EQ(_log_get_decorations(util, 0), 3U);
}

TEST(Registry, WalksNewestFirstWithLinksSkipsEmptyLoggersAndIgnoresASecondRegistration) {
    logger* oldest = make_logger({{{"o1"}, {"o2"}}});
    make_logger({{}});
    logger* middle = make_logger({{{"m1"}, {"m2"}}});
    logger* newest = make_logger({{{"n1"}}});
    middle->loggers[0].link = &oldest->loggers[1];
    newest->loggers[0].link = &middle->loggers[0];
    newest->loggers[0].out = stdout;
    _log_add_logger(newest);
    EXPECT_EQ(newest->loggers[0].out, stdout);
    std::vector<std::string> names = walk_everything(newest);
    names.resize(8);
    EXPECT_EQ(names, (std::vector<std::string>{"n1", "m1", "o2", "m1", "o2", "m2", "o1", "o2"}));
}

TEST(Registry, RegistersFromManyThreadsWhileWalking) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; t++)
        threads.emplace_back([] {
            for (int i = 0; i < 50; i++) {
                make_logger({{{"r"}}});
                _log_set_msglevel(nullptr, 0, MSG_INFO);
            }
        });
    for (std::thread& t : threads)
        t.join();
    const std::vector<std::string> names = walk_everything(make_logger({{{"last"}}}));
    EXPECT_EQ(std::count(names.begin(), names.end(), "r"), 200);
}

using Words = std::vector<unsigned>;

// Three loggers; the middle one's second module follows the oldest one's first.
struct Selection : testing::Test {
    logger* oldest = make_logger(
        {.modules = {{"o1"}, {"o2"}}, .msg_default = MSG_ERROR, .sanity_default = SANITY_MINIMAL});
    logger* middle = make_logger({.modules = {{"m1"}, {"m2"}}, .msg_default = MSG_QUIET});
    logger* newest = make_logger({.modules = {{"n1"}}, .msg_default = MSG_INFO});

    void SetUp() override {
        middle->loggers[1].link = &oldest->loggers[0];
    }
    Words words(unsigned (*word)(const logmodule&)) const {
        Words all;
        for (logger* log : {oldest, middle, newest})
            for (size_t i = 0; i < log->num_loggers; i++)
                all.push_back(word(log->loggers[i]));
        return all;
    }
};

static unsigned level(const logmodule& m) {
    return *m.pMsgLevel;
}

static unsigned sanity(const logmodule& m) {
    return *m.pSanityLevel;
}

static unsigned decorations(const logmodule& m) {
    return m.decorations;
}

TEST_F(Selection, ReachesOneModuleALoggerOrEverythingWithLinks) {
    _log_set_msglevel(oldest, 0, MSG_TRACE);
    EXPECT_EQ(words(level), (Words{5, 1, 0, 0, 3}));
    _log_set_msglevel(middle, LOG_ALL_MODULES, MSG_DEBUG);
    EXPECT_EQ(words(level), (Words{4, 1, 4, 4, 3}));
    _log_set_sanitylevel(middle, 1, SANITY_TRACE);
    EXPECT_EQ(words(sanity), (Words{4, 1, 0, 4, 0}));
    _log_set_decorations(middle, 1, 0x86);
    EXPECT_EQ(words(decorations), (Words{0x86, 0, 0, 0x86, 0}));
    _log_set_decorations(nullptr, 5, 1);
    _log_clear_decorations(oldest, LOG_ALL_MODULES, 0x81);
    EXPECT_EQ(words(decorations), (Words{6, 0, 1, 0x87, 1}));
    _log_set_msglevel(nullptr, 5, MSG_TRACE);
    EXPECT_EQ(*util_module(newest)->pMsgLevel, MSG_TRACE);
    logResetMsgLevels();
    EXPECT_EQ(words(level), (Words{1, 1, 0, 0, 3}));
    logResetSanityLevels();
    EXPECT_EQ(words(sanity), (Words{1, 1, 0, 0, 0}));
}
