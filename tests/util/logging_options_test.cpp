#include "support/heap.h"
#include "support/platform.h"
#include "support/temp_folder.h"
#include "support/test_logger.h"

#include <gtest/gtest.h>
#include <map>
#include <span>

static std::vector<std::string> advice;

static int note_advice(const char* message) {
    advice.emplace_back(message);
    return 1;  // ignored
}

// An older and a newer logger. Some of the newer one's retired names hide, or are hidden by, live
// modules.
struct Options : testing::Test {
    struct Loggers {
        logger* older;
        logger* newer;
    };
    static const Loggers& loggers() {
        static const Loggers both = {
            make_logger({.modules = {{"gc", "collector", true}, {"debug"}, {"hidden"}},
                         .obsoletes = {{"from older", "gc", 0, MSG_TRACE, OBSOLETE_WARN}}}),
            make_logger(
                {.modules = {{"jit", nullptr, true}, {"code"}},
                 .obsoletes = {{"compiler", "jit", 0, MSG_DEBUG, OBSOLETE_WARN},
                               {"old", "compiler", 0, MSG_INFO, OBSOLETE_WARN},
                               {"rejected", "jit", 0, MSG_WARN, OBSOLETE_FAIL},
                               {"removed", nullptr, 0, MSG_QUIET, OBSOLETE_WARN},
                               {"dangling", "nowhere", 0, MSG_INFO, OBSOLETE_WARN},
                               {"to removed", "removed", 0, MSG_INFO, OBSOLETE_WARN},
                               {"circle", "elcric", 0, MSG_INFO, OBSOLETE_WARN},
                               {"elcric", "circle", 0, MSG_INFO, OBSOLETE_WARN},
                               {"hidden", "jit", 0, MSG_INFO, OBSOLETE_WARN},
                               {"code", "jit", 0, MSG_INFO, OBSOLETE_FAIL},
                               {"across", "gc", LOG_ALL_MODULES, MSG_INFO, OBSOLETE_WARN}}})};
        return both;
    }

    void SetUp() override {
        loggers();
        platform = Platform{};
        advice.clear();
        logResetMsgLevels();
        logResetSanityLevels();
    }
    void TearDown() override {
        logParseLogFilesEx("stderr", nullptr, 0, nullptr);
    }

    // Levels of gc, debug, hidden, jit, code and util, a digit each.
    template <typename Level>
    static std::string digits(Level* logmodule::*cell) {
        std::string all;
        for (logger* log : {loggers().older, loggers().newer, library_logger(loggers().older)})
            for (size_t i = 0; i < log->num_loggers; i++)
                all += static_cast<char>('0' + *(log->loggers[i].*cell));
        return all;
    }
    static std::string levels() {
        return digits(&logmodule::pMsgLevel);
    }
    static std::string sanities() {
        return digits(&logmodule::pSanityLevel);
    }
};

using Parser = int (*)(const char*, char*, size_t, int (*)(const char*));

struct OptionCase {
    const char* option;
    const char* levels;  // after it
    const char* error;   // null when it is accepted
};

static void expect_cases(Parser parse, std::string (*levels)(), void (*reset)(),
                         std::span<const OptionCase> cases) {
    for (const OptionCase& c : cases) {
        SCOPED_TRACE(c.option);
        reset();
        char error[300] = "untouched";
        EXPECT_EQ(parse(c.option, error, sizeof error, note_advice), c.error == nullptr ? 0 : -1);
        EXPECT_EQ(levels(), c.levels);
        if (c.error != nullptr) {
            EXPECT_STREQ(error, c.error);
        }
    }
}

