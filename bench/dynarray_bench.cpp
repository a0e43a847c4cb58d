// An array filled by appending one element at a time, from the empty array to its release.
//
// A million elements get fresh memory from the kernel every time, as the first large array of a
// process does; ten thousand reuse what the run before has freed.

#include "bench.h"
#include "util/export/dynarray.h"

#include <glib.h>
#include <malloc.h>
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
};

template <size_t size>
struct Vector {
    std::vector<Element<size>> array;
    void append(Element<size>& element) {
        array.push_back(element);
    }
};

template <typename Contender, size_t size>
static void add_contender(const std::string& name, const char* contender, int64_t count) {
    add(name, contender, [=](benchmark::State& state) {
        // As in a new process, and as in one that has freed large blocks.
        mallopt(M_MMAP_THRESHOLD, count == MANY ? 128 << 10 : 32 << 20);
        mallopt(M_TRIM_THRESHOLD, count == MANY ? 128 << 10 : 64 << 20);
        while (state.KeepRunningBatch(count)) {
            Contender filled;
            Element<size> element = {};
            for (int64_t i = 0; i < count; i++) {
                element.words[0] = static_cast<uint64_t>(i);
                filled.append(element);
            }
            benchmark::DoNotOptimize(filled.array);
            benchmark::ClobberMemory();
        }
    });
}

template <size_t size>
static void add_size() {
    for (int64_t count : {FEW, MANY}) {
        const std::string name = std::string(count == FEW ? "10,000" : "1,000,000") + " times " +
                                 std::to_string(size) + " bytes";
        add_contender<Ours<size>, size>(name, "kxutil", count);
        add_contender<Glib<size>, size>(name, "GArray", count);
        add_contender<Vector<size>, size>(name, "vector", count);
    }
}

void add_all() {
    add_size<8>();
    add_size<16>();
    add_size<64>();
}
