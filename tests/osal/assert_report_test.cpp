#include "osal/export/osal_assert.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>
#include <algorithm>
#include <string>

constexpr size_t LONGEST_LINE = 1023;

// What a report writes to standard error: one line in one system call (the socket keeps the
// bytes of each apart), after which the last-error value is what it was.
static std::string reported(const char* expression, const char* format, const char* argument) {
    int ends[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0);
    const int saved = dup(STDERR_FILENO);
    dup2(ends[1], STDERR_FILENO);
    close(ends[1]);
    errno = ENOTTY;
    assertReport(expression, "util/x.cpp", 417, "copy", format, argument);
    const int error = errno;
    dup2(saved, STDERR_FILENO);
    close(saved);
    char line[2 * LONGEST_LINE];
    const ssize_t length = recv(ends[0], line, sizeof line, 0);
    char more;
    EXPECT_EQ(recv(ends[0], &more, 1, 0), 0) << "more than one write";
    close(ends[0]);
    const std::string text(line, static_cast<size_t>(std::max(length, ssize_t{0})));
    EXPECT_EQ(text.find_first_of("\r\n"), text.size() - 1) << text;
    EXPECT_EQ(error, ENOTTY);
    return text;
}

TEST(AssertReport, IsOneLineThatNamesEverything) {
    const std::string line = reported("size > 0 &&\n size < 9", "not\r\n%s", "12");
    for (const char* part : {"size > 0 &&  size < 9", "util/x.cpp:417", "copy", "not  12"})
        EXPECT_NE(line.find(part), std::string::npos) << part << " in " << line;
    EXPECT_NE(reported("e", "", "unused").find("copy\n"), std::string::npos);  // nothing added
}

TEST(AssertReport, CutsALongLineAndStillEndsIt) {
    size_t longest_expression = 0, longest_message = 0;
    for (size_t length = 900; length < 1100; length++) {
        const std::string text(length, '%');
        const std::string of_expression = reported(text.c_str(), "%s", "message");
        const std::string of_message = reported("e", "%s", text.c_str());
        longest_expression = std::max(longest_expression, of_expression.size());
        longest_message = std::max(longest_message, of_message.size());
    }
    EXPECT_EQ(longest_expression, LONGEST_LINE);
    EXPECT_EQ(longest_message, LONGEST_LINE);
}
