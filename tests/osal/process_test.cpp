#include "osal/export/osal_threads.h"

#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <iterator>
#include <thread>

// How a forked child that runs `work` ends: its exit status, or minus the signal that killed it.
template <typename Work>
static int status_of_child(Work work) {
    const pid_t child = fork();
    if (child == 0)
        _exit(work());
    int status = -1;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

// Asked twice: the second answer is the one that was kept.
static bool ids_are_right() {
    for (int i = 0; i < 2; i++) {
        if (osGetProcessID() != getpid() || threadGetCurrentID() != gettid())
            return false;
    }
    return true;
}

// Here, in a child and in a child's child, both of which inherit kept ids; then here again.
static void check_ids() {
    EXPECT_TRUE(ids_are_right());
    const int status = status_of_child([] {
        return ids_are_right() ? status_of_child([] { return ids_are_right() ? 0 : 2; }) : 1;
    });
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(ids_are_right());
}

TEST(Ids, AreRightInEveryThreadAndInItsChildren) {
    check_ids();
    std::thread(check_ids).join();
}

// The kernel kills a child at the first system call of its second round.
TEST(Ids, RepeatedCallsAndFreeLocksMakeNoSystemCall) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer makes system calls";
#endif
    struct sock_filter rules[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(struct seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_exit, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS),
    };
    const struct sock_fprog only_exit = {std::size(rules), rules};
    static volatile int word;
    for (bool with_call : {false, true}) {
        const int status = status_of_child([&] {
            prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
            for (int round = 0; round < 2; round++) {
                if (round == 1)
                    prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &only_exit);
                osGetProcessID();
                threadGetCurrentID();
                rwReadLock(&word);
                rwReadUnlock(&word);
                rwWriteLock(&word);
                rwWriteUnlock(&word);
            }
            return static_cast<int>(syscall(with_call ? SYS_getpid : SYS_exit, 0));
        });
        EXPECT_EQ(status, with_call ? -SIGSYS : 0);  // the call shows that calls are noticed
    }
}
