#ifndef DYNARRAY_SUITE  // dynarray_inline_test.cpp brings its own, and the bodies
#include "util/export/dynarray.h"
#define DYNARRAY_SUITE DynArray
#endif
#include "support/platform.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <cstring>
#include <random>
#include <string_view>
#include <vector>

using std::string;

static size_t elem_size;

static int compare(const void* a, const void* b) {
    return std::memcmp(a, b, elem_size);
}

static char* at(void* data, size_t index) {
    return static_cast<char*>(data) + index * elem_size;
}

// An array, and the elements and the capacity that it must have.
struct Pair {
    DynArrayP da;
    std::vector<string> expected;
    size_t capacity;

    void grow_for(size_t index) {
        if (index >= capacity)
            capacity = index < 2 * capacity ? 2 * capacity : capacity + index + 5;
    }

    // Elements between the old end and `index` have no defined contents, so they are set as well.
    void was_set(size_t index, string element) {
        for (size_t gap = expected.size(); gap < index; gap++)
            ASSERT_EQ(dynArraySet(da, gap, element.data()), 0);
        expected.resize(std::max(expected.size(), index + 1), element);
        expected[index] = element;
    }

    void change(unsigned operation, size_t index, string element) {
        const size_t size = expected.size();
        switch (operation) {
            case 0:
                index = index % 50 == 0 ? 3 * size : index;
                grow_for(index);
                ASSERT_EQ(dynArraySet(da, index, element.data()), 0);
                was_set(index, element);
                break;
            case 1:
                grow_for(std::max(index, size));
                ASSERT_EQ(dynArrayInsert(da, index, element.data()), 0);
                if (index >= size)
                    was_set(index, element);
                else
                    expected.insert(expected.begin() + index, element);
                break;
            case 2: {
                if (index > 0)
                    grow_for(size + index - 1);
                void* first = dynArrayAddEmptyElementsLast(da, index);
                ASSERT_EQ(first, capacity > 0 ? at(da->data, size) : nullptr);
                expected.resize(size + index, string(elem_size, '\0'));
                break;
            }
            case 3:
                ASSERT_EQ(dynArrayResize(da, index), 0);
                capacity = std::max(capacity, index);
                break;
            case 4:
                ASSERT_EQ(dynArrayShrink(da, index), 0);
                capacity = std::min(capacity, index);
                expected.resize(std::min(size, index));
                break;
            case 5:
                dynArraySort(da, compare);
                std::ranges::sort(expected);
                break;
            default:
                grow_for(size);
                ASSERT_EQ(dynArrayAddLast(da, element.data()), 0);
                expected.push_back(element);
                break;
        }
    }

    void check() const {
        ASSERT_EQ(da->size, expected.size());
        ASSERT_EQ(da->capacity, capacity);
        ASSERT_EQ(da->data == nullptr, capacity == 0);
        for (size_t i = 0; i < expected.size(); i++)
            ASSERT_EQ(std::string_view(at(da->data, i), elem_size), expected[i]) << i;
    }
};

TEST(DYNARRAY_SUITE, HoldsWhatAVectorHoldsAndGrowsAsStated) {
    std::mt19937 random(20260329);
    for (size_t size : {0, 1, 3, 8, 16, 24, 32, 40, 48, 56, 64, 72})
        for (size_t start = 0; start < 20; start++) {
            elem_size = size;
            platform = Platform{};
            Pair p = {dynArrayNew(start % 3, size), {}, start % 3};
            for (int i = 0; i < 100; i++) {
                string element(size, '\0');
                std::ranges::generate(element, [&] { return static_cast<char>(random()); });
                p.change(random() % 20, random() % (p.expected.size() + 3), element);
                p.check();
                if (HasFatalFailure())
                    return;
            }
            void* block = nullptr;
            ASSERT_EQ(dynArrayCommit(p.da, &block), p.expected.size());
            ASSERT_EQ(block == nullptr, p.expected.empty());
            for (size_t i = 0; i < p.expected.size(); i++)
                ASSERT_EQ(std::string_view(at(block, i), size), p.expected[i]);
            if (block != nullptr)
                msFree(globalMSpace(), block);
            ASSERT_EQ(platform.live_blocks, 0);
        }
}

TEST(DYNARRAY_SUITE, GrowsInTheStatedSteps) {
    DynArrayP da = dynArrayNewMSpace(0, sizeof(int), globalMSpace());
    int value = 0;
    for (size_t capacity : {5, 10, 20, 40})
        for (; da->size < capacity; value++) {
            ASSERT_EQ(dynArrayAddLast(da, &value), 0);
            ASSERT_EQ(da->capacity, capacity);
        }
    EXPECT_EQ(dynArraySet(da, 100, &value), 0);
    EXPECT_EQ(da->capacity, 145U);
    dynArrayFree(da);
    dynArrayFree(nullptr);
    void* block = &value;
    EXPECT_EQ(dynArrayCommit(nullptr, &block), 0U);
    EXPECT_EQ(block, nullptr);
}

struct FailingCase {
    const char* name;
    bool (*fails)(DynArrayP da);
};

static short value = 9;

// On a full array of three.
const FailingCase FAILING_CASES[] = {
    {"bytes", [](auto* da) { return dynArrayResize(da, SIZE_MAX / 2 + 2) == -1; }},
    {"index", [](auto* da) { return dynArraySet(da, SIZE_MAX, &value) == -1; }},
    {"growth", [](auto* da) { return dynArraySet(da, SIZE_MAX - 7, &value) == -1; }},
    {"insert", [](auto* da) { return dynArrayInsert(da, SIZE_MAX / 2 - 6, &value) == -1; }},
    {"empty", [](auto* da) { return dynArrayAddEmptyElementsLast(da, SIZE_MAX) == nullptr; }},
};

TEST(DYNARRAY_SUITE, StaysAsItWasWhenASizeOverflows) {
    DynArrayP da = dynArrayNew(3, sizeof value);
    const short elements[] = {1, 2, 3};
    for (short element : elements)
        dynArrayAddLast(da, &element);
    const DynArray before = *da;
    for (const FailingCase& c : FAILING_CASES) {
        SCOPED_TRACE(c.name);
        EXPECT_TRUE(c.fails(da));
        EXPECT_EQ(std::memcmp(da, &before, sizeof before), 0);
        EXPECT_EQ(std::memcmp(da->data, elements, sizeof elements), 0);
    }
    EXPECT_EQ(dynArrayNew(SIZE_MAX / 8, 16), nullptr);
    dynArrayFree(da);
    da = dynArrayNew(SIZE_MAX / 2 + 1, 0);
    EXPECT_EQ(dynArraySet(da, SIZE_MAX / 2 + 1, &value), -1);
    dynArrayFree(da);
}
