#include "osal/export/osal_timing.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

TEST(Timing, TextClockAndCounterAgreeAcrossASecondAndInAnotherZone) {
    EXPECT_NEAR(counterFrequency * counterToNanoMultiplier, 1e9, 1);
    setenv("TZ", "<+0545>-5:45", 1);
    tzset();
    const s8 start = timingGetCounterTime();
    sleep(1);  // the zone shows when the second of the kept text is over
    EXPECT_NEAR((timingGetCounterTime() - start) * counterToNanoMultiplier, 1.5e9, 0.5e9);
    TimeBuffer text;
    const s8 before = timingGetCurrentTimeMillis();
    ASSERT_TRUE(timingFormatCurrentTime(text));
    const s8 after = timingGetCurrentTimeNanos() / 1'000'000;
    struct tm local = {};
    ASSERT_EQ(strptime(text, "%Y-%m-%dT%H:%M:%S.", &local), text + 20) << text;
    const s8 shown = mktime(&local) * 1000 + atoi(text + 20);
    EXPECT_TRUE(before <= shown && shown <= after) << text;
    EXPECT_STREQ(text + 23, "+0545");
}
