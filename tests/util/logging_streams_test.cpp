#include "support/heap.h"
#include "support/platform.h"
#include "support/temp_folder.h"
#include "support/test_logger.h"

#include <gtest/gtest.h>
#include <climits>
#include <filesystem>
#include <fstream>
#include <thread>

namespace fs = std::filesystem;

// Two modules that start on standard error, in a folder that is the current one.
struct Streams : testing::Test {
    TempFolder folder;
    fs::path before = fs::current_path();
    static logger* writer() {
        static logger* log = make_logger({{{"a"}, {"b"}, {"c"}}});
        return log;
    }
    logger* log = writer();

    void SetUp() override {
        platform = Platform{};
        fs::current_path(folder.file(""));
    }
    void TearDown() override {
        attach("stderr");
        fs::current_path(before);
        platform = Platform{};
    }
    static int attach(const std::string& option) {
        char error[256];
        return logParseLogFilesEx(option.c_str(), error, sizeof error, nullptr);
    }
    FILE* stream(size_t module) const {
        return log->loggers[module].out;
    }
    // Open descriptors of this process that lead to the named file.
    static long open_descriptors(const fs::path& file) {
        const fs::path target = fs::canonical(file);
        std::error_code ignored;
        long count = 0;
        for (const fs::directory_entry& fd : fs::directory_iterator("/proc/self/fd"))
            count += fs::read_symlink(fd.path(), ignored) == target;
        return count;
    }
};

TEST_F(Streams, OpenAFileOnceUnderAllItsNames) {
    std::ofstream("file") << "old";
    fs::create_symlink("file", "symbolic");
    fs::create_hard_link("file", "hard");
    fs::create_directory("sub");
    ASSERT_EQ(attach("a=file"), 0);
    EXPECT_EQ(read_file("file"), "");
    print(log, 0, MSG_WARN, "kept");
    for (const std::string& name : std::vector<std::string>{
             "file", "./file", "sub/../file", "symbolic", "hard", fs::absolute("file")}) {
        ASSERT_EQ(attach("b=" + name), 0) << name;
        EXPECT_EQ(stream(1), stream(0)) << name;
        ASSERT_EQ(attach("b=stderr"), 0);
    }
    EXPECT_EQ(read_file("file"), "kept\n");
    EXPECT_EQ(open_descriptors("file"), 1);
}

TEST_F(Streams, FindAFileThatTheyCreated) {
    ASSERT_EQ(attach("a=new,b=./new"), 0);
    EXPECT_EQ(stream(1), stream(0));
    EXPECT_EQ(open_descriptors("new"), 1);
}

TEST_F(Streams, CloseAFileWithItsLastModule) {
    ASSERT_EQ(attach("file"), 0);
    ASSERT_EQ(attach("file"), 0);  // again: neutral
    EXPECT_EQ(open_descriptors("file"), 1);
    ASSERT_EQ(attach("stderr,c=file"), 0);
    print(log, 2, MSG_WARN, "still open");
    EXPECT_EQ(open_descriptors("file"), 1);
    ASSERT_EQ(attach("a=>c,c=stderr"), 0);
    print(log, 0, MSG_WARN, "held by a");
    EXPECT_EQ(read_file("file"), "still open\nheld by a\n");
    ASSERT_EQ(attach("a=>b"), 0);
    EXPECT_EQ(stream(0), stderr);
    EXPECT_EQ(open_descriptors("file"), 0);
}

TEST_F(Streams, RedirectOnceAndDoNotFollow) {
    ASSERT_EQ(attach("a=one,b=>a,a=two"), 0);
    print(log, 1, MSG_WARN, "b");
    print(log, 0, MSG_WARN, "a");
    EXPECT_EQ(read_file("one"), "b\n");
    EXPECT_EQ(read_file("two"), "a\n");
    ASSERT_EQ(attach(">a"), 0);
    EXPECT_EQ(stream(2), stream(0));
    EXPECT_EQ(stream(1), stream(0));
    EXPECT_EQ(open_descriptors("one"), 0);
}

TEST_F(Streams, TakeOnlyTheExactNamesOfTheStandardStreams) {
    ASSERT_EQ(attach("a=stdout,b=STDOUT,c=./stdout"), 0);
    EXPECT_EQ(stream(0), stdout);
    EXPECT_NE(stream(1), stdout);
    EXPECT_TRUE(fs::exists("STDOUT"));
    EXPECT_TRUE(fs::exists("stdout"));
}

TEST_F(Streams, ChangeNothingWhenAFileCannotBeOpened) {
    ASSERT_EQ(attach("a=file"), 0);
    FILE* const kept = stream(0);
    const std::string long_name(4096, 'n');
    for (const std::string& name :
         {std::string(), std::string("missing/file"), std::string("."), long_name}) {
        EXPECT_EQ(attach("a=" + name), -1) << name;
        EXPECT_EQ(stream(0), kept);
        EXPECT_EQ(stream(1), stderr);
    }
    // The longest name that fits is tried: the file system, not the buffer, rejects it.
    EXPECT_EQ(attach("a=" + long_name.substr(1)), -1);
}

TEST_F(Streams, OpenAFileAgainThatHasNoCanonicalPath) {
    ASSERT_EQ(attach("a=file"), 0);
    print(log, 0, MSG_WARN, "gone");
    platform.canonicalize_fails = true;
    ASSERT_EQ(attach("b=file"), 0);
    EXPECT_NE(stream(1), stream(0));
    EXPECT_EQ(read_file("file"), "");
    EXPECT_EQ(open_descriptors("file"), 2);
}

TEST_F(Streams, LeakNothingWhenMemoryRunsOut) {
    if (!heap().replaced)
        GTEST_SKIP() << "the sanitizer has its own allocator";
    char error[64];
    FILE* const kept = stream(0);
    int result = -1;
    for (size_t failing = 1; result != 0; failing++) {
        const long live = heap().live_blocks;
        heap().failing_allocation = failing;
        result = logParseLogFilesEx("a=file", error, sizeof error, nullptr);
        const bool failed = heap().failing_allocation == 0;
        heap().failing_allocation = 0;
        if (result == 0) {
            EXPECT_GT(failing, 3U);
            ASSERT_EQ(logParseLogFilesEx("a=stderr", nullptr, 0, nullptr), 0);
        } else {
            EXPECT_TRUE(failed);
            EXPECT_TRUE(std::string(error) == "Could not open stream 'file'" ||
                        std::string(error) == "argIterGetNext failed. Out of memory?")
                << error;
        }
        EXPECT_EQ(stream(0), kept);
        EXPECT_EQ(heap().live_blocks, live) << failing;
        if (fs::exists("file")) {
            EXPECT_EQ(open_descriptors("file"), 0);
        }
    }
}
