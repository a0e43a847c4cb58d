// A binding pushed and popped, and looked up, against a list of one's own behind a POSIX
// thread-specific value. The limit keeps the list's head in a variable of the thread.

#include "util/export/stacked_threadlocal.h"

#include <benchmark/benchmark.h>
#include <pthread.h>

static const void* const KEY = &KEY;

struct Ours {
    static void push(__tlnode* node, void* data) {
        stackedLocalPush(node, data, KEY);
    }
    static void pop(__tlnode* node) {
        stackedLocalPop(node);
    }
    static void* get() {
        return stackedLocalGet(KEY);
    }
};

template <typename Head>
struct List {
    static void push(__tlnode* node, void* data) {
        *node = {KEY, Head::get(), data};
        Head::set(node);
    }
    static void pop(__tlnode*) {
        Head::set(Head::get()->next);
    }
    static void* get() {
        for (const __tlnode* node = Head::get(); node != nullptr; node = node->next)
            if (node->key == KEY)
                return node->data;
        return nullptr;
    }
};

struct PosixHead {
    static pthread_key_t make_key() {
        pthread_key_t key;
        pthread_key_create(&key, nullptr);
        return key;
    }
    static inline const pthread_key_t key = make_key();
    static __tlnode* get() {
        return static_cast<__tlnode*>(pthread_getspecific(key));
    }
    static void set(__tlnode* node) {
        pthread_setspecific(key, node);
    }
};

struct VariableHead {
    static inline thread_local __tlnode* volatile head = nullptr;
    static __tlnode* get() {
        return head;
    }
    static void set(__tlnode* node) {
        head = node;
    }
};

template <typename Contender>
static void push_and_pop(benchmark::State& state) {
    __tlnode node;
    for (auto _ : state) {
        Contender::push(&node, &state);
        benchmark::ClobberMemory();
        Contender::pop(&node);
    }
}

template <typename Contender>
static void get(benchmark::State& state) {
    __tlnode node;
    Contender::push(&node, &state);
    for (auto _ : state)
        benchmark::DoNotOptimize(Contender::get());
    Contender::pop(&node);
}

BENCHMARK(push_and_pop<Ours>)->Name("push and pop/kxutil");
BENCHMARK(push_and_pop<List<PosixHead>>)->Name("push and pop/pthread value");
BENCHMARK(push_and_pop<List<VariableHead>>)->Name("push and pop/limit: thread_local");
BENCHMARK(get<Ours>)->Name("get/kxutil");
BENCHMARK(get<List<PosixHead>>)->Name("get/pthread value");
BENCHMARK(get<List<VariableHead>>)->Name("get/limit: thread_local");
