#include "support/temp_folder.h"
#include "support/test_logger.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <span>

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
    logger* second = make_logger({.modules = {{"other"}, linked("sample")}});
    logger* third = make_logger({.modules = {linked("sample")}, .msg_default = MSG_INFO});
    EXPECT_TRUE(second->loggers[1].link == &first->loggers[0] &&
                second->loggers[0].link == nullptr &&
                third->loggers[0].link == &second->loggers[1]);
    EXPECT_TRUE(*third->loggers[0].pMsgLevel == MSG_TRACE &&
                *second->loggers[0].pMsgLevel == MSG_WARN);
    EXPECT_EQ(*third->loggers[0].pSanityLevel, SANITY_DEBUG);
    print(first, 0, MSG_WARN, "first");
    ASSERT_EQ(files("first=stderr"), 0);  // each of them keeps the file open
    print(second, 1, MSG_WARN, "second");
    print(third, 0, MSG_WARN, "third");
    EXPECT_EQ(read_file(folder.file("log")), "[WARN ] first\nsecond\nthird\n");
    const int descriptor = fileno(third->loggers[0].out);
    ASSERT_EQ(files("sample=stderr"), 0);
    EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
    const auto levels = [=] {
        return 10 * *first->loggers[0].pMsgLevel + *third->loggers[0].pMsgLevel;
    };
    ASSERT_EQ(logParseMsgLevelsEx("sample=debug", nullptr, 0, nullptr), 0);
    EXPECT_EQ(levels(), 44);
    _log_set_msglevel(second, 1, MSG_INFO);
    EXPECT_EQ(levels(), 34);
    logResetMsgLevels();
    EXPECT_EQ(levels(), 13);
}

// What "util" prints while a logger registers.
static string said_while_making(const TestLoggerParts& parts) {
    TempFolder folder;
    EXPECT_EQ(files("util=" + folder.file("util")), 0);
    logger* made = make_logger(parts);
    EXPECT_EQ(files("util=stderr"), 0);
    for (const logmodule& m : std::span(made->loggers, made->num_loggers))
        EXPECT_TRUE(m.link == nullptr && m.out == stderr && *m.pMsgLevel == parts.msg_default);
    return read_file(folder.file("util"));
}

TEST(Links, SayOnceThatATargetIsMissing) {
    make_logger({.modules = {{"Missing"}},
                 .obsoletes = {{"missing", "Missing", 0, MSG_INFO, OBSOLETE_WARN}}});
    const string name(200, 'n');
    const TestLoggerParts parts = {
        {{"twin"}, linked("missing"), linked("twin"), linked(name.c_str()), {"twin"}}};
    EXPECT_EQ(
        said_while_making(parts),
        R"([ERROR][util   ] Could not locate linked log module missing (No such logging module "missing")
[ERROR][util   ] Could not locate linked log module twin (No such logging module "twin")
[ERROR][util   ] Could not locate linked log module )" +
            name + " (No such logging module \"" + name.substr(0, 103) + R"()
[WARN ][util   ] Several log modules are named twin: options reach the first one only
)");
    EXPECT_EQ(said_while_making({{{"a,b", ">c"}, {"d", "d=\""}, {"e", "\"f"}, {"g'"}}}),
              R"([WARN ][util   ] Options may misread the log module name a,b
[WARN ][util   ] Options may misread the log module name >c
[WARN ][util   ] Options may misread the log module name d="
[WARN ][util   ] Options may misread the log module name "f
)");
    ASSERT_EQ(logParseMsgLevelsEx("util=quiet", nullptr, 0, nullptr), 0);
    EXPECT_EQ(said_while_making({.modules = {linked("absent"), {"a,b"}}}), "");
    logResetMsgLevels();
}

// The option outlives its test: this one comes last.
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
    EXPECT_EQ(target->loggers[0].decorations, 0xC0U);  // as with every setting, the links, too
    EXPECT_EQ(logParseLogDecorations(""), 0);
    EXPECT_EQ(make_logger({{{"d2"}}})->loggers[0].decorations, 0x46U);
}
