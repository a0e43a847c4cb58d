#include "util/export/stacked_threadlocal.h"

#include <gtest/gtest.h>
#include <thread>

static const void* const A = &A;
static const void* const B = &B;

TEST(StackedLocal, FindsTheNewestBindingOfAKeyOnItsThread) {
    int first, second, other;
    __tlnode nodes[3];
    EXPECT_EQ(stackedLocalGet(A), nullptr);
    stackedLocalPush(&nodes[0], &first, A);
    stackedLocalPush(&nodes[1], &other, B);
    stackedLocalPush(&nodes[2], &second, A);
    EXPECT_EQ(stackedLocalGet(A), &second);
    EXPECT_EQ(stackedLocalGet(B), &other);
    std::thread([] { EXPECT_EQ(stackedLocalGet(A), nullptr); }).join();
    stackedLocalPop(&nodes[2]);
    EXPECT_EQ(stackedLocalGet(A), &first);
    stackedLocalPop(&nodes[1]);
    EXPECT_EQ(stackedLocalGet(B), nullptr);
    EXPECT_EQ(stackedLocalGet(nullptr), nullptr);
    stackedLocalPop(&nodes[0]);
    stackedLocalPop(&nodes[0]);  // one too many does nothing
    EXPECT_EQ(stackedLocalGet(A), nullptr);
}
