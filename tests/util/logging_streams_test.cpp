#include "support/platform.h"
#include "support/temp_folder.h"
#include "support/test_logger.h"

#include <gtest/gtest.h>
#include <atomic>
#include <thread>

namespace fs = std::filesystem;
using std::string;

// Three modules that start on standard error, in a folder that is the current one.
struct Streams : testing::Test {
    static logger* writer() {
        static logger* log = make_logger({{{"a"}, {"b"}, {"c"}}});
        return log;
    }
    TempFolder folder;
    fs::path before = fs::current_path();
    logger* log = writer();

    void SetUp() override {
        platform = Platform{};
        fs::current_path(folder.file(""));
    }
    void TearDown() override {
        attach("stderr");
        fs::current_path(before);
    }
    static int attach(const string& option) {
        return logParseLogFilesEx(option.c_str(), nullptr, 0, nullptr);
    }
    FILE* stream(size_t module) const {
        return log->loggers[module].out;
    }
    // Open descriptors of this process that lead to the named file.
    static long open_descriptors(const fs::path& file) {
        const fs::path target = fs::weakly_canonical(file);
        std::error_code ignored;
        long count = 0;
        for (const fs::directory_entry& fd : fs::directory_iterator("/proc/self/fd"))
            count += fs::read_symlink(fd.path(), ignored) == target;
        return count;
    }
};

TEST_F(Streams, OpenAFileOnceUnderAllItsNames) {
    ASSERT_EQ(attach("a=file,b=./file"), 0);  // created by the first, found by the second
    EXPECT_EQ(stream(1), stream(0));
    print(log, 0, MSG_WARN, "kept");
    fs::create_symlink("file", "symbolic");
    fs::create_hard_link("file", "hard");
    for (const string& name :
         {string("file"), string("symbolic"), string("hard"), fs::absolute("file").string()}) {
        ASSERT_EQ(attach("b=stderr,b=" + name), 0) << name;
        EXPECT_EQ(stream(1), stream(0)) << name;
    }
    EXPECT_EQ(read_file("file"), "kept\n");
    EXPECT_EQ(open_descriptors("file"), 1);
}

TEST_F(Streams, CloseAFileWithItsLastModule) {
    ASSERT_EQ(attach("file"), 0);
    ASSERT_EQ(attach("file"), 0);  // again: neutral
    ASSERT_EQ(attach("stderr,c=file"), 0);
    print(log, 2, MSG_WARN, "still open");
    ASSERT_EQ(attach("a=>c,c=stderr"), 0);
    print(log, 0, MSG_WARN, "held by a");
    EXPECT_EQ(read_file("file"), "still open\nheld by a\n");
    EXPECT_EQ(open_descriptors("file"), 1);
    ASSERT_EQ(attach("a=>b"), 0);
    EXPECT_EQ(stream(0), stderr);
    EXPECT_EQ(open_descriptors("file"), 0);
}

TEST_F(Streams, RedirectOnceAndDoNotFollow) {
    ASSERT_EQ(attach("a=one,b=>a,a=two"), 0);
    print(log, 1, MSG_WARN, "b");
    print(log, 0, MSG_WARN, "a");
    EXPECT_EQ(read_file("one") + read_file("two"), "b\na\n");
    ASSERT_EQ(attach(">a"), 0);
    EXPECT_TRUE(stream(2) == stream(0) && stream(1) == stream(0));
    EXPECT_EQ(open_descriptors("one"), 0);
}

TEST_F(Streams, StayOpenWhileTwoThreadsMoveModulesThatAThirdPrintsTo) {
    std::atomic<bool> done = false;
    std::thread printer([&] {
        while (!done)
            print(log, 2, MSG_QUIET, "x");
    });
    std::thread other([] {
        for (int i = 0; i < 1000; i++)
            attach(i % 2 == 0 ? "one" : "c=two");
    });
    for (int i = 0; i < 1000; i++)
        attach(i % 2 == 0 ? "three" : "c=one");
    other.join();
    done = true;
    printer.join();
    attach("stderr");
    EXPECT_EQ(open_descriptors("one") + open_descriptors("two") + open_descriptors("three"), 0);
}

TEST_F(Streams, TakeOnlyTheExactNamesOfTheStandardStreams) {
    ASSERT_EQ(attach("a=stdout,b=STDOUT,c=./stdout"), 0);
    EXPECT_TRUE(stream(0) == stdout && stream(1) != stdout && stream(2) != stdout);
    EXPECT_TRUE(fs::exists("STDOUT") && fs::exists("stdout"));
}

TEST_F(Streams, ChangeNothingWhenAFileCannotBeOpened) {
    ASSERT_EQ(attach("a=file"), 0);
    FILE* const kept = stream(0);
    for (const string& name :
         {string(), string("missing/file"), string("."), string(4095, 'n'), string(4096, 'n')}) {
        EXPECT_EQ(attach("a=" + name), -1) << name;
        EXPECT_TRUE(stream(0) == kept && stream(1) == stderr) << name;
    }
}
