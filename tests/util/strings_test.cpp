#include "support/platform.h"
#include "util/export/posix/stringutil_pd.h"
#include "util/export/stringutil.h"

#include <gtest/gtest.h>

TEST(Snprintf, TellsWholeTextsFromCutOnes) {
    const std::tuple<size_t, const char*, int, const char*> CASES[] = {
        {8, "abc", 3, "abc"},   {4, "abc", 3, "abc"},  // text and terminator fill it exactly
        {4, "abcd", -1, "abc"}, {1, "a", -1, ""},     {1, "", 0, ""}, {0, "abc", -1, "######"}};
    for (const auto& [room, text, result, left] : CASES) {
        char buf[8] = "######";
        EXPECT_EQ(kestrum_util_snprintf(buf, room, "%s", text), result) << text;
        EXPECT_STREQ(buf, left);
    }
    EXPECT_EQ(kestrum_util_snprintf(nullptr, 8, "%s", "abc"), -1);
    char buf[8];
    const wchar_t unencodable[] = {0x7fffffff, 0};
    EXPECT_EQ(kestrum_util_snprintf(buf, sizeof buf, "%ls", unencodable), -1);
    static volatile size_t unknown = SIZE_MAX;  // the compiler refuses a known one
    EXPECT_EQ(kestrum_util_snprintf(buf, unknown, "%s", "abc"), 3);
    EXPECT_STREQ(buf, "abc");
}

TEST(StrncpyS, CopiesWhatWasAskedForOrSaysItDoesNotFit) {
    constexpr size_t ALL = -1;
    constexpr const char *NONE = "bytesToCopy > 0|" STRINGUTIL_PD_PATH "|kestrum_util_strncpy_s|",
                         *ROOM = "destSize > 0|" STRINGUTIL_PD_PATH "|kestrum_util_strncpy|";
    const std::string more = "destSize >= bytesToCopy" + std::string(strchr(NONE, '|'));
    const char* const MORE = more.c_str();
    const std::tuple<size_t, size_t, bool, const char*, const char*> CASES[] = {
        {10, 3, true, "hel", ""},   {10, 7, true, "hello", ""}, {6, ALL, true, "hello", ""},
        {4, ALL, false, "hel", ""}, {4, 4, false, "", ""},      {4, 5, false, "", MORE},
        {4, 0, true, "", NONE},     {0, 5, false, "##", MORE},  {0, ALL, false, "##", ROOM}};
    for (const auto& [room, wanted, ok, left, report] : CASES) {
        platform = Platform{};
        char buf[10] = "##";
        EXPECT_EQ(kestrum_util_strncpy_s(buf, room, "hello", wanted), ok) << room << " " << wanted;
        EXPECT_STREQ(buf, left);
        EXPECT_EQ(platform.reports.empty() ? "" : platform.reports[0], report);
    }
}
