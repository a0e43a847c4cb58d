#include "support/platform.h"
#include "support/temp_folder.h"
#include "support/test_logger.h"

#include <gtest/gtest.h>
#include <span>

static std::string advice;

static int note_advice(const char* message) {
    advice += std::string(message) + "\n";
    return 1;  // ignored
}

// Some of the newer logger's retired names hide, or are hidden by, live modules.
static const std::string LONG_NAME(300, 'l');
static logger* const older =
    make_logger({.modules = {{"gc", "collector", true}, {"debug"}, {"hidden"}}});
static logger* const newer =
    make_logger({.modules = {{"jit", nullptr, true}, {"code"}},
                 .obsoletes = {{"compiler", "jit", 0, MSG_DEBUG, OBSOLETE_WARN},
                               {"old", "compiler", 0, MSG_INFO, OBSOLETE_WARN},
                               {"rejected", "jit", 0, MSG_WARN, OBSOLETE_FAIL},
                               {"unleveled", "jit", 0, static_cast<MsgLevel>(9), OBSOLETE_FAIL},
                               {"removed", nullptr, 0, MSG_QUIET, OBSOLETE_WARN},
                               {"dangling", "nowhere", 0, MSG_INFO, OBSOLETE_WARN},
                               {"to removed", "removed", 0, MSG_INFO, OBSOLETE_WARN},
                               {"circle", "elcric", 0, MSG_INFO, OBSOLETE_WARN},
                               {"elcric", "circle", 0, MSG_INFO, OBSOLETE_WARN},
                               {"hidden", "jit", 0, MSG_INFO, OBSOLETE_WARN},
                               {"code", "jit", 0, MSG_INFO, OBSOLETE_FAIL},
                               {"across", "gc", LOG_ALL_MODULES, MSG_INFO, OBSOLETE_WARN},
                               {"long", LONG_NAME.c_str(), 0, MSG_INFO, OBSOLETE_WARN}}});

