#include "support/heap.h"
#include "support/platform.h"
#include "support/temp_folder.h"
#include "support/test_logger.h"

#include <gtest/gtest.h>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstring>
#include <set>
#include <sstream>
#include <thread>

static const std::string EIGHTY(80, 'e');

static char* big_decorator(char* position, size_t* bytesLeft) {
    return log_sprintf(position, bytesLeft, "{%s}", EIGHTY.c_str());
}

// Reports what room it was given, and takes it all.
static size_t room_seen;
static char* greedy_decorator(char* position, size_t* bytesLeft) {
    room_seen = *bytesLeft;
    return log_sprintf(position, bytesLeft, "%0500d", 7);
}

constexpr unsigned LEVEL = 1, MODULE = 2, TIMESTAMP = 4, MILLIS = 8, NANOS = 16, TID = 32, PID = 64;
constexpr unsigned BIG = 128, GREEDY = 256, EMPTY_SLOT = 512, NO_DECORATION = 1U << 15 | 1U << 31;

// A logger whose modules write to a file, on a platform with fixed clocks and ids.
struct Printing : testing::Test {
    static logger* printer() {
        static logger* log =
            make_logger({.modules = {{"gc"}, {"compiler"}, {"%d"}},
                         .decorators = {{"big", big_decorator}, {"greedy", greedy_decorator}},
                         .max_decoration_size = 50});
        return log;
    }
    TempFolder folder;
    logger* log = printer();

    void SetUp() override {
        _log_clear_decorations(log, LOG_ALL_MODULES, ~0U);
        platform = Platform{};
        platform.time_text = "NOW";
        platform.millis = 1234;
        platform.nanos = -5;
        platform.thread_id = 4242;
        platform.process_id = 123456;
        ASSERT_EQ(logParseLogFilesEx(folder.file("log").c_str(), nullptr, 0, nullptr), 0);
    }
    void TearDown() override {
        logParseLogFilesEx("stderr", nullptr, 0, nullptr);
        platform = Platform{};
    }
    std::string printed() const {
        return read_file(folder.file("log"));
    }
    // What one call prints.
    __attribute__((format(printf, 5, 6))) std::string line(LogModule module, MsgLevel level,
                                                           unsigned decorations, const char* format,
                                                           ...) {
        const size_t before = printed().size();
        va_list args;
        va_start(args, format);
        _logforceprintdecorationsv(log, module, level, static_cast<int>(decorations), format, args);
        va_end(args);
        return printed().substr(before);
    }
};

struct LineCase {
    LogModule module;
    MsgLevel level;
    unsigned decorations;
    const char* message;
    const char* line;
};

const LineCase LINE_CASES[] = {
    {0, MSG_WARN, 0, "hello", "hello\n"},
    {0, MSG_WARN, 0, "hello\n", "hello\n"},
    {0, MSG_WARN, 0, "", "\n"},
    {0, MSG_WARN, 0, nullptr, ""},
    {0, MSG_WARN, LEVEL, nullptr, "[WARN ] "},
    {0, MSG_WARN, LEVEL, "", "[WARN ] \n"},
    {0, MSG_QUIET, LEVEL | MODULE, "m", "[QUIET][gc     ] m\n"},
    {0, MSG_INFO, LEVEL, "m", "[INFO ] m\n"},
    {1, MSG_ERROR, LEVEL | MODULE, "m", "[ERROR][compile] m\n"},
    {2, MSG_ERROR, MODULE, "m", "[%d     ] m\n"},
    {0, MSG_TRACE, TIMESTAMP, "m", "[NOW] m\n"},
    {0, MSG_TRACE, MILLIS | NANOS, "m", "[1234][-5] m\n"},
    {0, MSG_TRACE, TID | PID, "m", "[04242][123456] m\n"},
    {0, MSG_TRACE, EMPTY_SLOT, "m", " m\n"},
    {0, MSG_TRACE, NO_DECORATION, "m", " m\n"},
    {0, MSG_MAX, LEVEL, "m", "[?    ] m\n"},
    {0, static_cast<MsgLevel>(-1), LEVEL, "m", "[?    ] m\n"},
};

TEST_F(Printing, LaysOutTheLine) {
    for (const LineCase& c : LINE_CASES)
        EXPECT_EQ(line(c.module, c.level, c.decorations, c.message, 0), c.line);
}

TEST_F(Printing, PrintsNumbersAsTheFormatterWould) {
    for (int id : {0, 7, -7, 99999, 100000, INT_MAX, INT_MIN}) {
        platform.process_id = id;
        platform.nanos = id == INT_MIN ? LONG_MIN : LONG_MAX - (id & 7);
        char expected[100];
        snprintf(expected, sizeof expected, "[%ld][%-5.5i] m\n", *platform.nanos, id);
        EXPECT_EQ(line(0, MSG_WARN, NANOS | PID, "m"), expected);
    }
}

