// Faults at every possible place: the n-th allocation, read or write of a call fails, for n = 1, 2,
// ... until a call has no fault. A call that fails changes nothing, leaks nothing, and succeeds
// when it is made again.

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
#include <unistd.h>
#include <cerrno>
#include <cstring>

using std::string;

// All made beforehand: while a fault is pending, only the library may allocate.
static const TempFolder folder;
static const string FILE_NAME = folder.file("file"), TO_FILE = "util=" + FILE_NAME;
static const string JSON_FILE = folder.file("json"), UNREADABLE = "Could not read " + JSON_FILE;
static const string BLOCK(2000, 'b'), WORD(700, 'w'), TEXT = "{a: ['" + WORD + "']}";
static FILE* const list = tmpfile();

// More modules than a listing has room for without the heap.
static logger* const many = make_logger({.modules = std::vector<TestModule>(300, {"many"})});
static logmodule* const util = util_module(many);
static logger *late[20], **next_late = late;  // not yet registered

// What the calls work on.
struct World {
    ArgIter iter;
    char* item[2] = {};
    argsParse args = {};
    argInfo info;
    int number = argAddint("n", &args, &info, &number, 0, nullptr, nullptr, 0);
    short element = 9;
    DynArrayP full = dynArrayNew(3, sizeof element), made = nullptr;
    void* block = nullptr;
    patternset set = {nullptr, 0};
    char error[300] = "";
    fio_fd fd = fio_open(FILE_NAME.c_str(), FIO_WRITE | FIO_TRUNCATE);
    streamwriter writer;

    World() {
        argIterInitDefault(&iter, "n='1,2',n='1,2'");
        for (short first : {1, 2, 3})
            dynArrayAddLast(full, &first);
        sw_init(&writer, fd, 0);
        rewind(list);
        logResetMsgLevels();
        _log_clear_decorations(nullptr, LOG_ALL_MODULES, ~0U);
    }
    ~World() {
        for (void* p : {block, static_cast<void*>(item[0]), static_cast<void*>(item[1])})
            gsFree(p);
        dynArrayFree(full);
        dynArrayFree(made);
        argFree(&args);
        patternSetFree(&set);
        fio_close(fd);
        files("util=stderr");
    }
    // What a call must change completely or not at all.
    string state() {
        if (util->out != stderr)
            print(util->log, MSG_WARN, "works");
        const fio_fd unused = dup(fd);  // higher when a call has left another one open
        fio_close(unused);
        const auto* elements = static_cast<const char*>(full != nullptr ? full->data : block);
        const size_t size = full != nullptr ? full->size : 3;
        return testing::PrintToString(
            std::tuple(item[0] ? item[0] + string(item[1]) : "", number,
                       string(elements, size * sizeof element), full ? full->capacity : 0,
                       made != nullptr, set.num_patterns, patternSetMatch(&set, "b"),
                       *util->pMsgLevel, _log_get_decorations(many, 0) == 3, ftell(list), unused,
                       util->out == stderr ? "" : read_file(FILE_NAME)));
    }
    bool parse(const char* text, const char* message) {
        gsFree(std::exchange(args.data, nullptr));
        return argParse(&args, text, strlen(text), ',') == 0 ||
               strcmp(argError(&args), message) == 0;
    }
    bool read(decltype(jsonParse)* reader, const string& source) {
        const auto ignore = [](JSONType, const JSONVal*, void*) {};
        return reader(source.c_str(), ignore, nullptr, error, sizeof error) == 0;
    }
    bool option(decltype(logParseLogFilesEx)* parser, const string& text) {
        return parser(text.c_str(), error, sizeof error, nullptr) == 0;
    }
    // A failed write moves the position as if it had succeeded, so writing again repairs the file.
    bool write() {
        sw_seek(&writer, 0);
        sw_bytes(&writer, BLOCK.data(), BLOCK.size());
        sw_bytes(&writer, WORD.data(), WORD.size());
        sw_flush(&writer);
        EXPECT_EQ(sw_position(&writer), static_cast<filesize>(BLOCK.size() + WORD.size()));
        return read_file(FILE_NAME) == BLOCK + WORD;
    }
};
using W = World&;
enum Outcome { FAILS, SUCCEEDS, EITHER };

struct Row {
    const char* name;
    bool (*call)(W);
    const char* message = "";  // how the explanation of a failure begins
    Outcome outcome = FAILS;   // of a call with a fault
};

