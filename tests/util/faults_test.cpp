// Faults at every place where they can strike: the n-th allocation, read or write of a call fails,
// for n = 1, 2, ... until the call gets by without. Nothing leaks, and what the call worked on is
// used again. The natives' tests do the same with the objects of Java.

#include "support/faults.h"
#include "osal/export/osal_msmalloc.h"
#include "support/platform.h"
#include "support/temp_folder.h"
#include "support/test_logger.h"
#include "util/export/arguments.h"
#include "util/export/dynarray.h"
#include "util/export/globmatch.h"
#include "util/export/json.h"
#include "util/export/streamwriter.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <csignal>
#include <cstring>
#include <functional>

using std::string;
using Attempt = std::function<bool()>;  // tells whether the call succeeded

static size_t nth;         // operation that fails; 0 for none
static bool struck;        // the latest faulty() call had as many
static size_t* countdown;  // of the kind of operation

// The result of a call into the library, with the fault.
template <typename Call>
static auto faulty(Call call) {
    *countdown = nth;
    const auto result = call();
    struck = nth > 0 && *countdown == 0;
    *countdown = 0;
    return result;
}

enum Outcome { FAILS, SUCCEEDS, EITHER };

// Tries once without a fault, then with each, which has the expected outcome.
static size_t strike_everywhere(size_t* kind, Outcome expected, const Attempt& attempt) {
    countdown = kind;
    nth = 0;
    EXPECT_TRUE(attempt());
    do {
        SCOPED_TRACE(++nth);
        const long live = faults().live_blocks;
        const bool succeeded = attempt();
        EXPECT_TRUE((struck && expected == EITHER) ||
                    succeeded == (!struck || expected == SUCCEEDS));
        EXPECT_EQ(platform.live_blocks, 0);
        EXPECT_TRUE(faults().live_blocks == live || !faults().have_memory);
    } while (struck && nth < 1000);
    EXPECT_FALSE(struck);
    return nth - 1;
}

static bool next_item() {
    ArgIter iter;
    argIterInitDefault(&iter, "verbose,a='1,2'");
    char *name = nullptr, *value = nullptr;
    const bool ok = faulty([&] { return argIterGetNext(&iter, &name, &value); });
    EXPECT_TRUE(ok ? *value == '\0' : name == nullptr && value == nullptr);
    gsFree(name);
    gsFree(value);
    EXPECT_TRUE(argIterGetNext(&iter, &name, &value));
    EXPECT_EQ(string(name) + value, "a1,2");
    gsFree(name);
    gsFree(value);
    EXPECT_FALSE(argIterGetNext(&iter, &name, &value));
    return ok;
}

// With the right message, or another when there is no memory for one.
static bool parse(const char* text, const char* message) {
    argsParse pa = {};
    argInfo info;
    int a = argAddint("a", &pa, &info, &a, 0, nullptr, nullptr, 0);
    faulty([&] { return argParse(&pa, text, strlen(text), ','); });
    const string said = argError(&pa);
    EXPECT_TRUE(said == message || said == "Could not allocate memory" || said == "") << said;
    gsFree(pa.data);
    pa.data = nullptr;
    EXPECT_EQ(argParse(&pa, "b", 1, ','), -1);
    EXPECT_STREQ(argError(&pa), "Unknown parameter b");
    argFree(&pa);
    return said == message;
}

struct FullArray {
    DynArrayP da = dynArrayNew(3, sizeof(short));
    short elements[3] = {1, 2, 3};
    FullArray() {
        for (short& element : elements)
            dynArrayAddLast(da, &element);
    }
};

// A full array stays as it was when the change fails, and takes another afterwards.
static Attempt change(int (*call)(DynArrayP da, short* value)) {
    return [call] {
        const FullArray full;
        const DynArray before = *full.da;
        short value = 9;
        const bool ok = faulty([&] { return call(full.da, &value); }) == 0;
        EXPECT_TRUE(ok || std::memcmp(full.da, &before, sizeof before) == 0);
        EXPECT_TRUE(ok || std::memcmp(before.data, full.elements, sizeof full.elements) == 0);
        EXPECT_EQ(dynArraySet(full.da, 40, &value), 0);
        dynArrayFree(full.da);
        return ok;
    };
}

