#include "osal/export/osal_assert.h"
#include "osal/export/osal_msmalloc.h"
#include "support/faults.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <string>

TEST(Memory, ResizingToNothingKeepsABlock) {
    void* block = gsMalloc(0);
    ASSERT_NE(block, nullptr);
    void* empty = msRealloc(globalMSpace(), block, 0);
    EXPECT_NE(empty, nullptr);  // null would mean that the old block is still there
    msFree(globalMSpace(), empty);
}

static std::string reported(const std::string& expression, const std::string& argument) {
    testing::internal::CaptureStderr();
    faults.failing_write = 1;
    faults.error = EINTR;  // at first
    assertReport(expression.c_str(), "x.cpp", 417, "copy", "not\r\n%s", argument.c_str());
    close(STDERR_FILENO);  // where the next report fails; put back below
    errno = ENOTTY;
    assertReport("e", "x.cpp", 417, "copy", "");
    const wchar_t unencodable[] = {0x7fffffff, 0};
    assertReport("e", "x.cpp", 417, "copy", "%ls", unencodable);
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
