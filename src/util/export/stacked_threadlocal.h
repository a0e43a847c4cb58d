// Stacked thread-locals: a function binds a value to a key, and everything that it calls on the
// same thread can look the value up. Each thread has one stack of bindings; a look-up finds the
// newest binding of the key. All keys share one thread-local slot of the platform.
#ifndef UTIL_EXPORT_STACKED_THREADLOCAL_H
#define UTIL_EXPORT_STACKED_THREADLOCAL_H

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

// A key is an address. Keys are compared as addresses and never dereferenced. A pointer variable
// that is initialised with its own address makes a unique key.
typedef const void* __slkey;

// One binding. It belongs to the caller that pushes it and is usually a local variable; the
// facility allocates nothing.
typedef struct __tlnode {
    __slkey key;
    struct __tlnode* next;  // the binding below it
    void* data;
} __tlnode;

// Binds `key` to `data` on the calling thread until the matching stackedLocalPop(). The node must
// stay in place until then; its old contents do not matter.
void stackedLocalPush(__tlnode* pnode, void* data, __slkey key);

// Ends the newest binding of the calling thread, which must be that of `pnode`. Pushes and pops are
// paired, last in first out, also when longjmp() or a C++ exception leaves the frames between.
// Without a binding it does nothing.
void stackedLocalPop(__tlnode* pnode);

// The data of the calling thread's newest binding of `key`, or null without one. It walks the stack
// of bindings, one step for each binding of any key.
void* stackedLocalGet(__slkey key);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
