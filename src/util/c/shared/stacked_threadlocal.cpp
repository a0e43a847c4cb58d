// Stacked thread-locals in one slot, which holds each thread's newest binding.
//
// The slot is allocated by the first of the library's static initialisers. Their order is fixed by
// constructor priorities: 101 here, 102 for the library's logger, 103 for the timing variables.

#include "util/export/stacked_threadlocal.h"

#include "osal/export/osal_threads.h"

#include <stddef.h>
#include <stdlib.h>

static_assert(sizeof(__tlnode) == 24 && offsetof(__tlnode, next) == 8 &&
              offsetof(__tlnode, data) == 16);

static TLSKey tls;  // written once, at load

static inline osalError sltls() {
    return tlsAlloc(&tls);
}

// Code that uses the slot cannot work without it.
extern "C" __attribute__((constructor(101), visibility("hidden"))) void _sisltls(void);
void _sisltls(void) {
    if (sltls() != OSAL_OK)
        abort();
}

static __tlnode* top() {
    return static_cast<__tlnode*>(tlsGet(tls));
}

void stackedLocalPush(__tlnode* pnode, void* data, __slkey key) {
    pnode->key = key;
    pnode->data = data;
    pnode->next = top();
    tlsSet(tls, pnode);
}

void stackedLocalPop(__tlnode*) {
    if (const __tlnode* newest = top(); newest != nullptr)
        tlsSet(tls, newest->next);
}

void* stackedLocalGet(__slkey key) {
    for (const __tlnode* node = top(); node != nullptr; node = node->next)
        if (node->key == key)
            return node->data;
    return nullptr;
}
