// Memory, and the slots of threads.

#include "osal/export/osal_msmalloc.h"
#include "osal/export/osal_threads.h"

#include <gtest/gtest.h>
#include <stdint.h>
#include <string.h>
#include <thread>
#include <vector>

static volatile size_t too_much = SIZE_MAX / 2;  // the compiler refuses a known one

static void* of_space(void* ptr, size_t size) {
    return msRealloc(globalMSpace(), ptr, size);
}

TEST(Memory, ResizingKeepsTheContentsAlsoWhenItFails) {
    for (auto resize : {gsRealloc, of_space}) {
        SCOPED_TRACE(resize == gsRealloc ? "heap" : "space");
        void* block = resize(nullptr, 6);
        ASSERT_NE(block, nullptr);
        memcpy(block, "quartz", 6);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
        EXPECT_EQ(resize(block, too_much), nullptr);  // a sanitizer ends the process instead
#endif
        EXPECT_EQ(memcmp(block, "quartz", 6), 0);
        block = resize(block, 1 << 20);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(memcmp(block, "quartz", 6), 0);
        block = resize(block, 3);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(memcmp(block, "qua", 3), 0);
        block = resize(block, 0);  // null would mean that the old block is still there
        EXPECT_NE(block, nullptr);
        resize == gsRealloc ? gsFree(block) : msFree(globalMSpace(), block);
    }
}

TEST(ThreadLocal, SlotsAreSeparateInEveryThreadUntilNoneIsLeft) {
    constexpr TLSKey NO_SLOT = UINT32_MAX;
    std::vector<TLSKey> keys;
    TLSKey key = NO_SLOT;
    osalError error;
    for (; (error = tlsAlloc(&key)) == OSAL_OK; key = NO_SLOT)
        keys.push_back(key);
    EXPECT_EQ(error, OSAL_OUT_OF_RESOURCES);
    EXPECT_EQ(key, NO_SLOT);
    EXPECT_EQ(tlsAlloc(nullptr), OSAL_BAD_ARGUMENT);
    EXPECT_EQ(tlsSet(NO_SLOT, nullptr), OSAL_BAD_ARGUMENT);

    ASSERT_GE(keys.size(), 2U);
    EXPECT_EQ(tlsSet(keys[0], &keys), OSAL_OK);
    std::thread([&] {
        EXPECT_EQ(tlsGet(keys[0]), nullptr);
        EXPECT_EQ(tlsSet(keys[0], &key), OSAL_OK);
    }).join();
    EXPECT_EQ(tlsGet(keys[0]), &keys);
    EXPECT_EQ(tlsGet(keys[1]), nullptr);
    for (TLSKey used : keys)
        pthread_key_delete(used);
}
