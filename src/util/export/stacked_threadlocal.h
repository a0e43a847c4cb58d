// Stacked thread-locals: a value that a function makes visible to everything it calls on the same
// thread. Each thread has one stack of bindings; looking a key up finds its newest one. All keys
// share a single slot of the platform.
#ifndef UTIL_EXPORT_STACKED_THREADLOCAL_H
#define UTIL_EXPORT_STACKED_THREADLOCAL_H

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

// A key is an address, compared by identity and never read through. A pointer variable of one's
// own, initialised with its own address, makes a key that nobody else has.
typedef const void* __slkey;

// One binding. It belongs to whoever pushes it, usually as a local variable; the facility
// allocates nothing.
typedef struct __tlnode {
    __slkey key;
    struct __tlnode* next;  // the binding below it
    void* data;
} __tlnode;

// Binds `key` to `data` on the calling thread until the matching stackedLocalPop(). The node stays
// in place until then; what it held before does not matter.
void stackedLocalPush(__tlnode* pnode, void* data, __slkey key);

// Ends the calling thread's newest binding, which is `pnode`'s: pushes and pops are paired, last
// in first out, also when the frames between were left by a non-local exit. Without a binding it
// does nothing.
void stackedLocalPop(__tlnode* pnode);

// The data of the calling thread's newest binding of `key`, or null without one. Walks the stack,
// which is as deep as the calls that pushed.
void* stackedLocalGet(__slkey key);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
