// The settings of modules: what each option, and each function behind it, changes and says.

#include "support/platform.h"
#include "support/temp_folder.h"
#include "support/test_logger.h"

#include <gtest/gtest.h>
#include <array>
#include <span>

namespace fs = std::filesystem;
using std::string;

static char* nothing(char* position, size_t*) {
    return position;
}

// Some of the newer logger's retired names hide, or are hidden by, live modules.
static const string LONG_NAME(300, 'l');
static logger* const older =
    make_logger({.modules = {{"gc", "collector", true}, {"debug"}, {"hidden"}},
                 .decorators = {{"heap", nothing}, {"pid", nothing}}});
static logger* const between = make_logger({{}});
static logger* const newer = make_logger(
    {.modules = {{"jit", nullptr, true}, {"code"}, {.name = "gc", .is_linked = true}},
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
                   {"long", LONG_NAME.c_str(), 0, MSG_INFO, OBSOLETE_WARN}},
     .decorators = {{"unused", nullptr}, {nullptr, nothing}, {"Heap", nothing}, {"", nothing}},
     .msg_default = MSG_DEBUG,
     .sanity_default = SANITY_MINIMAL});

enum Kind { L, S, D, F };  // levels, sanity levels, decorations, files
using State = std::array<string, 4>;

// A standard stream by its number, a file of the current folder by its first letter.
static char stream_letter(int descriptor) {
    std::error_code ignored;
    const string number = std::to_string(descriptor);
    const fs::path file = fs::read_symlink("/proc/self/fd/" + number, ignored);
    const bool ours = descriptor > 2 && file.parent_path() == fs::current_path();
    return ours ? file.filename().c_str()[0] : descriptor > 2 ? '?' : number[0];
}

// What is set for gc, debug, hidden, jit, code, the linked gc and util: a digit for a level, a
// letter for a stream. The files that are open follow those.
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
    string open;
    for (const fs::directory_entry& fd : fs::directory_iterator("/proc/self/fd"))
        open += stream_letter(std::stoi(fd.path().filename()));
    std::erase_if(open, [](char letter) { return !isalpha(letter); });
    std::sort(open.begin(), open.end());
    all[F] += ":" + open;
    return all;
}

// A second registration changes nothing.
static const State REGISTERED = [] {
    newer->loggers[0].out = stdout;
    _log_add_logger(newer);
    return state();
}();

static const State RESET = {"2224442", "0001110",
                            " 80000000 80000000 80000000 80000000 80000000 80000000 80000000",
                            "2222222:"};

static string advice;

static int note_advice(const char* message) {
    advice += string(message) + "\n";
    return 1;  // ignored
}

static int files(const string& option) {
    return logParseLogFilesEx(option.c_str(), nullptr, 0, note_advice);
}

// In a folder with a file that has three names.
struct Options : testing::Test {
    TempFolder folder;
    const fs::path before = fs::current_path();

    void SetUp() override {
        fs::current_path(folder.file(""));
        std::ofstream("file");
        fs::create_symlink("file", "symbolic");
        fs::create_hard_link("file", "hard");
        reset();
    }
    void TearDown() override {
        reset();
        fs::current_path(before);
    }
    static void reset() {
        advice.clear();
        logResetMsgLevels();
        logResetSanityLevels();
        _log_clear_decorations(nullptr, 0, ~0U);
        _log_set_decorations(nullptr, 0, 1U << 31);
        files("stderr");
    }
};

struct OptionCase {
    Kind kind;
    const char* option;
    const char* after;            // of its kind; empty when nothing changes
    const char* error = nullptr;  // null when it is accepted
};

