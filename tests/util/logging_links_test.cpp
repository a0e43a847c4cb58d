#include "support/temp_folder.h"
#include "support/test_logger.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <thread>

using std::string;
using Levels = std::vector<unsigned>;

static TestModule linked(const char* name) {
    return {.name = name, .is_linked = true};
}

static const logmodule& module(const logger* log, size_t index = 0) {
    return log->loggers[index];
}

static Levels levels(std::initializer_list<const logger*> logs) {
    Levels all;
    for (const logger* log : logs)
        all.push_back(*module(log).pMsgLevel);
    return all;
}

TEST(Links, StartAsTheirTargetsAndAreReachedByName) {
    TempFolder folder;
    const string file = "sample=" + folder.file("sample.log");
    logger* first = make_logger({.modules = {{"first", "sample"}}, .msg_default = MSG_ERROR});
    _log_set_msglevel(first, 0, MSG_TRACE);
    _log_set_sanitylevel(first, 0, SANITY_DEBUG);
    _log_set_decorations(first, 0, 1);
    ASSERT_EQ(logParseLogFilesEx(file.c_str(), nullptr, 0, nullptr), 0);

    logger* second = make_logger({.modules = {{"other"}, linked("sample")}});
    logger* third = make_logger({.modules = {linked("sample")}, .msg_default = MSG_INFO});
    EXPECT_EQ(module(second, 1).link, &module(first));
    EXPECT_EQ(module(third).link, &module(second, 1));
    EXPECT_EQ(module(second).link, nullptr);
    EXPECT_TRUE(*module(third).pMsgLevel == MSG_TRACE && *module(second).pMsgLevel == MSG_WARN);
    EXPECT_EQ(*module(third).pSanityLevel, SANITY_DEBUG);
    print(third, 0, MSG_WARN, "third");
    print(second, 1, MSG_WARN, "second");
    print(first, 0, MSG_WARN, "first");
    EXPECT_EQ(read_file(folder.file("sample.log")), "third\nsecond\n[WARN ] first\n");

    ASSERT_EQ(logParseMsgLevelsEx("sample=debug", nullptr, 0, nullptr), 0);
    EXPECT_EQ(levels({first, third}), (Levels{MSG_DEBUG, MSG_DEBUG}));
    _log_set_msglevel(second, 1, MSG_INFO);
    EXPECT_EQ(levels({first, third}), (Levels{MSG_INFO, MSG_DEBUG}));
    logResetMsgLevels();
    EXPECT_EQ(levels({first, third}), (Levels{MSG_ERROR, MSG_INFO}));
    logParseLogFilesEx("stderr", nullptr, 0, nullptr);
}

// A linked module counts as a user of its target's file, no more and no less.
TEST(Links, KeepTheirTargetsFileOpenUntilTheyLeaveIt) {
    TempFolder folder;
    const string file = "keeper=" + folder.file("log");
    logger* target = make_logger({.modules = {{"keeper", "target"}}});
    ASSERT_EQ(logParseLogFilesEx(file.c_str(), nullptr, 0, nullptr), 0);
    const int descriptor = fileno(module(target).out);
    logger* follower = make_logger({.modules = {linked("keeper")}});
    ASSERT_EQ(logParseLogFilesEx("target=stderr", nullptr, 0, nullptr), 0);
    print(follower, 0, MSG_WARN, "line");
    EXPECT_EQ(read_file(folder.file("log")), "line\n");
    ASSERT_EQ(logParseLogFilesEx("keeper=stderr", nullptr, 0, nullptr), 0);
    EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
}

// What "util" prints while a logger registers.
static string said_while_making(const TestLoggerParts& parts, logger** made) {
    TempFolder folder;
    EXPECT_EQ(logParseLogFilesEx(("util=" + folder.file("util")).c_str(), nullptr, 0, nullptr), 0);
    *made = make_logger(parts);
    EXPECT_EQ(logParseLogFilesEx("util=stderr", nullptr, 0, nullptr), 0);
    return read_file(folder.file("util"));
}

TEST(Links, SayOnceThatATargetIsMissing) {
    make_logger({.modules = {{"Missing"}},
                 .obsoletes = {{"missing", "Missing", 0, MSG_INFO, OBSOLETE_WARN}}});
    logger *log, *later;
    const string name(200, 'n');
    EXPECT_EQ(said_while_making(
                  {.modules = {{"twin"}, linked("missing"), linked("twin"), linked(name.c_str())},
                   .msg_default = MSG_INFO},
                  &log),
              "[ERROR][util   ] Could not locate linked log module missing "
              "(No such logging module \"missing\")\n"
              "[ERROR][util   ] Could not locate linked log module twin "
              "(No such logging module \"twin\")\n"
              "[ERROR][util   ] Could not locate linked log module " +
                  name + " (No such logging module \"" + name.substr(0, 103) +
                  ")\n"
                  "[WARN ][util   ] Several log modules are named twin: "
                  "options reach the first one only\n");
    EXPECT_EQ(said_while_making({.modules = {{"a,b", ">c"}, {"d", "d=\""}, {"e", "\"f"}, {"g'"}}},
                                &later),
              "[WARN ][util   ] Options cannot reach a log module named a,b\n"
              "[WARN ][util   ] Options cannot reach a log module named >c\n"
              "[WARN ][util   ] Options cannot reach a log module named d=\"\n"
              "[WARN ][util   ] Options cannot reach a log module named \"f\n");
    for (size_t i = 1; i < 4; i++)
        EXPECT_TRUE(module(log, i).link == nullptr && module(log, i).out == stderr &&
                    *module(log, i).pMsgLevel == MSG_INFO);
    ASSERT_EQ(logParseMsgLevelsEx("util=quiet", nullptr, 0, nullptr), 0);
    EXPECT_EQ(said_while_making({.modules = {linked("absent"), {"missing"}}}, &later), "");
    EXPECT_EQ(module(log, 1).link, nullptr);
    logResetMsgLevels();
}

static char* nothing(char* position, size_t*) {
    return position;
}

// The option outlives its test: these come last.

TEST(RememberedDecorations, ReachLoggersThatRegisterLater) {
    logger* target = make_logger({.modules = {{"decorated"}}});
    EXPECT_EQ(logParseLogDecorations("pid,heap"), -1);  // remembered, with an unknown name
    logger* log =
        make_logger({.modules = {{"d1"}, linked("decorated")}, .decorators = {{"heap", nothing}}});
    EXPECT_TRUE(module(log).decorations == 0xC0 && module(log, 1).decorations == 0xC0);
    EXPECT_EQ(module(target).decorations, 0xC0U);  // as with every setting, the links, too
    _log_set_decorations(log, 0, 1);
    _log_add_logger(log);  // for the second time: no effect
    EXPECT_EQ(module(log).decorations, 0xC1U);
    EXPECT_EQ(logParseLogDecorations(""), 0);
    EXPECT_EQ(module(make_logger({.modules = {{"d2"}}})).decorations, 0x46U);
}

TEST(RememberedDecorations, MissNoLoggerThatRegistersMeanwhile) {
    std::vector<logger*> made;
    std::thread loader([&] {
        for (int i = 0; i < 200; i++)
            made.push_back(make_logger({.modules = {{"d"}}}));
    });
    for (int i = 0; i < 200; i++)
        logParseLogDecorations(i % 2 == 0 ? "level,module" : "millis");
    loader.join();
    for (const logger* log : made)
        EXPECT_EQ(module(log).decorations, 8U);
}
