#include "support/platform.h"
#include "util/export/posix/stringutil_pd.h"
#include "util/export/stringutil.h"

#include <gtest/gtest.h>

struct FormatCase {
    size_t room;
    const char* text;
    int result;
    const char* left;  // in the buffer
};

const FormatCase FORMAT_CASES[] = {
    {8, "abc", 3, "abc"},   {4, "abc", 3, "abc"},  // text and terminator fill it exactly
    {4, "abcd", -1, "abc"}, {1, "a", -1, ""},     {1, "", 0, ""}, {0, "abc", -1, "######"},
};

TEST(Snprintf, TellsWholeTextsFromCutOnes) {
    for (const FormatCase& c : FORMAT_CASES) {
        char buf[8] = "######";
        EXPECT_EQ(kestrum_util_snprintf(buf, c.room, "%s", c.text), c.result) << c.text;
        EXPECT_STREQ(buf, c.left);
    }
    EXPECT_EQ(kestrum_util_snprintf(nullptr, 8, "%s", "abc"), -1);
    char buf[8];
    const wchar_t unencodable[] = {0x7fffffff, 0};
    EXPECT_EQ(kestrum_util_snprintf(buf, sizeof buf, "%ls", unencodable), -1);
    static volatile size_t unknown = SIZE_MAX;  // the compiler refuses a known one
    EXPECT_EQ(kestrum_util_snprintf(buf, unknown, "%s", "abc"), 3);
    EXPECT_STREQ(buf, "abc");
}

constexpr size_t AS_MUCH_AS_FITS = static_cast<size_t>(-1);

struct CopyCase {
    size_t room, wanted;
    bool ok;
    const char* left;
    const char* failed_check;
};

const CopyCase COPY_CASES[] = {
    {10, 3, true, "hel", ""},
    {10, 7, true, "hello", ""},
    {6, AS_MUCH_AS_FITS, true, "hello", ""},
    {4, AS_MUCH_AS_FITS, false, "hel", ""},
    {4, 4, false, "", ""},
    {4, 5, false, "", "destSize >= bytesToCopy|{}kestrum_util_strncpy_s|"},
    {4, 0, true, "", "bytesToCopy > 0|{}kestrum_util_strncpy_s|"},
    {0, 5, false, "######", "destSize >= bytesToCopy|{}kestrum_util_strncpy_s|"},
    {0, AS_MUCH_AS_FITS, false, "######", "destSize > 0|{}kestrum_util_strncpy|"},
};

TEST(StrncpyS, CopiesWhatWasAskedForOrSaysItDoesNotFit) {
    for (const CopyCase& c : COPY_CASES) {
        SCOPED_TRACE(testing::Message() << c.room << " " << c.wanted);
        platform = Platform{};
        char buf[10] = "######";
        EXPECT_EQ(kestrum_util_strncpy_s(buf, c.room, "hello", c.wanted), c.ok);
        EXPECT_STREQ(buf, c.left);
        std::string report = platform.reports.empty() ? "" : platform.reports[0];
        if (const size_t path = report.find(STRINGUTIL_PD_PATH "|"); path != std::string::npos)
            report.replace(path, sizeof STRINGUTIL_PD_PATH, "{}");
        EXPECT_EQ(report, c.failed_check);
    }
}
