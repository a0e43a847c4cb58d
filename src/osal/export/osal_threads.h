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
// word in static storage or in zeroed memory needs no initialisation and no clean-up. All other
// values belong to these four functions. A word must not be copied or reset while a thread uses it.
//
// Any number of threads may hold a word for reading, and a thread may hold it for reading more than
// once. Another function than the one that took a hold may release it, on the same thread. A thread
// that holds the word for writing must not take it again, and one that holds it for reading must
// not take it for writing: both wait for ever.
//
// A writer waits for the readers that hold the word. When new readers have kept it waiting for some
// milliseconds, readers that hold no lock word let it pass: they wait for it, but no longer than a
// quarter of a second, and then go ahead. So a writer gets the word when each hold is shorter than
// that, and a reader that waits in vain loses at most a tenth of its time.
//
// Without contention each call is one atomic instruction and no system call; a thread that must
// wait spins briefly and then sleeps in the kernel. None of them fails, allocates, is a
// cancellation point or touches the last-error value.
//
// In a child of fork() the words that other threads hold are free, and the forking thread keeps its
// holds. When it holds more than 13 words, the further ones are free in the child, and releasing
// them does nothing. This does not work after a bare fork or clone system call, nor for words that
// were held 256 generations of children ago.

// Waits until no writer holds the word, then holds it for reading.
void rwReadLock(volatile int* lock);

// Releases one read hold of the calling thread.
void rwReadUnlock(volatile int* lock);

// Waits until no thread holds the word, then holds it for writing.
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

// The calling thread's value in the slot; null when it has set none. `key` comes from tlsAlloc().
void* tlsGet(TLSKey key);

// Sets the calling thread's value in the slot. No destructor runs for it when the thread ends.
// Returns OSAL_OK; OSAL_OUT_OF_RESOURCES when no memory is left for the thread's slots;
// OSAL_BAD_ARGUMENT for a key that is no slot. On failure the old value stays.
osalError tlsSet(TLSKey key, void* value);

// The id of the calling process, also correct in a child of fork(). It is wrong in a child of a
// bare fork or clone system call, which the C library does not see. Only the first call in a
// process makes a system call.
int osGetProcessID(void);

// The operating system's id of the calling thread, correct as osGetProcessID() is. Only the first
// call in a thread makes a system call.
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