const Row MEMORY_ROWS[] = {
    {"next item", [](W w) { return argIterGetNext(&w.iter, &w.item[0], &w.item[1]); }},
    {"arguments", [](W w) { return w.parse("n=1", "none"); }, "Could not allocate memory"},
    {"message", [](W w) { return w.parse("m", "Unknown parameter m"); }},
    {"new array", [](W w) { return (w.made = dynArrayNew(2, 8)) != nullptr; }},
    {"resize", [](W w) { return dynArrayResize(w.full, 4) == 0; }},
    {"shrink", [](W w) { return dynArrayShrink(w.full, 1) == 0; }},
    {"add", [](W w) { return dynArrayAddLast(w.full, &w.element) == 0; }},
    {"insert", [](W w) { return dynArrayInsert(w.full, 0, &w.element) == 0; }},
    {"add empty", [](W w) { return dynArrayAddEmptyElementsLast(w.full, 1) != nullptr; }},
    {"commit", [](W w) { return dynArrayCommit(std::exchange(w.full, nullptr), &w.block) == 3; },
     "", SUCCEEDS},
    {"patterns",
     [](W w) { return w.set.num_patterns = 5, patternSetCreate(&w.set, "-a*,b") == 0; }},
    {"text", [](W w) { return w.read(jsonParse, TEXT); }, "Out of memory, line "},
    {"file", [](W w) { return w.read(jsonParseFile, JSON_FILE); }, "Could not allocate 11B bytes"},
    {"levels", [](W w) { return w.option(logParseMsgLevelsEx, "many,util"); },
     "argIterGetNext failed. Out of memory?"},
    {"log file", [](W w) { return w.option(logParseLogFilesEx, TO_FILE); }, "", EITHER},
    {"decorations", [](W) { return logParseLogDecorations("level,module") == 0; }},
    {"registration", [](W) { return _log_add_logger(*next_late), (*next_late++)->next != nullptr; },
     "", SUCCEEDS},
    {"listing",
     [](W) { return _log_do_print_moduleinfo(nullptr, LOG_ALL_MODULES, list), ftell(list) > 0; },
     "", EITHER},
};

// Tries without a fault, then with each. Returns how many there are.
static size_t strike_everywhere(size_t* countdown, const Row& row) {
    std::ofstream(JSON_FILE) << "{a: [1, 2]}";
    string done;
    size_t n = 0;
    for (bool struck = true; struck && n < 1000; n++) {
        SCOPED_TRACE(testing::Message() << row.name << ", fault " << n);
        const long blocks = faults.live_blocks;
        {
            World w;
            const string before = w.state();
            *countdown = n;
            const bool ok = row.call(w);
            struck = std::exchange(*countdown, 0) == 0;
            const string after = w.state();
            done = n == 0 ? after : done;
            const bool fault = struck && n > 0;
            EXPECT_TRUE(ok == (!fault || row.outcome == SUCCEEDS) ||
                        (fault && row.outcome == EITHER));
            EXPECT_EQ(after, ok ? done : before);
            const string said = *w.error != '\0' ? w.error : argError(&w.args);
            EXPECT_TRUE(ok || said.starts_with(row.message)) << said;
            EXPECT_TRUE(ok || (row.call(w) && w.state() == done));
        }
        EXPECT_TRUE(platform.live_blocks == 0 && (n == 0 || faults.live_blocks == blocks));
    }
    return n - 2;
}

// The C library's allocations, those of fopen() and qsort() included; only the platform layer's
// when a sanitizer replaces the C library's.
TEST(Faults, ChangeAndLeakNothingWhenTheNthAllocationFails) {
    for (logger*& log : late)
        log = make_logger({.modules = {{"late"}}}, false);
    const bool own = faults.allocations > 0;
    size_t* const countdown = own ? &faults.failing_allocation : &platform.failing_allocation;
    for (const Row& row : MEMORY_ROWS)
        EXPECT_TRUE(strike_everywhere(countdown, row) > 0 || !own);
}

// Short transfers and signals are no failures.
TEST(Faults, EndAReadOrLoseWrittenBytesOnlyWhenATransferFailed) {
    for (int error : {0, EINTR, EIO}) {
        faults.error = error;
        const Row rows[] = {{"file", [](W w) { return w.read(jsonParseFile, JSON_FILE); },
                             UNREADABLE.c_str(), error == EIO ? FAILS : SUCCEEDS},
                            {"stream", [](W w) { return w.write(); }, "", rows[0].outcome}};
        EXPECT_EQ(strike_everywhere(&faults.failing_read, rows[0]), 1U);
        EXPECT_GT(strike_everywhere(&faults.failing_write, rows[1]), 1U);
    }
}