const OptionCase CASES[] = {
    {L, nullptr, "3223442"},
    {L, "", "3223442"},
    {L, ",,", ""},
    {L, "util=DeBuG", "2224444"},
    {L, "util,gc=", "3224433"},
    {L, "util='trace'", "2224445"},
    {L, "collector=quiet", "0224442"},
    {L, "info,util=trace", "3333335"},
    {L, "TRACE=", "5555555"},
    {L, "debug", "2324442"},         // the module, not the level
    {L, "hidden=error", "2221442"},  // the newer logger's retired name hides the older module
    {L, "code=error", "2224142"},    // a module hides its own logger's retired name
    {L, "across=error", "1224412"},
    {L, "old=error", "2221442"},
    {L, "util=trace,bogus,util=quiet", "2224445", "No such logging module \"bogus\""},
    {L, "UTIL=debug", "", "No such logging module \"UTIL\""},
    {L, "util= debug", "", "Illegal message level ' debug'."},
    {L, "util=check", "", "Illegal message level 'check'."},
    {L, "removed", "", "Logging module removed is deprecated"},
    {L, "rejected=info", "", "Logging module rejected is deprecated. Please use jit=WARN instead."},
    {L, "unleveled", "", "Logging module unleveled is deprecated. Please use jit=? instead."},
    {L, "dangling", "", "Logging module dangling is deprecated. Please use nowhere=INFO instead."},
    {L, "to removed", "",
     "Logging module to removed is deprecated. Please use removed=INFO instead."},
    {L, "circle", "", "Logging module circle is deprecated. Please use elcric=INFO instead."},
    {S, "", "2222222"},
    {S, "util", "0001112"},
    {S, "check,jit=TRACE,gc=none", "0224202"},
    {S, "util=Minimal,gc=DEBUG", "3001131"},
    {S, "jit=info", "", "Illegal sanity level 'info'."},
    {D, nullptr, " 46 46 46 46 46 46 46"},
    {D, "", " 46 46 46 46 46 46 46"},
    {D, ",", " 0 0 0 0 0 0 0"},
    {D, "level,MILLIS=anything,=x", " 409 9 9 409 409 409 9"},  // a name with no value
    {D, "level,nosuch,pid", " 1 1 1 1 1 1 1", "untouched"},
    {D, "Timestamp,module,nanos,osthreadid", " 36 36 36 36 36 36 36"},
    {D, "heap", " 200 0 0 200 200 200 0"},   // the newer logger takes it first
    {D, "pid", " 140 140 140 40 40 40 40"},  // a standard and an extended one
    {D, "unused", " 0 0 0 0 0 0 0", "untouched"},
    {F, "", ""},
    {F, "gc='stderr',stderr=", ""},
    {F, "jit=new,debug=./new", "2n2n222:n"},  // created by the first, found by the second
    {F, "gc=file,debug=symbolic,code=hard,jit=/proc/self/cwd/file", "ff2fff2:f"},
    {F, "file,file,stderr,code=file", "2222f22:f"},
    {F, "jit=file,debug=>jit,jit=stderr", "2f22222:f"},
    {F, "collector=file,gc=>collector,collector=stderr", "22222f2:f"},
    {F, "gc=file,jit=>gc,gc=new", "n22f2n2:fn"},  // redirected once, it does not follow
    {F, "gc=file,jit=new,>gc", "fffffff:f"},
    {F, "jit=stdout,debug=STDOUT,code=./stdout", "2S21s22:Ss"},
    {F, "gc=file,gc=missing/file,gc=stderr", "f2222f2:f", "Could not open stream 'missing/file'"},
    {F, "debug=file,debug=.", "2f22222:f", "Could not open stream '.'"},
    {F, "util", "", "Could not open stream ''"},
    {F, "/no/file", "", "No such logging module \"/no/file\""},
    {F, "gc=>bogus", "", "No such log module 'bogus'."},
    {F, "bogus=stderr", "", "No such logging module \"bogus\""},
    {F, ">bogus", "", "No such logging module \">bogus\""},
};

using Parser = int (*)(const char*, char*, size_t, int (*)(const char*));
const Parser PARSERS[] = {
    logParseMsgLevelsEx, logParseSanityLevelsEx,
    [](const char* args, char*, size_t, auto) { return logParseLogDecorations(args); },
    logParseLogFilesEx};

TEST_F(Options, ActItemByItemAndExplainFailures) {
    EXPECT_EQ(REGISTERED, (State{"2224422", "0001100", " 0 0 0 0 0 0 3", "2221222:"}));
    for (const OptionCase& c : CASES) {
        SCOPED_TRACE(c.option != nullptr ? c.option : "null");
        State expected = RESET;
        if (*c.after != '\0')
            expected[c.kind] = c.after;
        char error[300] = "untouched";
        EXPECT_EQ(PARSERS[c.kind](c.option, error, sizeof error, note_advice),
                  c.error == nullptr ? 0 : -1);
        EXPECT_EQ(state(), expected);
        EXPECT_STREQ(c.error == nullptr ? nullptr : error, c.error);
        EXPECT_EQ(platform.live_blocks, 0);
        reset();
    }
    EXPECT_EQ(state(), RESET);
}