static bool make_array() {
    const DynArrayP da = faulty([] { return dynArrayNew(2, 8); });
    dynArrayFree(da);
    return da != nullptr;
}

static bool commit_array() {
    const FullArray full;
    dynArrayResize(full.da, 50);
    void* block = nullptr;
    const size_t size = faulty([&] { return dynArrayCommit(full.da, &block); });
    const bool whole = std::memcmp(block, full.elements, sizeof full.elements) == 0;
    msFree(globalMSpace(), block);
    return size == 3 && whole;
}

static bool create_patterns() {
    patternset set = {reinterpret_cast<pattern*>(&set), 5};
    const bool ok = faulty([&] { return patternSetCreate(&set, "-a*,b"); }) == 0;
    EXPECT_EQ(set.num_patterns, ok ? 2U : 0U);
    EXPECT_EQ(patternSetMatch(&set, "b"), ok ? MATCH : NOMATCH);
    patternSetFree(&set);
    return ok;
}

static string nested(size_t depth, const string& open, const string& inner, const string& close) {
    string text;
    for (size_t i = 0; i < depth; i++)
        text += open;
    text += inner;
    for (size_t i = 0; i < depth; i++)
        text += close;
    return text;
}

static const string WORD(700, 'w');
static const string LONG_TEXTS = "{a: 1,\n" + WORD + ": '" + WORD + WORD + "', c: [\"" +
                                 nested(400, "\\u00e9", WORD, "") + "\"]}";
static const string NESTED_ARRAYS = nested(100000, "[", WORD, "]");
static const string NESTED_OBJECTS = nested(50000, "{a:[", "'" + WORD + "'", "]}");

static void ignore(JSONType, const JSONVal*, void*) {}

// Otherwise it says what begins with `message`.
static bool read_json(decltype(jsonParse)* read, const string& source, const string& message) {
    char error[400] = "";
    const bool ok =
        faulty([&] { return read(source.c_str(), ignore, nullptr, error, sizeof error); }) == 0;
    EXPECT_TRUE(ok || string(error).starts_with(message)) << error;
    EXPECT_EQ(platform.open_files, 0);
    return ok;
}

static Attempt read_text(const string& text) {
    return [&text] { return read_json(jsonParse, text, "Out of memory, line "); };
}

static const TempFolder folder;
static const string JSON_FILE = folder.file("json"), LOG_FILE = folder.file("log");

static Attempt read_json_file(const string& message) {
    std::ofstream(JSON_FILE) << "{a: [1, 2]}";
    return [message] { return read_json(jsonParseFile, JSON_FILE, message); };
}

// More modules than a listing has room for without memory.
static logger* const log = make_logger({.modules = std::vector<TestModule>(300, {"many"})});

constexpr unsigned LEVEL_AND_MODULE = 3;

static Attempt parse_levels(decltype(logParseMsgLevelsEx)* call) {
    return [call] {
        logResetMsgLevels();
        logResetSanityLevels();
        char error[64] = "";
        const bool ok = faulty([&] { return call("many,util", error, 64, nullptr); }) == 0;
        EXPECT_STREQ(error, ok ? "" : "argIterGetNext failed. Out of memory?");
        EXPECT_EQ(call("many,util", nullptr, 0, nullptr), 0);
        return ok;
    };
}

// The file is open while a module has it, and only then.
static bool attach_file() {
    static const string option = "util=" + LOG_FILE;
    const bool ok =
        faulty([] { return logParseLogFilesEx(option.c_str(), nullptr, 0, nullptr); }) == 0;
    EXPECT_EQ(util_module(log)->out == stderr, !ok);
    if (ok) {
        print(util_module(log)->log, 0, MSG_WARN, "works");
        EXPECT_TRUE(read_file(LOG_FILE).ends_with("works\n"));
    }
    EXPECT_EQ(logParseLogFilesEx("util=stderr", nullptr, 0, nullptr), 0);
    return ok;
}

