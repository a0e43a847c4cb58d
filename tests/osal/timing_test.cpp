#include "osal/export/osal_timing.h"

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <climits>
#include <cstring>

static time_t second = 0;  // that the clocks show; 0 for the real time, negative when they fail

int clock_gettime(clockid_t clock, timespec* now) noexcept {
    const int result = syscall(SYS_clock_gettime, clock, now);
    now->tv_sec = second != 0 ? second : now->tv_sec;
    return second < 0 ? -1 : result;
}

TEST(Timing, AgreesInTextClockAndCounterAndHasNoTextForATimeThatCannotBeTold) {
    constexpr time_t YEAR = 31'556'952;  // on average
    TimeBuffer text;
    for (time_t given : {9'000 * YEAR, 99'000 * YEAR, LONG_MAX, -1L}) {
        second = given;
        EXPECT_EQ(timingFormatCurrentTime(text), given == 9'000 * YEAR) << given;
    }
    EXPECT_TRUE(timingGetCounterTime() == 0 && timingGetCurrentTimeNanos() == 0);
    second = 0;
    EXPECT_NEAR(counterFrequency * counterToNanoMultiplier, 1e9, 1);
    setenv("TZ", "<+0545>-5:45", 1);
    tzset();
    const s8 start = timingGetCounterTime();
    sleep(1);  // the zone shows when the second of the kept text is over
    EXPECT_NEAR((timingGetCounterTime() - start) * counterToNanoMultiplier, 1.5e9, 0.5e9);
    memset(text, '#', sizeof text);
    const s8 before = timingGetCurrentTimeMillis();
    ASSERT_TRUE(timingFormatCurrentTime(text));
    const s8 after = timingGetCurrentTimeNanos() / 1'000'000;
    struct tm local = {};
    ASSERT_EQ(strptime(text, "%Y-%m-%dT%H:%M:%S.", &local), text + 20) << text;
    const s8 shown = mktime(&local) * 1000 + atoi(text + 20);
    EXPECT_TRUE(before <= shown && shown <= after) << text;
    EXPECT_STREQ(text + 23, "+0545");
}
