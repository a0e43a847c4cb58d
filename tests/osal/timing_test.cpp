#include "osal/export/osal_timing.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <chrono>
#include <string>
#include <thread>

TEST(Counter, RunsForwardAtTheFrequencyInTheVariables) {
    counterfreq frequency = 0;
    double nanos_per_tick = 0;
    _timing_get_vars(&frequency, &nanos_per_tick);
    EXPECT_EQ(counterFrequency, frequency);
    EXPECT_EQ(counterToNanoMultiplier, nanos_per_tick);
    EXPECT_NEAR(static_cast<double>(frequency) * nanos_per_tick, 1e9, 1);

    const auto before = std::chrono::steady_clock::now();
    const s8 start = timingGetCounterTime();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const double nanos = static_cast<double>(timingGetCounterTime() - start) * nanos_per_tick;
    const std::chrono::nanoseconds most = std::chrono::steady_clock::now() - before;
    EXPECT_GE(nanos, 20e6);
    EXPECT_LE(nanos, static_cast<double>(most.count()) * 1.01);
}

TEST(WallClock, MillisNanosAndTheSystemAgree) {
    const s8 second = time(nullptr);
    const s8 millis = timingGetCurrentTimeMillis();
    const s8 millis_of_nanos = timingGetCurrentTimeNanos() / 1'000'000;
    EXPECT_LE(millis, millis_of_nanos);
    EXPECT_LE(millis_of_nanos, timingGetCurrentTimeMillis());
    EXPECT_NEAR(static_cast<double>(millis) / 1000, static_cast<double>(second), 2);
}

// Takes the current time as text and reads it back: it must lie between two readings of the
// clock. Returns the offset from UTC that it ends with.
static std::string checked_offset() {
    TimeBuffer text;
    const s8 before = timingGetCurrentTimeMillis();
    EXPECT_TRUE(timingFormatCurrentTime(text));
    const s8 after = timingGetCurrentTimeMillis();
    struct tm fields = {};
    const char* millis = strptime(text, "%Y-%m-%dT%H:%M:%S.", &fields);
    if (millis != text + 20 || strlen(millis) != 8 ||
        strptime(millis + 3, "%z", &fields) == nullptr)
        return text;
    const s8 east = fields.tm_gmtoff;
    const s8 shown = (timegm(&fields) - east) * 1000 + std::stoi(std::string(millis, 3));
    EXPECT_LE(before, shown) << text;
    EXPECT_LE(shown, after) << text;
    return millis + 3;
}

struct ZoneCase {
    const char* zone;
    const char* offset;
};

const ZoneCase ZONE_CASES[] = {
    {"UTC0", "+0000"},
    {"<+0545>-5:45", "+0545"},
    {"<-0015>0:15", "-0015"},
    {"<+14>-14", "+1400"},             // mostly another day
    {"EST5EDT,0/0,J365/25", "-0400"},  // summer time all year
};

TEST(TimeText, ShowsTheTimeOfTheZoneAndFollowsBothIntoTheNextSecond) {
    checked_offset();
    const s8 second = timingGetCurrentTimeMillis() / 1000;
    for (const ZoneCase& c : ZONE_CASES) {
        setenv("TZ", c.zone, 1);
        tzset();
        std::thread([&] { EXPECT_EQ(checked_offset(), c.offset); }).join();  // has kept no text
    }
    while (timingGetCurrentTimeMillis() / 1000 == second)
        checked_offset();
    EXPECT_EQ(checked_offset(), std::end(ZONE_CASES)[-1].offset);
}
