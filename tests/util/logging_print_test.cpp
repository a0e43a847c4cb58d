#include "support/faults.h"
#include "support/platform.h"
#include "support/temp_folder.h"
#include "support/test_logger.h"

#include <gtest/gtest.h>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstring>
#include <set>
#include <thread>

// Formats that the compiler would warn of are meant here.
#pragma GCC diagnostic ignored "-Wformat-security"
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wformat-overflow"
#pragma GCC diagnostic ignored "-Wformat-truncation"
#endif

using std::string;

static const string TIME_TEXT(29, 't');
static string rooms;  // that the decorators were offered

static char* short_decorator(char* position, size_t* bytesLeft) {
    return log_sprintf(position, bytesLeft, "{%s}", "short");
}

static char* greedy_decorator(char* position, size_t* bytesLeft) {
    rooms += std::to_string(*bytesLeft) + " ";
    return log_sprintf(position, bytesLeft, "%0500d", 7);
}

// The usual mistake with snprintf(): the length of the whole text instead of what was written.
static char* overshooting_decorator(char* position, size_t* bytesLeft) {
    position += snprintf(position, *bytesLeft, "%0500d", 7);
    errno = EDOM;
    return position;
}

constexpr unsigned LEVEL = 1, MODULE = 2, TIME = 4, TID = 32, PID = 64;
constexpr unsigned STANDARD = 127, SHORT = 128, OVERSHOOTING = 256, GREEDY = 512, AGAIN = 1024,
                   NO_DECORATION = 2048 | 1U << 31;

// A logger whose modules write to a file, on a platform with fixed clocks and ids.
struct Printing : testing::Test {
    inline static logger* const log = make_logger({.modules = {{"gc"}, {"compiler"}, {"keeper"}},
                                                   .decorators = {{"s", short_decorator},
                                                                  {"o", overshooting_decorator},
                                                                  {"g", greedy_decorator},
                                                                  {"a", greedy_decorator},
                                                                  {"none", nullptr}},
                                                   .max_decoration_size = 50});
    TempFolder folder;

    void SetUp() override {
        platform = Platform{.time_text = TIME_TEXT,
                            .millis = LONG_MAX,
                            .nanos = LONG_MIN,
                            .process_id = 42,
                            .thread_id = 4242};
        ASSERT_EQ(files(folder.file("log")), 0);
    }
    void TearDown() override {
        files("stderr");
    }
    string printed() const {
        return read_file(folder.file("log"));
    }
    // What one call prints.
    template <typename... Args>
    string line(LogModule module, MsgLevel level, unsigned decorations, const Args... args) {
        const size_t before = printed().size();
        _logforceprintdecorations(log, module, level, static_cast<int>(decorations), args...);
        return printed().substr(before);
    }
};

const struct LineCase {
    LogModule module;
    MsgLevel level;
    unsigned decorations;
    const char *message, *line;
} LINE_CASES[] = {
    {0, MSG_WARN, 0, "hello", "hello\n"},
    {0, MSG_WARN, 0, "hello\n", "hello\n"},
    {0, MSG_WARN, 0, "", "\n"},
    {0, MSG_WARN, 0, nullptr, ""},
    {0, MSG_WARN, LEVEL, nullptr, "[WARN ] "},
    {0, MSG_QUIET, LEVEL | MODULE, "", "[QUIET][gc     ] \n"},
    {1, MSG_INFO, LEVEL | MODULE, "m", "[INFO ][compile] m\n"},
    {0, MSG_TRACE, TID | PID, "m", "[04242][00042] m\n"},
    {0, MSG_TRACE, NO_DECORATION, "m", " m\n"},
    {0, static_cast<MsgLevel>(MSG_MAX), LEVEL, "m", "[?    ] m\n"},
};

TEST_F(Printing, LaysOutTheLineAndTakesTheFormatAsTextWithoutArguments) {
    for (const LineCase& c : LINE_CASES)
        EXPECT_EQ(line(c.module, c.level, c.decorations, c.message), c.line);
    platform.time_text = "";
    EXPECT_EQ(line(0, MSG_WARN, TIME | MODULE, "m"), "[gc     ] m\n");
    const wchar_t unencodable[] = {0x7fffffff, 0};
    EXPECT_EQ(line(0, MSG_WARN, 0, "before %ls after", unencodable), "before \n");
    ASSERT_EQ(files("gc=" + folder.file("texts")), 0);
    apply_log_decorations(log, "level");
#if defined(__x86_64__)  // where a list of arguments may be null
    _logforceprintv(log, 0, MSG_WARN, "100%d %s", nullptr);
    const string percents(2000, '%');
    _logforceprintdecorationsv(log, 0, MSG_WARN, 0, percents.c_str(), nullptr);
    EXPECT_EQ(read_file(folder.file("texts")),
              "[WARN ] 100%d %s\n" + percents.substr(0, 1022) + "\n");
#endif
}

