#include "util/export/stacked_threadlocal.h"
#include "osal/export/osal_threads.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <filesystem>
#include <string>
#include <thread>

osalError tlsAlloc(TLSKey* key) {
    const auto real = reinterpret_cast<decltype(&tlsAlloc)>(dlsym(RTLD_NEXT, "tlsAlloc"));
    return getenv("NO_SLOT") == nullptr ? real(key) : OSAL_OUT_OF_RESOURCES;
}

TEST(StackedLocal, FindsTheNewestBindingOfAKeyOnItsThreadAndAbortsWithoutASlot) {
    const int A = 1, B = 2;
    int first, second, other;
    __tlnode nodes[3];
    EXPECT_EQ(stackedLocalGet(&A), nullptr);
    stackedLocalPush(&nodes[0], &first, &A);
    stackedLocalPush(&nodes[1], &other, &B);
    stackedLocalPush(&nodes[2], &second, &A);
    EXPECT_TRUE(stackedLocalGet(&A) == &second && stackedLocalGet(&B) == &other);
    std::thread([&] { EXPECT_EQ(stackedLocalGet(&A), nullptr); }).join();
    stackedLocalPop(&nodes[2]);
    EXPECT_TRUE(stackedLocalGet(&A) == &first && stackedLocalGet(nullptr) == nullptr);
    for (int i : {1, 0, 0})  // one too many does nothing
        stackedLocalPop(&nodes[i]);
    EXPECT_TRUE(stackedLocalGet(&A) == nullptr && stackedLocalGet(&B) == nullptr);
    const std::string self = std::filesystem::read_symlink("/proc/self/exe");
    EXPECT_EQ(system(("NO_SLOT=1 " EMULATOR " " + self + " 2>/dev/null").c_str()),
              0x8600);  // the shell's SIGABRT
}
