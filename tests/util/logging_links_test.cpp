#include "support/temp_folder.h"
#include "support/test_logger.h"

#include <gtest/gtest.h>

using std::string;

static TestModule linked(const char* name) {
    return {.name = name, .is_linked = true};
}

TEST(Links, StartAsTheirTargetsAndAreReachedByName) {
    TempFolder folder;
    logger* first = make_logger({.modules = {{"first", "sample"}}, .msg_default = MSG_ERROR});
    _log_set_msglevel(first, 0, MSG_TRACE);
    _log_set_sanitylevel(first, 0, SANITY_DEBUG);
    _log_set_decorations(first, 0, 1);
    ASSERT_EQ(files("sample=" + folder.file("log")), 0);
    make_logger({{{"other"}, linked("sample")}});
    logger* last = make_logger({.modules = {linked("sample")}, .msg_default = MSG_INFO});
    EXPECT_TRUE(*last->loggers[0].pMsgLevel == MSG_TRACE &&
                *last->loggers[0].pSanityLevel == SANITY_DEBUG);
    ASSERT_EQ(logParseMsgLevelsEx("sample=debug", nullptr, 0, nullptr), 0);
    EXPECT_EQ(*first->loggers[0].pMsgLevel, MSG_DEBUG);  // two links away
    print(first, MSG_WARN, "first");
    ASSERT_EQ(files("first=stderr"), 0);  // each of them keeps the file open
    print(last, MSG_WARN, "last");
    EXPECT_EQ(read_file(folder.file("log")), "[WARN ] first\nlast\n");
}

// What "util" prints while a logger registers.
static string said_while_making(const std::vector<TestModule>& modules) {
    TempFolder folder;
    EXPECT_EQ(files("util=" + folder.file("util")), 0);
    make_logger({modules});
    EXPECT_EQ(files("util=stderr"), 0);
    return read_file(folder.file("util"));
}

TEST(Links, SayThatTheirTargetIsMissingAndWhichNamesOptionsMisread) {
    make_logger({.modules = {{"Missing"}},
                 .obsoletes = {{"missing", "Missing", 0, MSG_INFO, OBSOLETE_WARN}}});
    const string name(200, 'n'),
        missing = "[ERROR][util   ] Could not locate linked log module ",
        misread = "[WARN ][util   ] Options may misread the log module name ";
    EXPECT_EQ(said_while_making({{"twin"},
                                 linked("missing"),
                                 linked("twin"),
                                 linked(name.c_str()),
                                 {"twin"},
                                 {"a,b", ">c"},
                                 {"d", "d=\""},
                                 {"e", "\"f"},
                                 {"g'"}}),
              missing + "missing (No such logging module \"missing\")\n" + missing +
                  "twin (No such logging module \"twin\")\n" + missing + name +
                  " (No such logging module \"" + name.substr(0, 103) + ")\n" +
                  "[WARN ][util   ] Several log modules are named twin: options reach the first "
                  "one only\n" +
                  misread + "a,b\n" + misread + ">c\n" + misread + "d=\"\n" + misread + "\"f\n");
    ASSERT_EQ(logParseMsgLevelsEx("util=quiet", nullptr, 0, nullptr), 0);
    EXPECT_EQ(said_while_making({linked("absent"), {"a,b"}}), "");
}

// The option stays set after its test, so this test comes last.
TEST(RememberedDecorations, ReachLoggersThatRegisterLater) {
    logger* target = make_logger({.modules = {{"decorated"}}});
    EXPECT_EQ(logParseLogDecorations("pid,heap"), -1);  // remembered, with an unknown name
    logger* log = make_logger(
        {.modules = {{"d1"}, linked("decorated")}, .decorators = {{"heap", empty_decorator}}});
    _log_set_decorations(log, 0, 1);
    log->loggers[0].out = stdout;
    _log_add_logger(log);  // for the second time: no effect
    EXPECT_TRUE(log->loggers[0].out == stdout && log->loggers[0].decorations == 0xC1 &&
                log->loggers[1].decorations == 0xC0);
    EXPECT_EQ(target->loggers[0].decorations, 0xC0U);  // links included, as with every setting
    EXPECT_EQ(logParseLogDecorations(""), 0);
    EXPECT_EQ(make_logger({{{"d2"}}})->loggers[0].decorations, 0x46U);
}
