#ifndef DYNARRAY_SUITE  // dynarray_inline_test.cpp brings its own, and the bodies
#include "util/export/dynarray.h"
#define DYNARRAY_SUITE DynArray
#endif
#include "support/platform.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <cstring>
#include <random>

using std::string;

static size_t elem_size;

static int compare(const void* a, const void* b) {
    return std::memcmp(a, b, elem_size);
}

static void expect_elements(const void* data, const std::vector<string>& expected) {
    string bytes;
    for (const string& element : expected)
        bytes += element;
    ASSERT_EQ(std::string_view(static_cast<const char*>(data), bytes.size()), bytes);
}

// An array, the capacity and the elements that it must have.
struct Pair {
    DynArrayP da;
    size_t capacity;
    std::vector<string> expected = {};

    void grow_for(size_t index) {
        if (index >= capacity)
            capacity = index < 2 * capacity ? 2 * capacity : capacity + index + 5;
    }

    void change(unsigned operation, size_t index, string element) {
        const size_t size = expected.size();
        int result = 0;
        if (operation < 2) {
            index = operation == 0 && index % 50 == 0 ? 3 * size : index;
            grow_for(operation == 0 ? index : std::max(index, size));
            result = (operation == 0 ? dynArraySet : dynArrayInsert)(da, index, element.data());
            // Those between the old end and `index` have no defined contents, so they are set, too.
            for (size_t gap = size; gap < index; gap++)
                result |= dynArraySet(da, gap, element.data());
            if (operation == 1 && index < size)
                expected.insert(expected.begin() + index, element);
            expected.resize(std::max(expected.size(), index + 1), element);
            expected[index] = element;
        } else if (operation == 2) {
            if (index > 0)
                grow_for(size + index - 1);
            const void* first = dynArrayAddEmptyElementsLast(da, index);
            char* const data = static_cast<char*>(da->data);
            ASSERT_EQ(first, capacity > 0 ? data + size * elem_size : nullptr);
            expected.resize(size + index, string(elem_size, '\0'));
        } else if (operation == 3) {
            result = dynArrayResize(da, index);
            capacity = std::max(capacity, index);
        } else if (operation == 4) {
            result = dynArrayShrink(da, index);
            capacity = std::min(capacity, index);
            expected.resize(std::min(size, index));
        } else if (operation == 5) {
            dynArraySort(da, compare);
            std::ranges::sort(expected);
        } else {
            grow_for(size);
            result = dynArrayAddLast(da, element.data());
            expected.push_back(element);
        }
        ASSERT_TRUE(result == 0 && da->size == expected.size() && da->capacity == capacity);
        ASSERT_EQ(da->data == nullptr, capacity == 0);
        expect_elements(da->data, expected);
    }
};

TEST(DYNARRAY_SUITE, HoldsWhatAVectorHoldsAndGrowsAsStated) {
    std::mt19937 random(20260329);
    for (size_t size : {0, 1, 3, 8, 16, 24, 32, 40, 48, 56, 64, 72})
        for (size_t start = 0; start < 20 && !HasFatalFailure(); start++) {
            elem_size = size;
            platform = Platform{};
            Pair p = {dynArrayNewMSpace(start % 3, size, globalMSpace()), start % 3};
            for (int i = 0; i < 100 && !HasFatalFailure(); i++) {
                string element(size, '\0');
                std::ranges::generate(element, [&] { return static_cast<char>(random()); });
                p.change(random() % 20, random() % (p.expected.size() + 3), element);
            }
            void* block = nullptr;
            ASSERT_EQ(dynArrayCommit(p.da, &block), p.expected.size());
            ASSERT_EQ(block == nullptr, p.expected.empty());
            expect_elements(block, p.expected);
            gsFree(block);
            ASSERT_EQ(platform.live_blocks, 0);
        }
}

TEST(DYNARRAY_SUITE, StaysAsItWasWhenASizeOverflows) {
    short elements[] = {1, 2, 3};
    DynArrayP da = dynArrayNew(0, sizeof(short));
    for (short& element : elements)
        dynArrayAddLast(da, &element);
    const DynArray before = *da;
    EXPECT_EQ(dynArrayResize(da, SIZE_MAX / 2 + 2), -1);
    for (size_t index : {SIZE_MAX, SIZE_MAX - 7, SIZE_MAX / 2 - 6})
        EXPECT_TRUE(dynArraySet(da, index, elements) + dynArrayInsert(da, index, elements) == -2);
    EXPECT_EQ(dynArrayAddEmptyElementsLast(da, SIZE_MAX), nullptr);
    EXPECT_EQ(std::memcmp(da, &before, sizeof before), 0);
    EXPECT_EQ(std::memcmp(da->data, elements, sizeof elements), 0);
    dynArrayFree(da);
    EXPECT_EQ(dynArrayNew(SIZE_MAX / 8, 16), nullptr);
    da = dynArrayNew(SIZE_MAX / 2 + 1, 0);
    EXPECT_EQ(dynArraySet(da, SIZE_MAX / 2 + 1, elements), -1);
    dynArrayFree(da);
    void* block = elements;
    EXPECT_TRUE(dynArrayCommit(nullptr, &block) == 0 && block == nullptr);
    dynArrayFree(nullptr);
}
