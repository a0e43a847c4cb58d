// An array filled by appending one element at a time, from the empty array to its release. The
// vector is compiled into the loop and knows the size of its elements; the others are called and
// learn it at run time.
//
// A million elements get fresh memory from the kernel every time, as the first large array of a
// process does; ten thousand reuse what the run before gave back.

#include "util/export/dynarray.h"

#include <benchmark/benchmark.h>
#include <glib.h>
#include <malloc.h>
#include <string>
#include <vector>

constexpr int64_t FEW = 10000;
constexpr int64_t MANY = 1000000;

template <size_t size>
struct Element {
    uint64_t words[size / sizeof(uint64_t)];
};

template <size_t size>
struct Ours {
    DynArrayP array = dynArrayNew(0, size);
    ~Ours() {
        dynArrayFree(array);
    }
    void append(Element<size>& element) {
        dynArrayAddLast(array, &element);
    }
    const void* data() const {
        return array->data;
    }
};

template <size_t size>
struct Glib {
    GArray* array = g_array_new(FALSE, FALSE, size);
    ~Glib() {
        g_array_free(array, TRUE);
    }
    void append(Element<size>& element) {
        g_array_append_vals(array, &element, 1);
    }
    const void* data() const {
        return array->data;
    }
};

template <size_t size>
struct Vector {
    std::vector<Element<size>> array;
    void append(Element<size>& element) {
        array.push_back(element);
    }
    const void* data() const {
        return array.data();
    }
};

template <typename Contender, size_t size>
static void fill(benchmark::State& state, int64_t count) {
    // As a process starts out, and as it is after it has released large blocks.
    mallopt(M_MMAP_THRESHOLD, count == MANY ? 128 << 10 : 32 << 20);
    mallopt(M_TRIM_THRESHOLD, count == MANY ? 128 << 10 : 64 << 20);
    while (state.KeepRunningBatch(count)) {
        Contender contender;
        Element<size> element = {};
        for (int64_t i = 0; i < count; i++) {
            element.words[0] = static_cast<uint64_t>(i);
            contender.append(element);
        }
        benchmark::DoNotOptimize(contender.data());
        benchmark::ClobberMemory();
    }
}

template <size_t size>
static void add_case(const std::string& name, int64_t count) {
    const auto add = [&](const char* contender, auto run) {
        benchmark::RegisterBenchmark((name + "/" + contender).c_str(), run, count);
    };
    add("kxutil", fill<Ours<size>, size>);
    add("GArray", fill<Glib<size>, size>);
    add("limit: vector", fill<Vector<size>, size>);
}

template <size_t size>
static void add_size() {
    for (int64_t count : {FEW, MANY})
        add_case<size>(std::to_string(count) + " of " + std::to_string(size), count);
}

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    add_size<8>();
    add_size<16>();
    add_size<64>();
    for (int64_t count = 10; count <= MANY; count *= 10)
        add_case<16>("append " + std::to_string(count), count);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
