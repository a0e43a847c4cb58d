// Reader-writer lock words, thread-local slots, process and thread ids, last-error value.
#ifndef OSAL_EXPORT_OSAL_THREADS_H
#define OSAL_EXPORT_OSAL_THREADS_H

#include "osal/export/osal_types.h"

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

// Lock words.
//
// A reader-writer lock is one 32-bit word inside the data that it guards. Zero is unlocked, so a
// word in static storage or in zeroed memory needs no set-up and no clean-up; every other value
// belongs to these four functions. A word must not be copied or reset while anybody uses it.
//
// Any number of threads hold a word for reading at once, and a thread may take a read hold that
// it already has again. A hold may be released by another function than took it, on the same
// thread. A thread must not ask for the word while it holds it for writing, nor for writing while
// it holds it for reading: both wait for ever.
//
// A writer waits for the readers that hold the word. When new ones have kept it out for some
// milliseconds, readers that hold no lock word let it pass: they wait for it, but no longer than a
// quarter of a second, and then go ahead. So a writer gets through when each hold is shorter than
// that, and a reader that waits in vain loses at most a tenth of its time.
//
// Without contention each call is one atomic instruction and no system call; a thread that must
// wait spins briefly and then sleeps in the kernel. None of them fails, allocates, is a
// cancellation point or touches the last-error value.
//
// A child of fork() starts with words that no thread holds, except those that the forking thread
// holds: its holds go on in the child. (Of a thread that holds more than 13 words when it forks the
// further ones are free there, and releasing them does nothing.) Not so after a bare fork or clone
// system call, nor for words that were held 256 generations of children ago.

// Waits until no writer holds the word, then holds it for reading.
void rwReadLock(volatile int* lock);

// Releases one read hold of the calling thread.
void rwReadUnlock(volatile int* lock);

// Waits until nobody holds the word, then holds it exclusively.
void rwWriteLock(volatile int* lock);

// Releases the write hold of the calling thread.
void rwWriteUnlock(volatile int* lock);

// Creates a thread-local slot whose value is null in every thread until that thread sets it.
//
//   key  receives the slot's key
//
// Returns OSAL_OK; OSAL_BAD_ARGUMENT when `key` is null; OSAL_OUT_OF_RESOURCES when the process
// has no slot left. Nothing is stored on failure. Slots are never given back.
osalError tlsAlloc(TLSKey* key);

// The calling thread's value in the slot; null when it never set one. `key` comes from tlsAlloc().
void* tlsGet(TLSKey key);

// Sets the calling thread's value in the slot. No destructor runs for it when the thread ends.
// Returns OSAL_OK; OSAL_OUT_OF_RESOURCES when no memory is left for the thread's slots;
// OSAL_BAD_ARGUMENT for a key that is no slot. On failure the old value stays.
osalError tlsSet(TLSKey key, void* value);

// The id of the calling process, right also in a child after fork() (not after a bare fork or clone
// system call, of which the C library knows nothing). Costs no system call but for the first call
// in a process.
int osGetProcessID(void);

// The operating system's id of the calling thread, likewise. Costs no system call but for the
// first call in a thread.
int threadGetCurrentID(void);

// The calling thread's last operating-system error code (errno).
int osGetLastError(void);

// Sets the calling thread's last operating-system error code.
void osSetLastError(int code);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
