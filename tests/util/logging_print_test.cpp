#include "support/platform.h"
#include "support/temp_folder.h"
#include "support/test_logger.h"

#include <gtest/gtest.h>
#include <cerrno>
#include <climits>
#include <cstring>
#include <vector>

// Formats that the compiler would warn of are meant here.
#pragma GCC diagnostic ignored "-Wformat-security"

using std::string;

static const string TIME_TEXT(29, 't');
static string rooms;  // that decorators were given

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

constexpr unsigned LEVEL = 1, MODULE = 2, TIME = 4, TID = 32, PID = 64, STANDARD = 127, SHORT = 128,
                   OVERSHOOTING = 256, GREEDY = 512, NO_DECORATION = 1024 | 1U << 31;

// A logger whose modules write to a file, on a platform with fixed clocks and ids.
struct Printing : testing::Test {
    inline static logger* const log = make_logger({.modules = {{"gc"}, {"compiler"}},
                                                   .decorators = {{"s", short_decorator},
                                                                  {"o", overshooting_decorator},
                                                                  {"g", greedy_decorator},
                                                                  {"none", nullptr}},
                                                   .max_decoration_size = 50});
    TempFolder folder;

    void SetUp() override {
        platform = Platform{.time_text = TIME_TEXT.c_str()};
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
    string line(LogModule module, int level, unsigned decorations, const Args... args) {
        const size_t before = printed().size();
        _logforceprintdecorations(log, module, MsgLevel(level), int(decorations), args...);
        return printed().substr(before);
    }
};

TEST_F(Printing, LaysOutTheLineAndTakesTheFormatAsTextWithoutArguments) {
    const char* const no_format = nullptr;
    EXPECT_EQ(line(0, MSG_WARN, 0, "hello"), "hello\n");
    EXPECT_EQ(line(0, MSG_WARN, 0, "hello\n"), "hello\n");
    EXPECT_EQ(line(0, MSG_WARN, 0, ""), "\n");
    EXPECT_EQ(line(0, MSG_WARN, 0, no_format), "");
    EXPECT_EQ(line(0, MSG_WARN, LEVEL, no_format), "[WARN ] ");
    EXPECT_EQ(line(0, MSG_QUIET, LEVEL | MODULE, ""), "[QUIET][gc     ] \n");
    EXPECT_EQ(line(1, MSG_INFO, LEVEL | MODULE, "m"), "[INFO ][compile] m\n");
    EXPECT_EQ(line(0, MSG_TRACE, TID | PID, "m"), "[04242][00042] m\n");
    EXPECT_EQ(line(0, MSG_TRACE, NO_DECORATION, "m"), " m\n");
    EXPECT_EQ(line(0, MSG_MAX, LEVEL, "m"), "[?    ] m\n");
    EXPECT_EQ(line(0, MSG_WARN, 0, "before %ls after", L"\x7fffffff"), "before \n");
    platform.time_text = "";
    EXPECT_EQ(line(0, MSG_WARN, TIME | MODULE, "m"), "[gc     ] m\n");
    const string percents(2000, '%');
    apply_log_decorations(log, "level");
#if defined(__x86_64__)  // where a list of arguments may be null
    _logforceprintv(log, 0, MSG_WARN, "100%d %s", nullptr);
    _logforceprintdecorationsv(log, 0, MSG_WARN, 0, percents.c_str(), nullptr);
    EXPECT_TRUE(printed().ends_with("\n[WARN ] 100%d %s\n" + percents.substr(0, 1022) + "\n"));
#endif
}

// What the decorations may take together: 99 bytes, and 50 more with extended ones.
TEST_F(Printing, CutsDecorationsAtTheirBudgetAndMessagesAfter1022Bytes) {
    const string all = "[WARN ][gc     ][" + TIME_TEXT +
                       "][9223372036854775807][-9223372036854775808][04242][00042]";
    const string zeros(149, '0');
    EXPECT_EQ(line(0, MSG_WARN, STANDARD, "m"), all.substr(0, 99) + " m\n");
    EXPECT_EQ(line(0, MSG_WARN, STANDARD | GREEDY, "m"), (all + zeros).substr(0, 149) + " m\n");
    errno = ERANGE;
    EXPECT_EQ(line(0, MSG_WARN, SHORT | OVERSHOOTING | GREEDY, "%m"),
              "{short}" + zeros.substr(7) + " " + strerror(ERANGE) + "\n");
    EXPECT_EQ(rooms, std::to_string(150 - all.size()) + " 1 ");
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
    print(log, MSG_ERROR, "lost");
    EXPECT_EQ(errno, 4711);
    platform = Platform{};
    ASSERT_EQ(files("gc=>compiler"), 0);
    const size_t allocations = faults.allocations;
    _logforceprintdecorations(log, 0, MSG_ERROR, 0xff, "%s %.3f", "kept", 1.5);
    EXPECT_EQ(faults.allocations, allocations);
    EXPECT_NE(printed().find("{short} kept 1.500\n"), string::npos);
}

// In buffers of every size, from almost nothing to more than enough.
template <typename... Args>
static void expect_as_platform(const char* format, Args... args) {
    char expected[200];
    const int whole = snprintf(expected, sizeof expected, format, args...);
    for (size_t room = 1; room < sizeof expected; room++) {
        string buf(sizeof expected, '#');
        size_t left = room;
        const char* end = log_sprintf(buf.data(), &left, format, args...);
        const string text = string(expected, whole).substr(0, room - 1);
        ASSERT_EQ(buf.substr(0, end - buf.data()), text) << format << " in " << room;
        ASSERT_TRUE(left == room - text.size() && *end == '\0' && buf[room] == '#') << format;
    }
}

TEST(LogSprintf, WritesWhatThePlatformsFormatterWrites) {
    std::vector<long> values = {0, -1, 1L << 31, -(1L << 31), LONG_MAX, LONG_MIN};
    for (long power = 1; power <= LONG_MAX / 10; power *= 10)  // where a digit is added
        values.insert(values.end(), {10 * power - 1, 10 * power});
    for (long value : values) {
        const int narrow = static_cast<int>(value);
        expect_as_platform("%d|%i|%u|%x", narrow, narrow, narrow, narrow);
        expect_as_platform("%ld|%lld|%zd|%lu|%llx|%zu", value, value, value, value, value, value);
    }
    expect_as_platform("%s, %s and %%s%%", "a string", "");
    const char* volatile no_string = nullptr;  // the compiler would warn of a null pointer
    expect_as_platform("%s", no_string);
    expect_as_platform("%s %c%5d|%-5d|%05.1f|%p|%hhd", "then", 'c', 7, 7, 1.25, nullptr, 300);
    expect_as_platform("%ls %lc %2d", L"wide", L'c', 7);
    char buf[8], untouched = '#';
    size_t none = 0, unknown = SIZE_MAX;
    EXPECT_TRUE(log_sprintf(buf, &unknown, "%5d", 1) == buf + 5 && unknown == SIZE_MAX - 5);
    EXPECT_TRUE(log_sprintf(&untouched, &none, "%d", 1) == &untouched && untouched == '#');
}