const OptionCase LEVEL_CASES[] = {
    {",,", "222222", nullptr},
    {"util=DeBuG", "222224", nullptr},
    {"util", "222223", nullptr},
    {"util=", "222223", nullptr},
    {"util='trace'", "222225", nullptr},
    {"collector=quiet", "022222", nullptr},
    {"info,util=trace", "333335", nullptr},
    {"util=trace,info", "333333", nullptr},
    {"TRACE=", "555555", nullptr},
    {"debug", "232222", nullptr},  // the module, not the level
    {"debug=error", "212222", nullptr},
    {"hidden=error", "222122", nullptr},  // the newer logger's retired name hides the older module
    {"code=error", "222212", nullptr},    // a module hides its own logger's retired name
    {"across=error", "122222", nullptr},
    {"old=error", "222122", nullptr},
    {"from older=error", "122222", nullptr},
    {"util=trace,bogus,util=quiet", "222225", "No such logging module \"bogus\""},
    {"UTIL=debug", "222222", "No such logging module \"UTIL\""},
    {"bogus=debug", "222222", "No such logging module \"bogus\""},
    {"=debug", "222222", "No such logging module \"\""},
    {" util=debug", "222222", "No such logging module \" util\""},
    {"util= debug", "222222", "Illegal message level ' debug'."},
    {"util=3", "222222", "Illegal message level '3'."},
    {"util=>gc", "222222", "Illegal message level '>gc'."},
    {"util=check", "222222", "Illegal message level 'check'."},
    {"removed=debug", "222222", "Logging module removed is deprecated"},
    {"removed", "222222", "Logging module removed is deprecated"},
    {"rejected=debug", "222222",
     "Logging module rejected is deprecated. Please use jit=WARN instead."},
    {"dangling=debug", "222222",
     "Logging module dangling is deprecated. Please use nowhere=INFO instead."},
    {"to removed=debug", "222222",
     "Logging module to removed is deprecated. Please use removed=INFO instead."},
    {"circle=debug", "222222",
     "Logging module circle is deprecated. Please use elcric=INFO instead."},
};

TEST_F(Options, SetMessageLevels) {
    expect_cases(logParseMsgLevelsEx, levels, logResetMsgLevels, LEVEL_CASES);
}

const OptionCase SANITY_CASES[] = {
    {"util", "000002", nullptr},
    {"minimal", "111111", nullptr},
    {"check,jit=TRACE,gc=none", "022422", nullptr},
    {"jit=info", "000000", "Illegal sanity level 'info'."},
    {"info", "000000", "No such logging module \"info\""},
};

TEST_F(Options, SetSanityLevels) {
    expect_cases(logParseSanityLevelsEx, sanities, logResetSanityLevels, SANITY_CASES);
}

const OptionCase FILE_CASES[] = {
    {"util", "", "Could not open stream ''"},
    {"gc=/no/file", "", "Could not open stream '/no/file'"},
    {"/no/file", "", "No such logging module \"/no/file\""},
    {"gc=>bogus", "", "No such log module 'bogus'."},
    {"gc=>", "", "No such log module ''."},
    {"gc=>rejected", "", "No such log module 'rejected'."},
    {"bogus=stdout", "", "No such logging module \"bogus\""},
    {">bogus", "", "No such logging module \">bogus\""},
    {"gc='stdout'", "", nullptr},
    {"stderr=", "", nullptr},
    {"jit=>removed", "", "No such log module 'removed'."},
};

TEST_F(Options, RejectFilesAndTargets) {
    expect_cases(
        logParseLogFilesEx, [] { return std::string(); }, [] {}, FILE_CASES);
}

TEST_F(Options, TakeTheEmptyString) {
    for (const char* empty : {"", static_cast<const char*>(nullptr)}) {
        logResetMsgLevels();
        logResetSanityLevels();
        EXPECT_EQ(logParseMsgLevelsEx(empty, nullptr, 0, nullptr), 0);
        EXPECT_EQ(levels(), "322322");
        EXPECT_EQ(logParseSanityLevelsEx(empty, nullptr, 0, nullptr), 0);
        EXPECT_EQ(sanities(), "222222");
        EXPECT_EQ(logParseLogFilesEx(empty, nullptr, 0, nullptr), 0);
    }
}

TEST_F(Options, ReachLinkedModules) {
    logger* linked = make_logger({{{"gc"}}});
    link_modules(linked, 0, &loggers().older->loggers[0]);
    EXPECT_EQ(logParseMsgLevelsEx("gc=trace", nullptr, 0, nullptr), 0);
    EXPECT_EQ(levels(), "522222");
    EXPECT_EQ(logParseLogFilesEx("gc=stdout", nullptr, 0, nullptr), 0);
    EXPECT_EQ(loggers().older->loggers[0].out, stdout);
    linked->loggers[0].names[0] = "linked no more";
}

