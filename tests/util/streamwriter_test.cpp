#include "util/export/streamwriter.h"
#include "support/temp_folder.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <cstring>
#include <random>

static std::vector<int> writes;  // lengths of what reached the platform
static bool discard = false;     // without reading it

int fio_write_fully(fio_fd fd, const void* buf, int len) {
    writes.push_back(len);
    void* real = dlsym(RTLD_NEXT, "fio_write_fully");
    return discard ? -1 : reinterpret_cast<decltype(&fio_write_fully)>(real)(fd, buf, len);
}

// Nothing of the last 3 GiB may be touched: reading them would end the test.
TEST(StreamWriter, WritesWhatAStringHoldsInPiecesThatThePlatformCanCount) {
    const TempFolder folder;
    const std::string path = folder.file("written"), block(6000, 'b');
    streamwriter w;
    std::memset(&w, 0x5a, sizeof w);
    sw_init(&w, fio_open(path.c_str(), FIO_READ | FIO_WRITE), 0);
    EXPECT_TRUE(writes.empty());
    std::mt19937_64 random(20260329);
    std::string expected;
    for (int i = 0; i < 20000; i++) {
        const uint64_t v = random(), swapped = __builtin_bswap64(v);
        const std::string big_endian((const char*)&swapped, sizeof swapped);
        const size_t length = random() % (i % 100 == 0 ? block.size() : 40);
        switch (random() % 5) {
            case 0: sw_u1(&w, v), expected += big_endian.substr(7); break;
            case 1: sw_u2(&w, v), expected += big_endian.substr(6); break;
            case 2: sw_u4(&w, v), expected += big_endian.substr(4); break;
            case 3: sw_u8(&w, v), expected += big_endian; break;
            default: sw_bytes(&w, block.data(), length), expected.append(length, 'b');
        }
        ASSERT_EQ(sw_position(&w), static_cast<filesize>(expected.size()));
    }
    sw_seek(&w, 1030);
    sw_u2(&w, 0x102);
    sw_seek(&w, expected.size());
    EXPECT_TRUE(read_file(path) == expected.replace(1030, 2, "\x01\x02"));

    const size_t size = size_t{3} << 30, start = expected.size();
    void* const untouchable = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    writes.clear();
    for (int i = 0; i < 2048 / 8; i++)
        sw_u8(&w, 1);
    for (size_t length : {10, 5000, 1020, 8, 0})  // the 8 do not fit
        sw_bytes(&w, length > 0 ? block.data() : nullptr, length);
    discard = true;
    sw_bytes(&w, untouchable, size);
    EXPECT_EQ(writes, (std::vector{1024, 1024, 10, 5000, 1020, 8, 2147483647, 1073741825}));
    EXPECT_EQ(sw_position(&w), start + 2048 + 10 + 5000 + 1020 + 8 + size);
}
