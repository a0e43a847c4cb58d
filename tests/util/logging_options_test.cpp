// The settings of modules: what each option, and each function behind it, changes and says.

#include "support/platform.h"
#include "support/temp_folder.h"
#include "support/test_logger.h"

#include <gtest/gtest.h>
#include <array>
#include <span>

namespace fs = std::filesystem;
using std::string;

// Some of the newer logger's retired names hide, or are hidden by, live modules.
static const string LONG_NAME(5000, 'l'), TO_LONG_NAME = "gc=" + LONG_NAME;
static logger* const older =
    make_logger({.modules = {{"gc", "collector", true}, {"debug"}, {"hidden"}},
                 .decorators = {{"heap", empty_decorator}, {"pid", empty_decorator}}});
static logger* const between = make_logger({{}});
static logger* const newer =
    make_logger({.modules = {{"jit", nullptr, true}, {"code"}, {.name = "gc", .is_linked = true}},
                 .obsoletes = {{"compiler", "jit", 0, MSG_DEBUG, OBSOLETE_WARN},
                               {"old", "compiler", 0, MSG_INFO, OBSOLETE_WARN},
                               {"fails", "jit", 0, static_cast<MsgLevel>(9), OBSOLETE_FAIL},
                               {"removed", nullptr, 0, MSG_QUIET, OBSOLETE_WARN},
                               {"tail", "circle", 0, MSG_INFO, OBSOLETE_WARN},
                               {"circle", "circle", 0, MSG_INFO, OBSOLETE_WARN},
                               {"hidden", "jit", 0, MSG_INFO, OBSOLETE_WARN},
                               {"code", "jit", 0, MSG_INFO, OBSOLETE_FAIL},
                               {"across", "gc", LOG_ALL_MODULES, MSG_INFO, OBSOLETE_WARN},
                               {"long", LONG_NAME.c_str(), 0, MSG_INFO, OBSOLETE_WARN}},
                 .decorators = {{"unused", nullptr},
                                {nullptr, empty_decorator},
                                {"Heap", empty_decorator},
                                {"", empty_decorator}},
                 .msg_default = MSG_DEBUG,
                 .sanity_default = SANITY_MINIMAL});

enum Kind { L, S, D, F };  // levels, sanity levels, decorations, files
using State = std::array<string, 4>;

// A standard stream by its number, a file of the current folder by its first letter.
static char stream_letter(int descriptor) {
    const string number = std::to_string(descriptor);
    std::error_code closed;
    const fs::path file = fs::read_symlink("/proc/self/fd/" + number, closed);
    const bool ours = file.parent_path() == fs::current_path();
    return descriptor < 3 ? number[0] : ours ? file.filename().c_str()[0] : '?';
}

// The settings of gc, debug, hidden, jit, code, the linked gc and util: a digit for a level, a
// letter for a stream. The open files follow.
static State state() {
    State all;
    for (const logger* log : {older, newer, util_module(older)->log})
        for (const logmodule& m : std::span(log->loggers, log->num_loggers)) {
            all[L] += std::to_string(*m.pMsgLevel);
            all[S] += std::to_string(*m.pSanityLevel);
            char word[16];
            snprintf(word, sizeof word, " %x", _log_get_decorations(m.log, &m - log->loggers));
            all[D] += word;
            all[F] += stream_letter(fileno(m.out));
        }
    all[F] += ":";
    for (int descriptor = 3; descriptor < 100; descriptor++)
        if (const char letter = stream_letter(descriptor); letter != '?')
            all[F] += letter;
    return all;
}

static const State REGISTERED = state();
static const State RESET = {"2224442", "0001110", " 9 9 9 9 9 9 9", "2222222:"};

static string advice;

static int note_advice(const char* message) {
    advice += string(message) + "\n";
    return 1;  // ignored
}

// In a folder with a file that has three names.
struct Options : testing::Test {
    TempFolder folder;

    Options() {
        fs::current_path(folder.file(""));
        std::ofstream("file");
        fs::create_symlink("file", "symbolic");
        fs::create_hard_link("file", "hard");
        reset();
    }
    ~Options() override {
        reset();
    }
    static void reset() {
        advice.clear();
        logResetMsgLevels();
        logResetSanityLevels();
        _log_clear_decorations(nullptr, 0, ~0U);
        _log_set_decorations(nullptr, 0, 9);
        files("stderr");
    }
};