TEST_F(Printing, LeavesOutOnlyATimeThatCannotBeFormatted) {
    platform.time_text = "";
    EXPECT_EQ(line(0, MSG_WARN, TIMESTAMP | MODULE, "m"), "[gc     ] m\n");
}

// What the decorations may take together: 99 bytes, and 50 more with extended ones.
TEST_F(Printing, CutsDecorationsAtTheirBudget) {
    platform.time_text = std::string(29, 't');
    platform.millis = LONG_MAX;
    platform.nanos = LONG_MIN;
    platform.process_id = INT_MIN;
    const std::string all = "[WARN ][gc     ][" + std::string(29, 't') +
                            "][9223372036854775807][-9223372036854775808][04242][-2147483648]";
    EXPECT_EQ(line(0, MSG_WARN, 127, "m"), all.substr(0, 99) + " m\n");
    const std::string big = "{" + EIGHTY + "}";
    EXPECT_EQ(line(0, MSG_WARN, 127 | BIG, "m"), (all + big).substr(0, 149) + " m\n");
    room_seen = 0;
    EXPECT_EQ(line(0, MSG_WARN, 127 | BIG | GREEDY, "m"), (all + big).substr(0, 149) + " m\n");
    EXPECT_EQ(room_seen, 1U);
    EXPECT_EQ(line(0, MSG_WARN, GREEDY, "m"), std::string(149, '0') + " m\n");
    EXPECT_EQ(room_seen, 150U);
}

TEST_F(Printing, CutsMessagesAfter1022Bytes) {
    for (size_t length : {0, 1, 1021, 1022, 1023, 5000}) {
        const std::string text(length, 'x');
        const std::string expected = text.substr(0, 1022) + "\n";
        EXPECT_EQ(line(0, MSG_WARN, PID, "%s", text.c_str()), "[123456] " + expected);
        EXPECT_EQ(line(0, MSG_WARN, 0, text.c_str(), 0), expected);
    }
    const std::string newline_at_the_end = std::string(1021, 'x') + "\n";
    EXPECT_EQ(line(0, MSG_WARN, 0, "%s", newline_at_the_end.c_str()), newline_at_the_end);
    EXPECT_EQ(line(0, MSG_WARN, 0, "%sy", newline_at_the_end.c_str()), newline_at_the_end);
}

TEST_F(Printing, PrintsWhatCameBeforeAFailedConversion) {
    const wchar_t unencodable[] = {0x7fffffff, 0};
    EXPECT_EQ(line(0, MSG_WARN, 0, "before %ls after", unencodable), "before \n");
}

TEST_F(Printing, TakesTheFormatAsTextWithoutArguments) {
    const std::string percents(2000, '%');
    _logforceprintv(log, 0, MSG_WARN, "100%d %s", nullptr);
    _logforceprintdecorationsv(log, 0, MSG_WARN, 0, percents.c_str(), nullptr);
    EXPECT_EQ(printed(), "100%d %s\n" + percents.substr(0, 1022) + "\n");
}

TEST_F(Printing, UsesTheModulesOwnDecorations) {
    _log_set_decorations(log, 0, LEVEL);
    print(log, 0, MSG_ERROR, "%d%%", 5);
    _logforceprintdecorations(log, 0, MSG_ERROR, MODULE, "%d", 6);
    EXPECT_EQ(printed(), "[ERROR] 5%\n[gc     ] 6\n");
}

TEST_F(Printing, KeepsTheLastErrorAndLosesLinesOfAFullDiskSilently) {
    ASSERT_EQ(logParseLogFilesEx("gc=/dev/full", nullptr, 0, nullptr), 0);
    errno = 4711;
    print(log, 0, MSG_ERROR, "lost");
    EXPECT_EQ(errno, 4711);
    ASSERT_EQ(logParseLogFilesEx("gc=>compiler", nullptr, 0, nullptr), 0);
    print(log, 0, MSG_ERROR, "kept");
    EXPECT_EQ(printed(), "kept\n");
}

TEST_F(Printing, AllocatesNothing) {
    if (!heap().replaced)
        GTEST_SKIP() << "the sanitizer has its own allocator";
    platform = Platform{};
    const size_t before = heap().allocations;
    _logforceprintdecorations(log, 0, MSG_ERROR, 0xff, "%s %d %.3f", "text", 1, 1.5);
    EXPECT_EQ(heap().allocations, before);
    EXPECT_NE(printed(), "");
}

