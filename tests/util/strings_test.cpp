#include "support/platform.h"
#include "util/export/posix/stringutil_pd.h"
#include "util/export/stringutil.h"

#include <gtest/gtest.h>
#include <cstring>

struct FormatCase {
    size_t room;
    const char* text;
    int result;
    const char* left;  // in the buffer
};

const FormatCase FORMAT_CASES[] = {
    {8, "abc", 3, "abc"},   {4, "abc", 3, "abc"},  // text and terminator fill the buffer exactly
    {4, "abcd", -1, "abc"}, {1, "a", -1, ""},     {1, "", 0, ""}, {0, "abc", -1, "######"},
};

TEST(Snprintf, TellsWholeTextsFromCutOnes) {
    for (const FormatCase& c : FORMAT_CASES) {
        SCOPED_TRACE(c.text);
        char buf[8] = "######";
        EXPECT_EQ(kestrum_util_snprintf(buf, c.room, "%s", c.text), c.result);
        EXPECT_STREQ(buf, c.left);
    }
    EXPECT_EQ(kestrum_util_snprintf(nullptr, 8, "%s", "abc"), -1);
}

TEST(Snprintf, PassesAFailedConversionOnAndTerminates) {
    char buf[4];
    std::memset(buf, '#', sizeof buf);
    const wchar_t unencodable[] = {0x7fffffff, 0};
    EXPECT_LT(kestrum_util_snprintf(buf, sizeof buf, "%ls", unencodable), 0);
    EXPECT_EQ(buf[3], '\0');
}

TEST(Compare, IgnoresCase) {
    EXPECT_EQ(kestrum_util_stricmp("TRUE", "true"), 0);
    EXPECT_LT(kestrum_util_stricmp("TRUE", "trues"), 0);
    EXPECT_EQ(kestrum_util_strnicmp("0X1f", "0x", 2), 0);
    EXPECT_GT(kestrum_util_strnicmp("0X1f", "0X1E", 4), 0);
}

TEST(Strncpy, CutsAndFillsWithNuls) {
    char buf[6] = "#####";
    kestrum_util_strncpy(buf, "hello", 3);
    EXPECT_STREQ(buf, "he");
    EXPECT_EQ(buf[3], '#');
    kestrum_util_strncpy(buf, "a", 4);
    EXPECT_EQ(std::memcmp(buf, "a\0\0\0#", 5), 0);
}

TEST(Strncpy, ReportsAnEmptyDestinationAndLeavesIt) {
    platform = Platform{};
    char buf[2] = "#";
    kestrum_util_strncpy(buf, "hello", 0);
    EXPECT_STREQ(buf, "#");
    EXPECT_EQ(platform.reports,
              std::vector<std::string>{"destSize > 0|src/util/export/posix/stringutil_pd|"
                                       "kestrum_util_strncpy|"});
}

struct CopyCase {
    size_t room;
    size_t wanted;
    bool ok;
    const char* left;
    std::vector<const char*> failed_checks;
};

constexpr size_t AS_MUCH_AS_FITS = static_cast<size_t>(-1);

const CopyCase COPY_CASES[] = {
    {10, 3, true, "hel", {}},
    {10, 7, true, "hello", {}},
    {6, 5, true, "hello", {}},
    {6, AS_MUCH_AS_FITS, true, "hello", {}},
    {4, AS_MUCH_AS_FITS, false, "hel", {}},
    {4, 4, false, "", {}},
    {4, 5, false, "", {"destSize >= bytesToCopy"}},
    {4, 0, true, "", {"bytesToCopy > 0"}},
    {0, 0, false, "######", {"bytesToCopy > 0"}},
    {0, 5, false, "######", {"destSize >= bytesToCopy"}},
    {0, AS_MUCH_AS_FITS, false, "######", {"destSize > 0"}},
};

TEST(StrncpyS, CopiesWhatWasAskedForOrSaysItDoesNotFit) {
    for (const CopyCase& c : COPY_CASES) {
        SCOPED_TRACE(testing::Message() << c.room << " " << c.wanted);
        platform = Platform{};
        char buf[10] = "######";
        EXPECT_EQ(kestrum_util_strncpy_s(buf, c.room, "hello", c.wanted), c.ok);
        EXPECT_STREQ(buf, c.left);
        ASSERT_EQ(platform.reports.size(), c.failed_checks.size());
        for (size_t i = 0; i < c.failed_checks.size(); i++)
            EXPECT_EQ(platform.reports[i].find(c.failed_checks[i]), 0U) << platform.reports[i];
    }
}