static Attempt decorate(int (*call)(const char* args)) {
    return [call] {
        _log_clear_decorations(nullptr, LOG_ALL_MODULES, ~0U);
        const bool ok = faulty([&] { return call("level,module"); }) == 0;
        EXPECT_EQ(_log_get_decorations(log, 0) == LEVEL_AND_MODULE, ok);
        return ok;
    };
}

// Decorations that were set before are for newcomers, too, which stay registered for good.
static bool register_logger() {
    static const TestLoggerParts parts = {.modules = {{"new"}}};
    static logger* newcomers[12];  // made while memory is to be had
    for (logger*& made : newcomers)
        made = made != nullptr ? made : unregistered_logger(parts);
    logger* const newcomer = newcomers[nth];
    faulty([&] { return _log_add_logger(newcomer), 0; });
    const bool ok = _log_get_decorations(newcomer, 0) == LEVEL_AND_MODULE;
    EXPECT_EQ(apply_log_decorations(newcomer, "level,module"), 0);
    return ok;
}

static bool list_modules() {
    static FILE* const out = fopen(folder.file("list").c_str(), "w");
    rewind(out);
    faulty([&] { return _log_do_print_moduleinfo(nullptr, LOG_ALL_MODULES, out), 0; });
    return ftell(out) > 300;
}

static bool grow_block() {
    char* const block = static_cast<char*>(msRealloc(globalMSpace(), nullptr, 8));
    std::strcpy(block, "content");
    void* const grown = faulty([&] { return msRealloc(globalMSpace(), block, 1 << 20); });
    char* const now = static_cast<char*>(grown != nullptr ? grown : block);
    EXPECT_STREQ(now, "content");
    msFree(globalMSpace(), now);
    return grown != nullptr;
}

struct MemoryCase {
    const char* call;
    Attempt attempt;
    Outcome outcome = FAILS;  // of a call without all its memory
};

const MemoryCase MEMORY_CASES[] = {
    {"argIterGetNext", next_item},
    {"argParse", [] { return parse("a=1", ""); }},
    {"argParse, wrong", [] { return parse("a=1,c", "Unknown parameter c"); }},
    {"dynArrayNew", make_array},
    {"dynArrayResize", change([](auto da, auto*) { return dynArrayResize(da, 4); })},
    {"dynArrayShrink", change([](auto da, auto*) { return dynArrayShrink(da, 1); })},
    {"dynArrayShrink to nothing", change([](auto da, auto*) { return dynArrayShrink(da, 0); })},
    {"dynArrayAddLast", change([](auto da, auto* v) { return dynArrayAddLast(da, v); })},
    {"dynArraySet", change([](auto da, auto* v) { return dynArraySet(da, 3, v); })},
    {"dynArrayInsert", change([](auto da, auto* v) { return dynArrayInsert(da, 0, v); })},
    {"dynArrayAddEmptyElementsLast",
     change([](auto da, auto*) { return dynArrayAddEmptyElementsLast(da, 1) ? 0 : -1; })},
    {"dynArrayCommit", commit_array, SUCCEEDS},
    {"patternSetCreate", create_patterns},
    {"jsonParse, texts", read_text(LONG_TEXTS)},
    {"jsonParse, arrays", read_text(NESTED_ARRAYS)},
    {"jsonParse, objects", read_text(NESTED_OBJECTS)},
    {"jsonParseFile", read_json_file("Could not allocate 11B bytes")},
    {"logParseMsgLevelsEx", parse_levels(logParseMsgLevelsEx)},
    {"logParseSanityLevelsEx", parse_levels(logParseSanityLevelsEx)},
    {"logParseLogFilesEx", attach_file, EITHER},
    {"logParseLogDecorations", decorate(logParseLogDecorations)},
    {"apply_log_decorations", decorate([](auto* s) { return apply_log_decorations(log, s); })},
    {"_log_add_logger", register_logger},
    {"_log_do_print_moduleinfo", list_modules, EITHER},
    {"msRealloc, gsRealloc", grow_block},
};

