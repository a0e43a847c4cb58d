#include "osal/export/linux/osal_files_pd.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <csignal>
#include <thread>

using std::string;

TEST(Files, OpenAsTheFlagsSayAndExceedFourGigabytes) {
    constexpr filesize SIZE = 5'000'000'000;
    const TempFolder folder;
    const string path = folder.file("name"), other = folder.file("other");
    const char* const name = path.c_str();
    EXPECT_TRUE(fio_open(name, 9) == -1 && fio_fsize(name) == -1);  // 9 reads an existing file
    const fio_fd fd = fio_open(name, FIO_READ | FIO_WRITE);
    EXPECT_TRUE(fio_fsize(name) == 0 && fio_seek(fd, SIZE - 1, 0) == SIZE - 1);
    char byte = 0;
    EXPECT_TRUE(fio_write_fully(fd, "x", 1) == 1 && fio_seek(fd, -1, 1) == SIZE - 1);
    EXPECT_TRUE(fio_read_fully(fd, &byte, 1) == 1 && byte == 'x' && fio_close(fd) == 0);
    std::filesystem::create_hard_link(path, other);
    const fio_fd same = fio_open(other.c_str(), 9);
    EXPECT_TRUE(fio_write_fully(same, "x", 1) == 0 && fio_fdsize(same) == SIZE);
    EXPECT_TRUE(fio_is_same_files_by_path(name, same));
    for (const auto& [wrong, opened] : {std::pair("/dev/null", same), {"/-", 0}, {name, -1}})
        EXPECT_FALSE(fio_is_same_files_by_path(wrong, opened)) << wrong;
    EXPECT_TRUE(fio_close(same) == 0 && fio_fdsize(-1) == -1 && fio_close(-1) == -1);
    for (int mode : {FIO_READ, FIO_WRITE}) {
        fio_close(fio_open(name, mode | FIO_TRUNCATE));
        EXPECT_EQ(fio_fsize(name), mode == FIO_READ ? SIZE : 0);  // only when writing
    }
    const string canonical = "/proc/" + std::to_string(getpid());
    string out(canonical.size() + 1, '#');
    EXPECT_FALSE(fio_canonicalize_path("/proc/-", out.data(), out.size()));
    EXPECT_FALSE(fio_canonicalize_path("/proc/self", out.data(), out.size() - 1));
    EXPECT_TRUE(fio_canonicalize_path("/proc/./self", out.data(), out.size()));
    EXPECT_EQ(out, canonical + '\0');
}

// The timer interrupts the main thread, which waits for its peer first as writer, then as reader.
TEST(Files, CrossANonBlockingSocketWholeDespiteSignals) {
    const string sent = read_file("/proc/self/exe");  // more than it holds
    string echoed(sent.size(), '#'), received = echoed;
    const int length = sent.size();
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends), 0);
    std::jthread peer([&] {
        usleep(20'000);
        EXPECT_EQ(fio_read_fully(ends[1], echoed.data(), length), length);
        usleep(20'000);
        EXPECT_EQ(fio_write_fully(ends[1], echoed.data(), length), length);
    });
    signal(SIGALRM, [](int) {});
    ualarm(1000, 1000);
    EXPECT_EQ(fio_write_fully(ends[0], sent.data(), length), length);
    EXPECT_EQ(fio_read_fully(ends[0], received.data(), length), length);
    EXPECT_TRUE(received == sent);
    ualarm(0, 0);
}
