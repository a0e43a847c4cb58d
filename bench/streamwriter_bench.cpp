// A file of 64 MiB written in small pieces, from opening a new file to closing it. Our buffer is
// 1 KiB and writes itself out with the platform's calls; the peers' are 4 and 8 KiB. The limit
// hands the kernel blocks of our buffer's size and gathers nothing.

#include "util/export/streamwriter.h"

#include <benchmark/benchmark.h>
#include <stdio.h>
#include <filesystem>
#include <fstream>
#include <string>

constexpr size_t TOTAL = size_t{64} << 20;

static const std::string& path() {
    static const std::string value = std::filesystem::temp_directory_path() / "streamwriter_bench";
    return value;
}

struct Sixteen {
    uint64_t first, second;
};

template <typename Value>
static Value make(size_t i) {
    if constexpr (std::is_same_v<Value, Sixteen>)
        return {i, ~i};
    else
        return static_cast<Value>(i);
}

struct Ours {
    fio_fd fd = fio_open(path().c_str(), FIO_WRITE | FIO_TRUNCATE);
    streamwriter writer;
    Ours() {
        sw_init(&writer, fd, 0);
    }
    ~Ours() {
        sw_flush(&writer);
        fio_close(fd);
    }
    void write(uint8_t value) {
        sw_u1(&writer, value);
    }
    void write(uint32_t value) {
        sw_u4(&writer, value);
    }
    void write(uint64_t value) {
        sw_u8(&writer, value);
    }
    void write(const Sixteen& value) {
        sw_bytes(&writer, &value, sizeof value);
    }
};

template <decltype(&fwrite) write_function>
struct Stdio {
    FILE* file = fopen(path().c_str(), "w");
    ~Stdio() {
        fclose(file);
    }
    template <typename Value>
    void write(const Value& value) {
        write_function(&value, sizeof value, 1, file);
    }
};

struct Ofstream {
    std::ofstream file{path(), std::ios::binary};
    template <typename Value>
    void write(const Value& value) {
        file.write(reinterpret_cast<const char*>(&value), sizeof value);
    }
};

struct Blocks {
    fio_fd fd = fio_open(path().c_str(), FIO_WRITE | FIO_TRUNCATE);
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
            for (size_t i = 0; i < values; i++) {
                contender.write(make<Value>(i));
            }
        }
        state.PauseTiming();
        if (std::filesystem::file_size(path()) != TOTAL)
            state.SkipWithError("not all was written");
        std::filesystem::remove(path());
        state.ResumeTiming();
    }
}

template <typename Value>
static void add_size() {
    const auto add = [](const char* contender, void (*run)(benchmark::State&)) {
        benchmark::RegisterBenchmark(
            (std::to_string(sizeof(Value)) + " bytes/" + contender).c_str(), run);
    };
    add("kxutil", write_all<Ours, Value>);
    add("fwrite_unlocked", write_all<Stdio<fwrite_unlocked>, Value>);
    add("fwrite", write_all<Stdio<fwrite>, Value>);
    add("ofstream", write_all<Ofstream, Value>);
    add("limit: 1 KiB writes", write_all<Blocks, Value>);
}

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    add_size<uint8_t>();
    add_size<uint32_t>();
    add_size<uint64_t>();
    add_size<Sixteen>();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
