// A binding pushed and popped, and looked up, against a hand-written list behind a POSIX
// thread-specific value.

#include "bench.h"
#include "util/export/stacked_threadlocal.h"

#include <pthread.h>

static const void* const KEY = &KEY;

static pthread_key_t head_key;

static __tlnode* head() {
    return static_cast<__tlnode*>(pthread_getspecific(head_key));
}

static void push(__tlnode* node, void* data) {
    *node = {KEY, head(), data};
    pthread_setspecific(head_key, node);
}

static void pop() {
    pthread_setspecific(head_key, head()->next);
}

static void* get() {
    for (const __tlnode* node = head(); node != nullptr; node = node->next)
        if (node->key == KEY)
            return node->data;
    return nullptr;
}

void add_all() {
    static __tlnode ours, theirs;  // what is looked up
    pthread_key_create(&head_key, nullptr);
    stackedLocalPush(&ours, &ours, KEY);
    push(&theirs, &theirs);

    add_loop("push and pop", "kxutil", [] {
        __tlnode node;
        stackedLocalPush(&node, &node, KEY);
        benchmark::ClobberMemory();
        stackedLocalPop(&node);
    });
    add_loop("push and pop", "pthread value", [] {
        __tlnode node;
        push(&node, &node);
        benchmark::ClobberMemory();
        pop();
    });
    add_loop("get", "kxutil", [] { benchmark::DoNotOptimize(stackedLocalGet(KEY)); });
    add_loop("get", "pthread value", [] { benchmark::DoNotOptimize(get()); });
}
