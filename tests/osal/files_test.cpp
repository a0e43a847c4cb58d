#include "osal/export/linux/osal_files_pd.h"

#include "support/temp_folder.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>
#include <string>
#include <thread>

TEST(Files, OpenAsTheFlagsSayAndExceedFourGigabytes) {
    constexpr filesize SIZE = 5'000'000'000;
    const TempFolder folder;
    const std::string name = folder.file("name"), other = folder.file("other");
    EXPECT_EQ(fio_open(name.c_str(), 9), -1);  // 9 reads an existing file
    EXPECT_EQ(fio_fsize(name.c_str()), -1);
    const fio_fd fd = fio_open(name.c_str(), FIO_WRITE);
    EXPECT_EQ(fio_fsize(name.c_str()), 0);
    EXPECT_EQ(fio_seek(fd, SIZE - 1, 0), SIZE - 1);
    EXPECT_EQ(fio_write_fully(fd, "x", 1), 1);
    EXPECT_EQ(fio_fsize(name.c_str()), SIZE);
    fio_close(fd);
    ASSERT_EQ(link(name.c_str(), other.c_str()), 0);
    const fio_fd same = fio_open(other.c_str(), 9);
    EXPECT_EQ(fio_write_fully(same, "x", 1), 0);
    EXPECT_EQ(fio_fdsize(same), SIZE);
    EXPECT_TRUE(fio_is_same_files_by_path(name.c_str(), same));
    EXPECT_FALSE(fio_is_same_files_by_path("/dev/null", same));
    EXPECT_EQ(fio_close(same), 0);
    EXPECT_EQ(fio_close(fio_open(name.c_str(), FIO_READ | FIO_TRUNCATE)), 0);  // only when writing
    EXPECT_EQ(fio_fsize(name.c_str()), SIZE);
    EXPECT_FALSE(fio_is_same_files_by_path("/proc/missing", 0));
    EXPECT_FALSE(fio_is_same_files_by_path(name.c_str(), -1));
    EXPECT_TRUE(fio_fdsize(-1) == -1 && fio_close(-1) == -1);
}

TEST(Files, AreMadeCanonicalWhenTheNameFits) {
    const std::string canonical = "/proc/" + std::to_string(getpid());
    std::string out(canonical.size() + 1, '#');
    EXPECT_FALSE(fio_canonicalize_path("/proc/missing", out.data(), out.size()));
    EXPECT_FALSE(fio_canonicalize_path("/proc/self", out.data(), out.size() - 1));
    EXPECT_EQ(out, std::string(out.size(), '#'));
    EXPECT_TRUE(fio_canonicalize_path("/proc/./self", out.data(), out.size()));
    EXPECT_EQ(out, canonical + '\0');
}

// The timer interrupts the main thread, which waits for its peer first as reader, then as writer.
TEST(Files, CrossASocketWholeDespiteSignalsAndNonBlockingEnds) {
    const std::string sent = read_file("/proc/self/exe");  // more than a socket holds
    const int length = sent.size();
    std::string received(sent.size(), '#'), first(1, '#');
    struct sigaction interrupt = {};
    interrupt.sa_handler = [](int) {};
    sigaction(SIGALRM, &interrupt, nullptr);
    ualarm(1000, 1000);
    for (int flags : {0, int{SOCK_NONBLOCK}}) {
        int ends[2];
        ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | flags, 0, ends), 0);
        std::thread peer([&] {
            usleep(20'000);
            EXPECT_EQ(fio_write_fully(ends[1], "x", 1), 1);
            usleep(20'000);
            EXPECT_EQ(fio_read_fully(ends[1], received.data(), length), length);
            fio_close(ends[1]);
        });
        ASSERT_EQ(fio_read_fully(ends[0], first.data(), 1), 1);
        EXPECT_EQ(fio_write_fully(ends[0], sent.data(), length), length);
        fio_close(ends[0]);
        peer.join();
        EXPECT_TRUE(received == sent);
    }
    ualarm(0, 0);
}