// The C library's allocations, those of fopen() and qsort() included; the platform's only when a
// sanitizer has the C library's.
TEST(Faults, LeakNothingAndSpoilNothingWhenTheNthAllocationFails) {
    platform = Platform{};
    for (const MemoryCase& c : MEMORY_CASES) {
        SCOPED_TRACE(c.call);
        size_t& kind =
            faults().have_memory ? faults().failing_allocation : platform.failing_allocation;
        const size_t faults_seen = strike_everywhere(&kind, c.outcome, c.attempt);
        EXPECT_TRUE(faults_seen > 0 || !faults().have_memory);
    }
}

struct TransferCase {
    int error;  // 0 for a short one
    Outcome outcome;
};
const TransferCase TRANSFER_CASES[] = {{0, SUCCEEDS}, {EINTR, SUCCEEDS}, {EIO, FAILS}};

TEST(Faults, EndAReadOnlyWhenItFailed) {
    for (const TransferCase& c : TRANSFER_CASES) {
        faults().error = c.error;
        const Attempt attempt = read_json_file("Could not read " + JSON_FILE);
        EXPECT_GT(strike_everywhere(&faults().failing_read, c.outcome, attempt), 0U);
    }
}

// A failed write leaves the position where it would be, so that a seek and a repetition mend it.
TEST(Faults, LoseBytesOfAStreamOnlyWhenAWriteFailed) {
    const string name = folder.file("written"), block(2000, 'b');
    const string expected = block + "\x01\x02" + block.substr(0, 9);
    const auto write = [&](streamwriter* w) {
        sw_seek(w, 0);
        sw_bytes(w, block.data(), block.size());
        sw_u2(w, 0x102);
        sw_bytes(w, block.data(), 9);
        sw_flush(w);
        return sw_position(w) == static_cast<filesize>(expected.size());
    };
    for (const TransferCase& c : TRANSFER_CASES) {
        faults().error = c.error;
        const auto attempt = [&] {
            const fio_fd fd = fio_open(name.c_str(), FIO_WRITE | FIO_TRUNCATE);
            streamwriter w;
            sw_init(&w, fd, 0);
            EXPECT_TRUE(faulty([&] { return write(&w); }));
            const bool ok = read_file(name) == expected;
            EXPECT_TRUE(write(&w));
            EXPECT_TRUE(read_file(name) == expected);
            fio_close(fd);
            return ok;
        };
        EXPECT_GT(strike_everywhere(&faults().failing_write, c.outcome, attempt), 1U);
    }
}

// The file may not grow beyond the n-th byte while one line is printed: the rest of it is lost, and
// the next line is whole.
TEST(Faults, CutOneLineWhenItsFileIsFull) {
    signal(SIGXFSZ, SIG_IGN);
    logger* const printer = make_logger({{{"cut"}}});
    const string line = "cut off\n", option = "cut=" + LOG_FILE;
    _log_clear_decorations(printer, 0, ~0U);
    for (size_t room = 0; room <= line.size(); room++) {
        ASSERT_EQ(logParseLogFilesEx(option.c_str(), nullptr, 0, nullptr), 0);
        rlimit before;
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit limited = {room, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limited);
        print(printer, 0, MSG_WARN, "cut off");
        setrlimit(RLIMIT_FSIZE, &before);
        print(printer, 0, MSG_WARN, "whole");
        logParseLogFilesEx("cut=stderr", nullptr, 0, nullptr);
        EXPECT_EQ(read_file(LOG_FILE), line.substr(0, room) + "whole\n");
    }
}