// What the decorations may take together: 99 bytes, and 50 more with extended ones.
TEST_F(Printing, CutsDecorationsAtTheirBudgetAndMessagesAfter1022Bytes) {
    const string all = "[WARN ][gc     ][" + TIME_TEXT +
                       "][9223372036854775807][-9223372036854775808][04242][00042]";
    const string zeros(149, '0');
    EXPECT_EQ(line(0, MSG_WARN, STANDARD, "m"), all.substr(0, 99) + " m\n");
    EXPECT_EQ(line(0, MSG_WARN, STANDARD | GREEDY, "m"), (all + zeros).substr(0, 149) + " m\n");
    EXPECT_EQ(line(0, MSG_WARN, GREEDY | AGAIN, "m"), zeros + " m\n");
    errno = ERANGE;
    EXPECT_EQ(line(0, MSG_WARN, SHORT | OVERSHOOTING | GREEDY, "%m"),
              "{short}" + zeros.substr(7) + " " + strerror(ERANGE) + "\n");
    EXPECT_EQ(line(0, MSG_WARN, OVERSHOOTING, "m"), zeros + " m\n");
    EXPECT_EQ(rooms, std::to_string(150 - all.size()) + " 150 1 1 ");
    for (size_t length : {0, 1, 1021, 1022, 1023, 5000}) {
        const string text(length, 'x'), cut = text.substr(0, 1022) + "\n";
        EXPECT_EQ(line(0, MSG_WARN, LEVEL, "%s", text.c_str()), "[WARN ] " + cut);
        EXPECT_EQ(line(0, MSG_WARN, 0, text.c_str()), cut);
    }
    const string full = string(1021, 'x') + "\n";
    EXPECT_EQ(line(0, MSG_WARN, 0, "%sy", full.c_str()), full);
}

TEST_F(Printing, KeepsTheLastErrorLosesLinesOfAFullDiskAndAllocatesNothing) {
    ASSERT_EQ(files("gc=/dev/full"), 0);
    errno = 4711;
    print(log, 0, MSG_ERROR, "lost");
    EXPECT_EQ(errno, 4711);
    platform = Platform{};
    ASSERT_EQ(files("gc=>compiler"), 0);
    const size_t allocations = faults.allocations;
    _logforceprintdecorations(log, 0, MSG_ERROR, 0xff, "%s %.3f", "kept", 1.5);
    EXPECT_EQ(faults.allocations, allocations);
    EXPECT_NE(printed().find("{short} kept 1.500\n"), string::npos);
}

// Printers and a thread that moves their module from file to file; every line must end up whole
// in one of the files, once. Others hold the files open: naming a closed file empties it.
TEST_F(Printing, LosesNoLineWhileTheStreamIsSwitched) {
    constexpr int THREADS = 4, LINES = 2000;
    ASSERT_EQ(files("keeper=" + folder.file("other")), 0);
    std::atomic<int> running = THREADS;
    {
        std::vector<std::jthread> printers;
        for (int t = 0; t < THREADS; t++)
            printers.emplace_back([&, t] {
                for (int i = 0; i < LINES; i++)
                    _logforceprintdecorations(log, 0, MSG_INFO, LEVEL, "%d", t * LINES + i);
                running--;
            });
        while (running > 0)
            for (const char* option : {"gc=>keeper", "gc=>compiler"})
                EXPECT_EQ(files(option), 0);
    }
    std::set<string> missing;
    for (int i = 0; i < THREADS * LINES; i++)
        missing.insert("[INFO ] " + std::to_string(i));
    std::istringstream text(printed() + read_file(folder.file("other")));
    for (string line; std::getline(text, line);)
        EXPECT_EQ(missing.erase(line), 1U) << line;
    EXPECT_EQ(missing.size(), 0U);
}

// In every room, from almost none to more than enough.
template <typename... Args>
static void expect_as_platform(const char* format, Args... args) {
    char expected[200];
    const int whole = snprintf(expected, sizeof expected, format, args...);
    for (size_t room = 1; room < sizeof expected; room++) {
        char buf[sizeof expected];
        memset(buf, '#', sizeof buf);
        size_t left = room;
        const char* end = log_sprintf(buf, &left, format, args...);
        const string text = string(expected, whole).substr(0, room - 1);
        ASSERT_EQ(string(buf, end - buf), text) << format << " in " << room;
        ASSERT_TRUE(left == room - text.size() && *end == '\0' && buf[room] == '#') << format;
    }
}

TEST(LogSprintf, WritesWhatThePlatformsFormatterWrites) {
    for (long value : {0L, 1L, -1L, 9L, 10L, 99L, 100L, 1L << 31, -(1L << 31), 999999999999999999L,
                       1000000000000000000L, LONG_MAX, LONG_MIN}) {
        const int narrow = static_cast<int>(value);
        expect_as_platform("%d|%i|%u|%x", narrow, narrow, narrow, narrow);
        expect_as_platform("%ld|%lld|%zd|%lu|%llx|%zu", value, value, value, value, value, value);
    }
    expect_as_platform("%s, %s and %%s%%", "a string", "");
    expect_as_platform("%s", static_cast<const char*>(nullptr));
    expect_as_platform("%s %c%5d|%-5d|%05.1f|%p|%hhd", "then", 'c', 7, 7, 1.25, nullptr, 300);
    expect_as_platform("%ls %lc %2d", L"wide", L'c', 7);
    char buf[8], untouched = '#';
    size_t none = 0, unknown = SIZE_MAX;
    EXPECT_EQ(log_sprintf(buf, &unknown, "%5d", 1), buf + 5);
    EXPECT_EQ(unknown, SIZE_MAX - 5);
    EXPECT_EQ(log_sprintf(&untouched, &none, "%d", 1), &untouched);
    EXPECT_TRUE(none == 0 && untouched == '#');
}