TEST_F(Options, ReachOneModuleALoggerOrEverythingWithLinks) {
    _log_set_msglevel(older, 1, MSG_TRACE);
    EXPECT_EQ(state()[L], "2524442");
    _log_set_msglevel(newer, LOG_ALL_MODULES, MSG_QUIET);
    EXPECT_EQ(state()[L], "0520002");
    _log_set_msglevel(nullptr, 5, MSG_ERROR);
    EXPECT_EQ(state()[L], "1111111");
    _log_set_sanitylevel(newer, 2, SANITY_TRACE);
    EXPECT_EQ(state()[S], "4001140");
    _log_clear_decorations(nullptr, 5, ~0U);
    _log_set_decorations(newer, 2, 0x86);
    _log_set_decorations(nullptr, 5, 1);
    _log_clear_decorations(older, LOG_ALL_MODULES, 0x81);
    EXPECT_EQ(state()[D], " 6 0 0 1 1 87 1");
    EXPECT_EQ(apply_log_decorations(newer, nullptr), 0);
    EXPECT_EQ(apply_log_decorations(older, "heap,level"), 0);
    char heap[] = "HEAP", level[] = "level";
    EXPECT_TRUE(apply_extended_log_decorations(newer, heap));
    EXPECT_FALSE(apply_extended_log_decorations(newer, level));
    EXPECT_EQ(state()[D], " 281 81 81 246 246 246 1");
    int aliases = 0;
    EXPECT_STREQ(_log_get_aliases(older, 0, &aliases)[1], "collector");
    EXPECT_TRUE(aliases == 2 && *_log_get_aliases(older, 1, &aliases) != nullptr && aliases == 1);
}

const string ADVICE = "Logging module compiler is deprecated. Please use jit=DEBUG instead.\n";

TEST_F(Options, PassAdviceToTheCallerOrPrintIt) {
    for (const char* option : {"rejected", "removed", "old=error"})
        logParseMsgLevelsEx(option, nullptr, 0, note_advice);
    EXPECT_EQ(advice,
              "Logging module old is deprecated. Please use compiler=INFO instead.\n" + ADVICE);
    // Without a callback, and always behind ">", the advice is a warning of "util".
    apply_log_decorations(nullptr, "level,module");
    EXPECT_EQ(files("util=log"), 0);
    EXPECT_EQ(logParseMsgLevelsEx("util=warn,compiler=debug", nullptr, 0, nullptr), 0);
    EXPECT_EQ(files("gc=>compiler"), 0);
    EXPECT_EQ(logParseMsgLevelsEx("util=error,compiler=debug", nullptr, 0, nullptr), 0);
    EXPECT_EQ(read_file("log"), "[WARN ][util   ] " + ADVICE + "[WARN ][util   ] " + ADVICE);
}

TEST_F(Options, CutMessagesToTheCallersBuffer) {
    const string name(5000, 'n'), whole = "No such logging module \"" + name + "\"";
    for (size_t size : {0, 1, 2, 25, 100}) {
        std::vector<char> error(size + 1, '#');
        EXPECT_EQ(logParseMsgLevelsEx(name.c_str(), error.data(), size, nullptr), -1);
        EXPECT_EQ(error[size], '#');
        EXPECT_EQ(string(error.data(), size).c_str(), whole.substr(0, size - (size > 0)));
    }
    for (size_t length : {4095, 4096, 5000})
        EXPECT_EQ(files("gc=" + name.substr(0, length)), -1);
    EXPECT_EQ(state()[F], RESET[F]);
    char error[600];
    EXPECT_EQ(logParseMsgLevelsEx("long", error, sizeof error, note_advice), -1);
    EXPECT_EQ(string(error).size(), 255U);
    EXPECT_EQ(advice, string(error) + "\n");
}