const struct OptionCase {
    Kind kind;
    const char* option;
    string after;       // of its kind
    string error = "";  // empty when it is accepted
} CASES[] = {
    {L, nullptr, "3223442"},
    {L, "util=DeBuG,collector=quiet,debug", "0324444"},  // the module, not the level
    {L, "info,util='trace',across=quiet,old=error", "0331305"},
    {L, "TRACE=,gc=", "3555535"},
    // The newer logger's retired name hides the older module; a module hides its own logger's.
    {L, "hidden=error,code=info", "2221342"},
    {L, "util=trace,UTIL=info,util=info", "2224445", "No such logging module \"UTIL\""},
    {L, "util=check", RESET[L], "Illegal message level 'check'."},
    {L, "removed", RESET[L], "Logging module removed is deprecated"},
    {L, "fails=info", RESET[L], "Logging module fails is deprecated. Please use jit=? instead."},
    {L, "tail", RESET[L], "Logging module tail is deprecated. Please use circle=INFO instead."},
    {L, "long", RESET[L],
     ("Logging module long is deprecated. Please use " + LONG_NAME).substr(0, 255)},
    {S, "", "2222222"},
    {S, "check,jit=TRACE,gc=none,util=Minimal", "0224201"},
    {S, "util,code=DEBUG", "0001312"},
    {S, "jit=info", RESET[S], "Illegal sanity level 'info'."},
    {D, nullptr, " 46 46 46 46 46 46 46"},
    {D, ",,", " 0 0 0 0 0 0 0"},
    {D, "level,MILLIS=anything,=x", " 409 9 9 409 409 409 9"},  // a name with no value
    {D, "Timestamp,module,nanos,osthreadid", " 36 36 36 36 36 36 36"},
    {D, "heap,pid", " 340 140 140 240 240 240 40"},  // the newer logger takes heap first
    {D, "level,unused,pid", " 1 1 1 1 1 1 1", "untouched"},
    {F, "", RESET[F]},
    {F, "jit=new,debug=./new,code=STDOUT,gc=./stdout,collector=stdout", "1n2nSs2:nSs"},
    {F, "gc=file,debug=symbolic,code=hard,jit=/proc/self/cwd/file", "ff2fff2:f"},
    {F, "file,file,stderr,code=file", "2222f22:f"},
    {F, "collector=file,gc=>collector,collector=stderr", "22222f2:f"},
    {F, "gc=file,jit=>gc,gc=new", "n22f2n2:fn"},  // redirected once, it does not follow
    {F, "gc=file,jit=new,>gc", "fffffff:f"},
    {F, "gc=file,gc=no/file,gc=stderr", "f2222f2:f", "Could not open stream 'no/file'"},
    {F, "debug=file,debug=.", "2f22222:f", "Could not open stream '.'"},
    {F, "util", RESET[F], "Could not open stream ''"},
    {F, TO_LONG_NAME.c_str(), RESET[F], ("Could not open stream '" + LONG_NAME).substr(0, 299)},
    {F, "/no/file", RESET[F], "No such logging module \"/no/file\""},
    {F, "gc=>bogus", RESET[F], "No such log module 'bogus'."},
};

constexpr decltype(&logParseLogFilesEx) PARSERS[] = {
    logParseMsgLevelsEx, logParseSanityLevelsEx,
    [](auto option, auto, auto, auto) { return logParseLogDecorations(option); },
    logParseLogFilesEx};

TEST_F(Options, ActItemByItemAndExplainFailures) {
    EXPECT_EQ(REGISTERED, (State{"2224422", "0001100", " 0 0 0 0 0 0 3", "2222222:"}));
    for (const OptionCase& c : CASES) {
        SCOPED_TRACE(c.option != nullptr ? c.option : "null");
        State expected = RESET;
        expected[c.kind] = c.after;
        char error[300] = "untouched";
        const int result = PARSERS[c.kind](c.option, error, sizeof error, note_advice);
        EXPECT_EQ(result, c.error.empty() ? 0 : -1);
        EXPECT_EQ(state(), expected);
        EXPECT_EQ(result == 0 ? "" : error, c.error);
        EXPECT_EQ(platform.live_blocks, 0);
        reset();
    }
    EXPECT_EQ(state(), RESET);
}

TEST_F(Options, ReachOneModuleALoggerOrEverythingWithLinks) {
    _log_set_msglevel(nullptr, 5, MSG_ERROR);
    _log_set_msglevel(newer, LOG_ALL_MODULES, MSG_QUIET);
    _log_set_msglevel(older, 0, MSG_TRACE);
    _log_set_sanitylevel(newer, 2, SANITY_TRACE);
    EXPECT_EQ(apply_log_decorations(newer, nullptr), 0);
    EXPECT_EQ(apply_log_decorations(older, "heap,level"), 0);
    char heap[] = "HEAP", level[] = "level";
    EXPECT_TRUE(apply_extended_log_decorations(newer, heap));
    EXPECT_FALSE(apply_extended_log_decorations(newer, level));
    _log_clear_decorations(nullptr, 5, 0x80);
    _log_set_decorations(newer, 2, 0x400);
    _log_clear_decorations(older, LOG_ALL_MODULES, 1);
    _log_set_decorations(nullptr, 5, 0x10);
    EXPECT_EQ(state(), (State{"5110001", "4001140", " 610 10 10 256 256 656 19", "2222222:"}));
    int aliases = 0;
    EXPECT_STREQ(_log_get_aliases(older, 0, &aliases)[1], "collector");
    EXPECT_TRUE(aliases == 2 && *_log_get_aliases(older, 1, &aliases) != nullptr && aliases == 1);
}

TEST_F(Options, PassAdviceToTheCallerOrPrintIt) {
    const string renamed = "Logging module compiler is deprecated. Please use jit=DEBUG instead.\n";
    for (const char* option : {"fails", "removed", "old=error"})
        logParseMsgLevelsEx(option, nullptr, 0, note_advice);
    EXPECT_EQ(advice,
              "Logging module old is deprecated. Please use compiler=INFO instead.\n" + renamed);
    // Without a callback, and always after ">", the advice is a warning of "util".
    apply_log_decorations(nullptr, "level,module");
    EXPECT_EQ(files("util=log"), 0);
    EXPECT_EQ(logParseMsgLevelsEx("util=warn,compiler=debug", nullptr, 0, nullptr), 0);
    EXPECT_EQ(logParseLogFilesEx("gc=>compiler", nullptr, 0, note_advice), 0);
    EXPECT_EQ(logParseMsgLevelsEx("util=error,compiler=debug", nullptr, 0, nullptr), 0);
    EXPECT_EQ(read_file("log"), "[WARN ][util   ] " + renamed + "[WARN ][util   ] " + renamed);
}
