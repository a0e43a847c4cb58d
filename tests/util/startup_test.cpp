// The static initialisers of the library, seen through the platform operations that they call
// before anything of this program has run.

#include "osal/export/osal_threads.h"
#include "osal/export/osal_timing.h"

#include <gtest/gtest.h>

constexpr counterfreq FREQUENCY = 12345;
constexpr double MULTIPLIER = 0.25;

static const char* calls[8];
static size_t num_calls;

osalError tlsAlloc(TLSKey*) {
    calls[num_calls++] = "allocate the thread-local slot";
    return getenv("FAIL_SLOT") == nullptr ? OSAL_OK : OSAL_OUT_OF_RESOURCES;
}

void rwWriteLock(volatile int*) {
    calls[num_calls++] = "register the library's logger";
}

void rwWriteUnlock(volatile int*) {}

void _timing_get_vars(counterfreq* frequency, double* toNanos) {
    calls[num_calls++] = "read the timing variables";
    *frequency = FREQUENCY;
    *toNanos = MULTIPLIER;
}

TEST(Startup, RunsTheInitialisersInOrderAndOnce) {
    const std::vector<std::string> expected = {"allocate the thread-local slot",
                                               "register the library's logger",
                                               "read the timing variables"};
    EXPECT_EQ(std::vector<std::string>(calls, calls + num_calls), expected);
    EXPECT_EQ(counterFrequency, FREQUENCY);
    EXPECT_EQ(counterToNanoMultiplier, MULTIPLIER);
    EXPECT_EQ(timingGetCounterFreq(), FREQUENCY);
}

TEST(Startup, AbortsWithoutTheSlot) {
    const int status = system("FAIL_SLOT=1 /proc/$PPID/exe 2>/dev/null");
    EXPECT_EQ(status, 0x8600);  // the shell's way of saying SIGABRT
}
