// Thread-local slots.
//
// The first few are elements of an array that every thread has at a fixed offset, so reading one is
// a load. Their keys have the highest bit set, which no POSIX key has. When they are used up, slots
// are POSIX keys without destructors. Slots are never released. Their count may be read relaxed:
// each addition gives a different number, and a thread that has been given a key cannot see an
// older count.

#include "osal/export/osal_threads.h"

#include <errno.h>
#include <pthread.h>
#include <atomic>

static_assert(sizeof(TLSKey) == 4 && sizeof(osalError) == 4);

constexpr unsigned NUM_FAST_SLOTS = 8;  // the array takes room in every thread
constexpr TLSKey FAST = 0x80000000;

static thread_local void* fast_slots[NUM_FAST_SLOTS];
static std::atomic<unsigned> slots_taken;  // threads that raced for the last one may pass the end

osalError tlsAlloc(TLSKey* key) {
    if (key == nullptr)
        return OSAL_BAD_ARGUMENT;
    if (slots_taken.load(std::memory_order_relaxed) < NUM_FAST_SLOTS) {
        const unsigned slot = slots_taken.fetch_add(1, std::memory_order_relaxed);
        if (slot < NUM_FAST_SLOTS) {
            *key = FAST | slot;
            return OSAL_OK;
        }
    }
    return pthread_key_create(key, nullptr) == 0 ? OSAL_OK : OSAL_OUT_OF_RESOURCES;
}

static bool is_fast(TLSKey key) {
    return key - FAST < NUM_FAST_SLOTS;
}

void* tlsGet(TLSKey key) {
    return is_fast(key) ? fast_slots[key - FAST] : pthread_getspecific(key);
}

osalError tlsSet(TLSKey key, void* value) {
    if (is_fast(key)) {
        if (key - FAST >= slots_taken.load(std::memory_order_relaxed))
            return OSAL_BAD_ARGUMENT;
        fast_slots[key - FAST] = value;
        return OSAL_OK;
    }
    switch (pthread_setspecific(key, value)) {
        case 0: return OSAL_OK;
        case ENOMEM: return OSAL_OUT_OF_RESOURCES;
        default: return OSAL_BAD_ARGUMENT;
    }
}
