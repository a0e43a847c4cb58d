#include "support/temp_folder.h"
#include "support/test_logger.h"

#include <gtest/gtest.h>
#include <span>

using std::string;

static TestModule linked(const char* name) {
    return {.name = name, .is_linked = true};
}

static const logmodule& module(const logger* log, size_t index = 0) {
    return log->loggers[index];
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
    EXPECT_TRUE(module(second, 1).link == &module(first) && module(second).link == nullptr &&
                module(third).link == &module(second, 1));
    EXPECT_TRUE(*module(third).pMsgLevel == MSG_TRACE && *module(second).pMsgLevel == MSG_WARN);
    EXPECT_EQ(*module(third).pSanityLevel, SANITY_DEBUG);
    print(first, 0, MSG_WARN, "first");
    ASSERT_EQ(files("first=stderr"), 0);  // each of them keeps the file open
    print(second, 1, MSG_WARN, "second");
    print(third, 0, MSG_WARN, "third");
    EXPECT_EQ(read_file(folder.file("log")), "[WARN ] first\nsecond\nthird\n");
    const int descriptor = fileno(module(third).out);
    ASSERT_EQ(files("sample=stderr"), 0);
    std::error_code ignored;
    const string name = "/proc/self/fd/" + std::to_string(descriptor);
    EXPECT_NE(std::filesystem::read_symlink(name, ignored), folder.file("log"));

    const auto levels = [=] { return 10 * *module(first).pMsgLevel + *module(third).pMsgLevel; };
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
    const string missing = "[ERROR][util   ] Could not locate linked log module ";
    const string name(200, 'n');
    EXPECT_EQ(said_while_making({.modules = {{"twin"}, linked("missing"), linked(name.c_str())},
                                 .msg_default = MSG_INFO}),
              missing + "missing (No such logging module \"missing\")\n" + missing + name +
                  " (No such logging module \"" + name.substr(0, 103) + ")\n");
    const string unreachable = "[WARN ][util   ] Options cannot reach a log module named ";
    EXPECT_EQ(said_while_making(
                  {.modules = {{"a,b", ">c"}, {"d", "d=\""}, {"e", "\"f"}, {"g'"}, {"e"}, {"e"}}}),
              unreachable + "a,b\n" + unreachable + ">c\n" + unreachable + "d=\"\n" + unreachable +
                  "\"f\n[WARN ][util   ] Several log modules are named e: "
                  "options reach the first one only\n");
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
    EXPECT_TRUE(module(log).out == stdout && module(log).decorations == 0xC1 &&
                module(log, 1).decorations == 0xC0);
    EXPECT_EQ(module(target).decorations, 0xC0U);  // as with every setting, the links, too
    EXPECT_EQ(logParseLogDecorations(""), 0);
    EXPECT_EQ(module(make_logger({.modules = {{"d2"}}})).decorations, 0x46U);
}
