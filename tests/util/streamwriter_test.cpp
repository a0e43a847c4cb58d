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

TEST_F(StreamWriter, WritesWhatAStringHolds) {
    std::mt19937_64 random(20260329);
    std::string expected;
    for (int i = 0; i < 20000; i++) {
        const uint64_t v = random(), swapped = __builtin_bswap64(v);
        const std::string big_endian(reinterpret_cast<const char*>(&swapped), sizeof swapped);
        const std::string block(random() % (random() % 100 == 0 ? 6000 : 40), 'b');
        switch (random() % 6) {
            case 0: sw_u1(&w, v), expected += big_endian.substr(7); break;
            case 1: sw_u2(&w, v), expected += big_endian.substr(6); break;
            case 2: sw_u4(&w, v), expected += big_endian.substr(4); break;
            case 3: sw_u8(&w, v), expected += big_endian; break;
            case 4: sw_bytes(&w, block.data(), block.size()), expected += block; break;
            default:
                if (i % 1000 == 5)
                    sw_bytes_unbuffered(&w, block.data(), block.size()), expected += block;
        }
        ASSERT_EQ(sw_position(&w), static_cast<filesize>(expected.size()));
    }
    sw_seek(&w, 1030);
    sw_u2(&w, 0x102);
    sw_seek(&w, expected.size());
    EXPECT_TRUE(read_file(path) == expected.replace(1030, 2, "\x01\x02"));
}

// Nothing of the 3 GiB may be touched: reading them would end the test.
TEST_F(StreamWriter, GathersSmallWritesAndSplitsWhatThePlatformCannotCount) {
    const size_t size = size_t{3} << 30;
    void* const untouchable =
        mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    const std::string block(5000, 'b');
    sw_flush(&w);
    for (int i = 0; i < 2048 / 8; i++)
        sw_u8(&w, 1);
    for (size_t length : {10, 5000, 1020, 8, 0})  // the 8 do not fit
        sw_bytes(&w, length > 0 ? block.data() : nullptr, length);
    EXPECT_EQ(w.stream_pos, 2048 + 10 + 5000 + 1020 + 8);
    discard = true;
    sw_bytes(&w, untouchable, size);
    EXPECT_EQ(writes, (std::vector{1024, 1024, 10, 5000, 1020, 8, 2147483647, 1073741825}));
    EXPECT_EQ(sw_position(&w), static_cast<filesize>(2048 + 10 + 5000 + 1020 + 8 + size));
    munmap(untouchable, size);
}
