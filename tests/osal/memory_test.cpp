#include "osal/export/osal_assert.h"
#include "osal/export/osal_msmalloc.h"
#include "support/platform.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <unistd.h>

TEST(Memory, ResizingToNothingKeepsABlock) {
    void* const empty = msRealloc(globalMSpace(), gsMalloc(0), 0);
    EXPECT_NE(empty, nullptr);  // null would mean that the old block is still there
    msFree(globalMSpace(), empty);
}

static std::string reported(const std::string& expression, const std::string& argument) {
    testing::internal::CaptureStderr();
    faults = {.failing_write = 1, .error = EINTR};  // at first
    assertReport(expression.c_str(), "x.cpp", 417, "copy", "not\r\n%s", argument.c_str());
    close(STDERR_FILENO);  // so that the next reports fail; restored below
    errno = ENOTTY;
    const wchar_t unencodable[] = {0x7fffffff, 0};
    for (const char* format : {"", "%ls"})
        assertReport("e", "x.cpp", 417, "copy", format, unencodable);
    EXPECT_EQ(errno, ENOTTY);
    return testing::internal::GetCapturedStderr();
}

TEST(AssertReport, IsOneLineCutAtItsLimitAndKeepsTheLastError) {
    constexpr size_t LIMIT = 1023;
    EXPECT_EQ(reported("a\n&&", "12"), "Assertion failed: a &&, at x.cpp:417 in copy: not  12\n");
    const size_t room = LIMIT - reported("", "").size();
    EXPECT_EQ(reported("", std::string(room + 1, '%')), reported("", std::string(room, '%')));
    EXPECT_EQ(reported(std::string(LIMIT, '%'), "").size(), LIMIT);
}