TEST(LogSprintf, AccountsForWhatItWrote) {
    char buf[8] = "#######";
    size_t left = 0;
    EXPECT_EQ(log_sprintf(buf, &left, "%d", 1), buf);
    EXPECT_EQ(left, 0U);
    EXPECT_STREQ(buf, "#######");
    left = 4;
    EXPECT_EQ(log_sprintf(buf, &left, "%d", 12), buf + 2);
    EXPECT_EQ(left, 2U);
    EXPECT_EQ(log_sprintf(buf + 2, &left, "%d", 34), buf + 3);
    EXPECT_EQ(left, 1U);
    EXPECT_EQ(log_sprintf(buf + 3, &left, "plain"), buf + 3);
    EXPECT_EQ(left, 1U);
    EXPECT_STREQ(buf, "123");
}

// Formats that the compiler would warn of are meant here.
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-overflow"
#pragma GCC diagnostic ignored "-Wformat-truncation"

// In every room, from none to more than enough.
template <typename... Args>
static void expect_as_platform(const char* format, Args... args) {
    char expected[200];
    const int whole = snprintf(expected, sizeof expected, format, args...);
    for (size_t room = 1; room < sizeof expected; room++) {
        char buf[sizeof expected];
        memset(buf, '#', sizeof buf);
        size_t left = room;
        const char* end = log_sprintf(buf, &left, format, args...);
        const std::string text = std::string(expected, whole).substr(0, room - 1);
        ASSERT_EQ(std::string(buf, end - buf), text) << format << " in " << room;
        ASSERT_EQ(left, room - text.size());
        ASSERT_EQ(*end, '\0');
        ASSERT_EQ(buf[room], '#') << format << " in " << room;
    }
}

TEST(LogSprintf, WritesWhatThePlatformsFormatterWrites) {
    for (long value :
         {0L, 1L, -1L, 9L, 10L, 99L, 100L, 12345678L, 99999999L, 100000000L, 1L << 31, -(1L << 31),
          999999999999999999L, 1000000000000000000L, LONG_MAX, LONG_MIN}) {
        const int narrow = static_cast<int>(value);
        expect_as_platform("%d|%i|%u|%x", narrow, narrow, narrow, narrow);
        expect_as_platform("%ld|%lld|%zd", value, static_cast<long long>(value), value);
        expect_as_platform("<%lu %llx %zu>", value, static_cast<unsigned long long>(value), value);
    }
    expect_as_platform("%s, %s and %%s%%", "a string", "");
    expect_as_platform("%s", static_cast<const char*>(nullptr));
    expect_as_platform("%s %c%5d|%-5d|%05.1f|%p|%hhd", "then", 'c', 7, 7, 1.25, nullptr, 300);
    expect_as_platform("%ls %lc %s", L"wide", L'c', "plain");
    expect_as_platform("%2$s %1$d", 1, "positions");
    expect_as_platform("no conversions");
}

// Printers and a thread that moves their module from file to file; every line must end up whole
// in one of the files, once. Keepers hold the files open: naming a closed file empties it.
TEST_F(Printing, LosesNoLineWhileTheStreamIsSwitched) {
    constexpr int THREADS = 4, LINES = 2000, FILES = 3;
    static std::vector<std::string> names;
    std::vector<std::string> options;
    for (int i = 0; i < FILES; i++)
        names.push_back("keeper" + std::to_string(i));
    make_logger({{{names[0].c_str()}, {names[1].c_str()}, {names[2].c_str()}}});
    for (int i = 0; i < FILES; i++) {
        options.push_back("gc=>" + names[i]);
        const std::string file = names[i] + "=" + folder.file(names[i]);
        ASSERT_EQ(logParseLogFilesEx(file.c_str(), nullptr, 0, nullptr), 0);
    }
    std::atomic<int> running = THREADS;
    std::vector<std::thread> printers;
    for (int t = 0; t < THREADS; t++)
        printers.emplace_back([&, t] {
            for (int i = 0; i < LINES; i++)
                _logforceprintdecorations(log, 0, MSG_INFO, LEVEL, "<%d:%d>", t, i);
            running--;
        });
    while (running > 0)
        for (const std::string& option : options)
            EXPECT_EQ(logParseLogFilesEx(option.c_str(), nullptr, 0, nullptr), 0);
    for (std::thread& t : printers)
        t.join();

    std::multiset<std::string> lines;
    for (const std::string& name : names) {
        std::istringstream text(read_file(folder.file(name)));
        for (std::string line; std::getline(text, line);)
            lines.insert(line);
    }
    std::istringstream first(printed());
    for (std::string line; std::getline(first, line);)
        lines.insert(line);
    std::multiset<std::string> expected;
    for (int t = 0; t < THREADS; t++)
        for (int i = 0; i < LINES; i++)
            expected.insert("[INFO ] <" + std::to_string(t) + ":" + std::to_string(i) + ">");
    EXPECT_TRUE(lines == expected) << lines.size() << " lines";
}