TEST_F(Options, PassAdviceToTheCaller) {
    const std::map<std::string, std::vector<std::string>> cases = {
        {"old=error",
         {"Logging module old is deprecated. Please use compiler=INFO instead.",
          "Logging module compiler is deprecated. Please use jit=DEBUG instead."}},
        {"dangling", {"Logging module dangling is deprecated. Please use nowhere=INFO instead."}},
        {"rejected", {}},
        {"removed", {}},
    };
    for (const auto& [option, expected] : cases) {
        advice.clear();
        logParseMsgLevelsEx(option.c_str(), nullptr, 0, note_advice);
        EXPECT_EQ(advice, expected) << option;
    }
    EXPECT_EQ(logParseMsgLevelsEx("circle", nullptr, 0, note_advice), -1);
}

// Without a callback, and always behind ">", the advice is a warning of "util".
TEST_F(Options, PrintAdviceAsAWarning) {
    TempFolder folder;
    const std::string to_file = "util=" + folder.file("log");
    ASSERT_EQ(logParseLogFilesEx(to_file.c_str(), nullptr, 0, nullptr), 0);
    EXPECT_EQ(logParseMsgLevelsEx("compiler=debug", nullptr, 0, nullptr), 0);
    EXPECT_EQ(logParseLogFilesEx("gc=>compiler", nullptr, 0, note_advice), 0);
    EXPECT_EQ(logParseMsgLevelsEx("util=error,compiler=debug", nullptr, 0, nullptr), 0);
    const std::string line =
        "[WARN ][util   ] Logging module compiler is deprecated. Please use jit=DEBUG instead.\n";
    EXPECT_EQ(read_file(folder.file("log")), line + line);
    EXPECT_TRUE(advice.empty());
}

TEST_F(Options, CutMessagesToTheCallersBuffer) {
    const std::string name(5000, 'n');
    const std::string whole = "No such logging module \"" + name + "\"";
    for (size_t size : {1, 2, 25, 100}) {
        std::vector<char> error(size + 1, '#');
        EXPECT_EQ(logParseMsgLevelsEx(name.c_str(), error.data(), size, nullptr), -1);
        EXPECT_EQ(error.data(), whole.substr(0, size - 1));
        EXPECT_EQ(error[size], '#');
    }
    char untouched = '#';
    EXPECT_EQ(logParseMsgLevelsEx(name.c_str(), &untouched, 0, nullptr), -1);
    EXPECT_EQ(untouched, '#');
    EXPECT_EQ(logParseLogFilesEx(("gc=" + name).c_str(), nullptr, 100, nullptr), -1);
}

TEST_F(Options, CutAdviceAfter255Characters) {
    static const std::string long_name(300, 'l');
    make_logger({.modules = {{"m"}},
                 .obsoletes = {{"retired", long_name.c_str(), 0, MSG_INFO, OBSOLETE_WARN}}});
    char error[600];
    EXPECT_EQ(logParseMsgLevelsEx("retired", error, sizeof error, note_advice), -1);
    EXPECT_EQ(std::string(error).size(), 255U);
    EXPECT_EQ(advice, std::vector<std::string>{error});
}

TEST_F(Options, StopWhenMemoryRunsOutAndLeakNothing) {
    char error[64];
    size_t failing = 1;
    for (; failing < 100; failing++) {
        logResetMsgLevels();
        platform.failing_allocation = failing;
        if (logParseMsgLevelsEx("gc=trace,jit=trace", error, sizeof error, note_advice) == 0)
            break;
        EXPECT_STREQ(error, "argIterGetNext failed. Out of memory?");
        EXPECT_EQ(levels(), failing <= 2 ? "222222" : "522222");
        EXPECT_EQ(platform.live_blocks, 0);
    }
    EXPECT_EQ(failing, 5U);
    EXPECT_EQ(platform.live_blocks, 0);
}
