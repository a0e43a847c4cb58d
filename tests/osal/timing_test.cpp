#include "osal/export/osal_timing.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>
#include <climits>

static bool clocks_fail = false;
static time_t second = 0;  // that the clocks show; 0 for the right one

int clock_gettime(clockid_t clock, timespec* now) noexcept {
    const long result = clocks_fail ? -1 : syscall(SYS_clock_gettime, clock, now);
    now->tv_sec = second != 0 ? second : now->tv_sec;
    return static_cast<int>(result);
}

TEST(Timing, HasNoTextForATimeThatCannotBeToldAndNoTimeWithoutAClock) {
    constexpr time_t YEAR = 31'556'952;  // on average
    TimeBuffer text;
    struct {
        time_t second;
        bool has_text;
    } const CASES[] = {{9'000 * YEAR, true}, {99'000 * YEAR, false}, {LONG_MAX, false}};
    for (const auto& c : CASES) {
        second = c.second;
        EXPECT_EQ(timingFormatCurrentTime(text), c.has_text) << c.second;
    }
    clocks_fail = true;
    EXPECT_FALSE(timingFormatCurrentTime(text));
    EXPECT_TRUE(timingGetCounterTime() == 0 && timingGetCurrentTimeNanos() == 0);
    clocks_fail = false;
    second = 0;
}

TEST(Timing, TextClockAndCounterAgreeAcrossASecondAndInAnotherZone) {
    EXPECT_NEAR(counterFrequency * counterToNanoMultiplier, 1e9, 1);
    setenv("TZ", "<+0545>-5:45", 1);
    tzset();
    const s8 start = timingGetCounterTime();
    sleep(1);  // the zone shows when the second of the kept text is over
    EXPECT_NEAR((timingGetCounterTime() - start) * counterToNanoMultiplier, 1.5e9, 0.5e9);
    TimeBuffer text = "#############################";
    const s8 before = timingGetCurrentTimeMillis();
    ASSERT_TRUE(timingFormatCurrentTime(text));
    const s8 after = timingGetCurrentTimeNanos() / 1'000'000;
    struct tm local = {};
    ASSERT_EQ(strptime(text, "%Y-%m-%dT%H:%M:%S.", &local), text + 20) << text;
    const s8 shown = mktime(&local) * 1000 + atoi(text + 20);
    EXPECT_TRUE(before <= shown && shown <= after) << text;
    EXPECT_STREQ(text + 23, "+0545");
}
