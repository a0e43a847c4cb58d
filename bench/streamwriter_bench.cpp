// A file of 64 MiB written in small pieces, from opening a new file to closing it.

#include "bench.h"
#include "util/export/streamwriter.h"

#include <stdio.h>
#include <filesystem>

constexpr size_t TOTAL = size_t{64} << 20;

static const std::string path = std::filesystem::temp_directory_path() / "pieces";

struct Sixteen {
    uint64_t first, second;
    explicit Sixteen(size_t i) : first(i), second(~i) {}
};

struct Ours {
    fio_fd fd = fio_open(path.c_str(), FIO_WRITE | FIO_TRUNCATE);
    streamwriter writer;
    Ours() {
        sw_init(&writer, fd, 0);
    }
    ~Ours() {
        sw_flush(&writer);
        fio_close(fd);
    }
    template <typename Value>
    void write(const Value& value) {
        if constexpr (sizeof value == 1)
            sw_u1(&writer, value);
        else if constexpr (sizeof value == 4)
            sw_u4(&writer, value);
        else if constexpr (sizeof value == 8)
            sw_u8(&writer, value);
        else
            sw_bytes(&writer, &value, sizeof value);
    }
};

struct Stdio {
    FILE* file = fopen(path.c_str(), "w");
    ~Stdio() {
        fclose(file);
    }
    template <typename Value>
    void write(const Value& value) {
        fwrite_unlocked(&value, sizeof value, 1, file);
    }
};

// Hands the kernel blocks of our buffer's size and copies nothing.
struct Blocks {
    fio_fd fd = fio_open(path.c_str(), FIO_WRITE | FIO_TRUNCATE);
    unsigned char block[SW_BUFFER_BYTES] = {};
    size_t filled = 0;
    ~Blocks() {
        fio_close(fd);
    }
    template <typename Value>
    void write(const Value&) {
        filled += sizeof(Value);
        if (filled % sizeof block == 0)
            fio_write_fully(fd, block, sizeof block);
    }
};

template <typename Contender, typename Value>
static void write_all(benchmark::State& state) {
    constexpr size_t values = TOTAL / sizeof(Value);
    while (state.KeepRunningBatch(values)) {
        {
            Contender contender;
            for (size_t i = 0; i < values; i++)
                contender.write(static_cast<Value>(i));
        }
        state.PauseTiming();
        require(std::filesystem::file_size(path) == TOTAL, "not all was written");
        std::filesystem::remove(path);
        state.ResumeTiming();
    }
}

template <typename Value>
static void add_size() {
    const std::string name =
        std::to_string(sizeof(Value)) + (sizeof(Value) > 1 ? " bytes" : " byte");
    add(name, "kxutil", write_all<Ours, Value>);
    add(name, "fwrite_unlocked", write_all<Stdio, Value>);
    add(name, "limit: 1 KiB writes", write_all<Blocks, Value>);
}

void add_all() {
    add_size<uint8_t>();
    add_size<uint32_t>();
    add_size<uint64_t>();
    add_size<Sixteen>();
}
