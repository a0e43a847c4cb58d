#include "util/export/streamwriter.h"
#include "support/temp_folder.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <cstring>
#include <random>
#include <vector>

static std::vector<int> writes;  // lengths of what reached the platform
static bool discard;             // without looking at it

int fio_write_fully(fio_fd fd, const void* buf, int len) {
    writes.push_back(len);
    void* real = dlsym(RTLD_NEXT, "fio_write_fully");
    return discard ? -1 : reinterpret_cast<decltype(&fio_write_fully)>(real)(fd, buf, len);
}

class StreamWriter : public testing::Test {
  protected:
    StreamWriter() : fd(fio_open(path.c_str(), FIO_READ | FIO_WRITE)) {
        std::memset(&w, 0x5a, sizeof w);
        sw_init(&w, fd, 0);
        writes.clear();
        discard = false;
    }
    ~StreamWriter() override {
        fio_close(fd);
    }

    TempFolder folder;
    std::string path = folder.file("written");
    fio_fd fd;
    streamwriter w;
};

TEST_F(StreamWriter, WritesWhatAVectorHolds) {
    std::mt19937_64 random(20260329);
    std::string expected;
    size_t position = 0;
    const auto put = [&](const std::string& bytes) {
        expected.resize(std::max(expected.size(), position + bytes.size()));
        expected.replace(position, bytes.size(), bytes);
        position += bytes.size();
    };
    for (int i = 0; i < 200000; i++) {
        const uint64_t v = random();
        std::string big_endian;
        for (int shift = 56; shift >= 0; shift -= 8)
            big_endian += static_cast<char>(v >> shift);
        const std::string block(random() % 100 == 0 ? random() % 6000 : random() % 40, 'b');
        const unsigned rare = random() % 1000;
        switch (random() % 6) {
            case 0: sw_u1(&w, v), put(big_endian.substr(7)); break;
            case 1: sw_u2(&w, v), put(big_endian.substr(6)); break;
            case 2: sw_u4(&w, v), put(big_endian.substr(4)); break;
            case 3: sw_u8(&w, v), put(big_endian); break;
            case 4: sw_bytes(&w, block.data(), block.size()), put(block); break;
            default:
                if (rare == 0)
                    sw_bytes_unbuffered(&w, block.data(), block.size()), put(block);
                else if (rare == 1)
                    sw_seek(&w, position = random() % (expected.size() + 1));
                break;
        }
        ASSERT_EQ(sw_position(&w), static_cast<filesize>(position));
    }
    sw_flush(&w);
    EXPECT_TRUE(read_file(path) == expected);
}

TEST_F(StreamWriter, GathersSmallWritesAndPassesLargeOnesOn) {
    const std::string block(5000, 'b');
    sw_flush(&w);
    for (int i = 0; i < 2048 / 8; i++)
        sw_u8(&w, 1);
    sw_bytes(&w, block.data(), 10);
    sw_bytes(&w, block.data(), 5000);
    sw_bytes(&w, block.data(), 1020);
    sw_u8(&w, 1);  // does not fit
    sw_bytes(&w, nullptr, 0);
    EXPECT_EQ(writes, (std::vector{1024, 1024, 10, 5000, 1020, 8}));
    EXPECT_EQ(w.stream_pos, 2048 + 10 + 5000 + 1020 + 8);
}

// Nothing of the 3 GiB may be touched: reading them would end the test.
TEST_F(StreamWriter, SplitsWhatThePlatformCannotCountAndIgnoresItsFailures) {
    const size_t size = size_t{3} << 30;
    void* untouchable =
        mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    discard = true;
    sw_u2(&w, 1);
    sw_bytes(&w, untouchable, size);
    EXPECT_EQ(writes, (std::vector{2, 2147483647, 1073741825}));
    EXPECT_EQ(sw_position(&w), static_cast<filesize>(2 + size));
    munmap(untouchable, size);
}