// Levels of gc, debug, hidden, jit, code and util, a digit each.
template <typename Level>
static std::string digits(Level* logmodule::*cell) {
    std::string all;
    for (logger* log : {older, newer, util_module(older)->log})
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

struct OptionCase {
    const char* option;
    const char* levels;           // after it
    const char* error = nullptr;  // null when it is accepted
};

using Parser = int (*)(const char*, char*, size_t, int (*)(const char*));

static void expect_cases(Parser parse, std::string (*result)(), std::span<const OptionCase> cases) {
    for (const OptionCase& c : cases) {
        SCOPED_TRACE(c.option != nullptr ? c.option : "null");
        logResetMsgLevels();
        logResetSanityLevels();
        char error[300] = "untouched";
        EXPECT_EQ(parse(c.option, error, sizeof error, note_advice), c.error == nullptr ? 0 : -1);
        EXPECT_EQ(result(), c.levels);
        EXPECT_STREQ(c.error == nullptr ? nullptr : error, c.error);
    }
}

const OptionCase LEVEL_CASES[] = {
    {nullptr, "322322"},
    {"", "322322"},
    {",,", "222222"},
    {"util=DeBuG", "222224"},
    {"util,gc=", "322223"},
    {"util='trace'", "222225"},
    {"collector=quiet", "022222"},
    {"info,util=trace", "333335"},
    {"TRACE=", "555555"},
    {"debug", "232222"},         // the module, not the level
    {"hidden=error", "222122"},  // the newer logger's retired name hides the older module
    {"code=error", "222212"},    // a module hides its own logger's retired name
    {"across=error", "122222"},
    {"old=error", "222122"},
    {"util=trace,bogus,util=quiet", "222225", "No such logging module \"bogus\""},
    {"UTIL=debug", "222222", "No such logging module \"UTIL\""},
    {" util=debug", "222222", "No such logging module \" util\""},
    {"util= debug", "222222", "Illegal message level ' debug'."},
    {"util=check", "222222", "Illegal message level 'check'."},
    {"removed", "222222", "Logging module removed is deprecated"},
    {"rejected=info", "222222",
     "Logging module rejected is deprecated. Please use jit=WARN instead."},
    {"unleveled", "222222", "Logging module unleveled is deprecated. Please use jit=? instead."},
    {"dangling", "222222",
     "Logging module dangling is deprecated. Please use nowhere=INFO instead."},
    {"to removed", "222222",
     "Logging module to removed is deprecated. Please use removed=INFO instead."},
    {"circle", "222222", "Logging module circle is deprecated. Please use elcric=INFO instead."},
};

const OptionCase SANITY_CASES[] = {
    {"", "222222"},
    {"util", "000002"},
    {"check,jit=TRACE,gc=none", "022422"},
    {"jit=info", "000000", "Illegal sanity level 'info'."},
    {"info", "000000", "No such logging module \"info\""},
};

const OptionCase FILE_CASES[] = {
    {"", ""},
    {"util", "", "Could not open stream ''"},
    {"gc=/no/file", "", "Could not open stream '/no/file'"},
    {"/no/file", "", "No such logging module \"/no/file\""},
    {"gc=>bogus", "", "No such log module 'bogus'."},
    {"gc=>rejected", "", "No such log module 'rejected'."},
    {"bogus=stderr", "", "No such logging module \"bogus\""},
    {">bogus", "", "No such logging module \">bogus\""},
    {"gc='stderr',stderr=", ""},
};

TEST(Options, ActItemByItemAndExplainFailures) {
    expect_cases(logParseMsgLevelsEx, levels, LEVEL_CASES);
    expect_cases(logParseSanityLevelsEx, sanities, SANITY_CASES);
    expect_cases(
        logParseLogFilesEx, [] { return std::string(); }, FILE_CASES);
}

const std::string OLD_ADVICE =
    "Logging module old is deprecated. Please use compiler=INFO instead.\n";
const std::string ADVICE = "Logging module compiler is deprecated. Please use jit=DEBUG instead.\n";

TEST(Options, PassAdviceToTheCallerOrPrintIt) {
    for (const auto& [option, expected] :
         std::initializer_list<std::pair<const char*, std::string>>{
             {"old=error", OLD_ADVICE + ADVICE}, {"rejected", ""}, {"removed", ""}}) {
        advice.clear();
        logParseMsgLevelsEx(option, nullptr, 0, note_advice);
        EXPECT_EQ(advice, expected) << option;
    }
    // Without a callback, and always behind ">", the advice is a warning of "util".
    TempFolder folder;
    ASSERT_EQ(logParseLogFilesEx(("util=" + folder.file("log")).c_str(), nullptr, 0, nullptr), 0);
    EXPECT_EQ(logParseMsgLevelsEx("util=warn,compiler=debug", nullptr, 0, nullptr), 0);
    EXPECT_EQ(logParseLogFilesEx("gc=>compiler", nullptr, 0, note_advice), 0);
    EXPECT_EQ(logParseMsgLevelsEx("util=error,compiler=debug", nullptr, 0, nullptr), 0);
    const std::string line = "[WARN ][util   ] " + ADVICE;
    EXPECT_EQ(read_file(folder.file("log")), line + line);
    EXPECT_EQ(logParseLogFilesEx("stderr", nullptr, 0, nullptr), 0);
}

TEST(Options, CutMessagesToTheCallersBuffer) {
    const std::string name(5000, 'n');
    const std::string whole = "No such logging module \"" + name + "\"";
    for (size_t size : {0, 1, 2, 25, 100}) {
        std::vector<char> error(size + 1, '#');
        EXPECT_EQ(logParseMsgLevelsEx(name.c_str(), error.data(), size, nullptr), -1);
        EXPECT_EQ(error[size], '#');
        if (size > 0) {
            EXPECT_EQ(error.data(), whole.substr(0, size - 1));
        }
    }
    EXPECT_EQ(logParseLogFilesEx(("gc=" + name).c_str(), nullptr, 100, nullptr), -1);
    char error[600];
    advice.clear();
    EXPECT_EQ(logParseMsgLevelsEx("long", error, sizeof error, note_advice), -1);
    EXPECT_EQ(std::string(error).size(), 255U);
    EXPECT_EQ(advice, std::string(error) + "\n");
}
