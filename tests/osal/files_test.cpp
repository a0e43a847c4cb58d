#include "osal/export/linux/osal_files_pd.h"

#include "support/temp_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <signal.h>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

constexpr int READ_EXISTING = 9;

// A folder with a file `present` of seven bytes.
class Files : public testing::Test {
  protected:
    Files() {
        std::ofstream(present) << "granite";
    }

    TempFolder folder;
    const std::string present = folder.file("present");
    const std::string missing = folder.file("missing");
};

struct OpenCase {
    const char* name;
    int flags;
    filesize size;
    bool readable;
    bool writable;
};

const OpenCase OPEN_CASES[] = {
    {"present", READ_EXISTING, 7, true, false},
    {"missing", READ_EXISTING, -1, false, false},
    {"missing", FIO_READ, 0, false, false},  // created, and so empty
    {"present", FIO_WRITE, 7, false, true},
    {"present", FIO_READ | FIO_WRITE | FIO_TRUNCATE, 0, false, true},
    {"present", FIO_READ | FIO_TRUNCATE, 7, true, false},  // not without the right to write
};

TEST_F(Files, FlagWordSaysWhatOpeningDoes) {
    for (const OpenCase& c : OPEN_CASES) {
        SCOPED_TRACE(testing::Message() << c.name << " by " << c.flags);
        std::ofstream(present) << "granite";
        unlink(missing.c_str());
        const fio_fd fd = fio_open(folder.file(c.name).c_str(), c.flags);
        char byte = 'x';
        EXPECT_EQ(fd >= 0, c.size >= 0);
        EXPECT_EQ(fio_fdsize(fd), c.size);
        EXPECT_EQ(fio_fsize(folder.file(c.name).c_str()), c.size);
        EXPECT_EQ(fio_read_fully(fd, &byte, 1), c.readable);
        EXPECT_EQ(fio_write_fully(fd, &byte, 1), c.writable);
        EXPECT_EQ(fio_close(fd), c.size >= 0 ? 0 : -1);
    }
}

struct NameCase {
    const char* name;
    bool exists;
    bool canonical;
    bool same;
};

const NameCase NAME_CASES[] = {
    {"present", true, true, true},    {"deep/.././/link", true, true, true},
    {"hard", true, false, true},      {"twin", true, false, false},
    {"missing", false, false, false}, {"dangling", false, false, false},
};

TEST_F(Files, NamesLeadToTheFileItself) {
    const std::string canonical = std::filesystem::canonical(present);
    std::filesystem::create_directory(folder.file("deep"));
    std::filesystem::create_symlink("present", folder.file("link"));
    std::filesystem::create_symlink("missing", folder.file("dangling"));
    std::filesystem::create_hard_link(present, folder.file("hard"));
    std::ofstream(folder.file("twin")) << "granite";
    const fio_fd fd = fio_open(present.c_str(), READ_EXISTING);
    for (const NameCase& c : NAME_CASES) {
        SCOPED_TRACE(c.name);
        const std::string path = folder.file(c.name);
        char out[PATH_MAX] = "untouched";
        EXPECT_EQ(fio_canonicalize_path(path.c_str(), out, sizeof out), c.exists);
        EXPECT_EQ(out == std::string("untouched"), !c.exists);
        EXPECT_EQ(out == canonical, c.canonical);
        EXPECT_EQ(fio_is_same_files_by_path(path.c_str(), fd), c.same);
    }
    fio_close(fd);
    std::string out(canonical.size() + 1, '#');
    EXPECT_FALSE(fio_canonicalize_path(present.c_str(), out.data(), canonical.size()));
    EXPECT_EQ(out, std::string(out.size(), '#'));
    EXPECT_TRUE(fio_canonicalize_path(present.c_str(), out.data(), out.size()));  // just fits
    EXPECT_EQ(out, canonical + '\0');
}

TEST_F(Files, SizesAndPositionsExceedFourGigabytes) {
    constexpr filesize SIZE = 5'000'000'000;
    const fio_fd fd = fio_open(missing.c_str(), FIO_READ | FIO_WRITE);
    ASSERT_EQ(ftruncate64(fd, SIZE), 0);
    EXPECT_EQ(fio_fdsize(fd), SIZE);
    EXPECT_EQ(fio_fsize(missing.c_str()), SIZE);
    EXPECT_EQ(fio_seek(fd, SIZE - 3, 0), SIZE - 3);
    EXPECT_EQ(fio_write_fully(fd, "abc", 3), 3);
    EXPECT_EQ(fio_seek(fd, -2, 1), SIZE - 2);
    EXPECT_EQ(fio_seek(fd, -1, 0), -1);  // refused: the position stays
    char read[4] = {};
    EXPECT_EQ(fio_read_fully(fd, read, 4), 2);  // short at the end
    EXPECT_STREQ(read, "bc");
    EXPECT_EQ(fio_seek(fd, -1, 2), SIZE - 1);
    fio_close(fd);
}

// Both ends of the pipe must wait: the reader comes late, and the writer rests halfway.
TEST(Transfers, CrossAPipeWholeDespiteSignalsAndNonBlockingEnds) {
    constexpr auto LATE = std::chrono::milliseconds(20);
    struct sigaction interrupt = {};
    interrupt.sa_handler = [](int) {};
    sigaction(SIGUSR1, &interrupt, nullptr);
    std::vector<char> sent(1'000'000);
    for (size_t i = 0; i < sent.size(); i++)
        sent[i] = static_cast<char>(i ^ i >> 8);
    const int length = static_cast<int>(sent.size());
    for (int flags : {0, O_NONBLOCK}) {
        int ends[2];
        ASSERT_EQ(pipe2(ends, flags), 0);
        std::vector<char> received(sent.size() + 1);
        int bytes_written = 0, bytes_read = 0;
        std::atomic<int> done = 0;
        std::thread writer([&] {
            bytes_written = fio_write_fully(ends[1], sent.data(), length / 2);
            std::this_thread::sleep_for(LATE);
            bytes_written += fio_write_fully(ends[1], sent.data() + length / 2, length / 2);
            fio_close(ends[1]);
            done++;
        });
        std::thread reader([&] {
            std::this_thread::sleep_for(LATE);
            bytes_read = fio_read_fully(ends[0], received.data(), length + 1);
            fio_close(ends[0]);  // a reader that gives up leaves no writer waiting
            done++;
        });
        while (done < 2) {
            pthread_kill(writer.native_handle(), SIGUSR1);
            pthread_kill(reader.native_handle(), SIGUSR1);
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
        writer.join();
        reader.join();
        EXPECT_EQ(bytes_written, length);
        EXPECT_EQ(bytes_read, length);
        received.pop_back();
        EXPECT_TRUE(received == sent);
    }
}
