// The part of the agent that times collections, a component in C of its own.

#define LOG_DEFINE_COMPONENT
#include "gc_log.h"

#include "gc.h"
#include "osal/export/osal_timing.h"
#include "util/export/scaled_printfmt.h"

static const nanotime NANOS_PER_MICRO = 1000;

static s8 start_ticks;       // of the current pause
static nanotime all_pauses;  // whole microseconds
static unsigned count;       // printing threads read it, too
static nanotime limit;

char* gc_write_collections(char* position, size_t* bytesLeft) {
    return log_sprintf(position, bytesLeft, "[%5u]", __atomic_load_n(&count, __ATOMIC_RELAXED));
}

void gc_set_pause_limit(nanotime new_limit) {
    __atomic_store_n(&limit, new_limit, __ATOMIC_RELAXED);
}

nanotime gc_pause_limit(void) {
    return __atomic_load_n(&limit, __ATOMIC_RELAXED);
}

void gc_started(void) {
    start_ticks = timingGetCounterTime();
}

// Whole microseconds, so that the number is scaled to them and not left in nanoseconds.
static nanotime pause_until_now(void) {
    const double ticks = (double)(timingGetCounterTime() - start_ticks);
    return (nanotime)(ticks * counterToNanoMultiplier) / NANOS_PER_MICRO * NANOS_PER_MICRO;
}

// An end without a start is ignored: the events were enabled during the collection.
void gc_finished(void) {
    if (start_ticks == 0)
        return;
    const nanotime pause = pause_until_now(), most = gc_pause_limit();
    const unsigned number = __atomic_add_fetch(&count, 1, __ATOMIC_RELAXED);
    const long shown = (long)scaledownNanotime(pause);
    const char* const unit = scaledDownNanotimeSuffix(pause);
    __atomic_fetch_add(&all_pauses, pause, __ATOMIC_RELAXED);
    start_ticks = 0;
    if (most != 0 && pause > most) {
        logPrint(DBG_GC, MSG_WARN, "collection %u took %ld%s, more than %ld%s", number, shown, unit,
                 (long)scaledownNanotime(most), scaledDownNanotimeSuffix(most));
    } else {
        logPrint(DBG_GC, MSG_INFO, "collection %u took %ld%s", number, shown, unit);
    }
}

void gc_summarize(void) {
    const nanotime all = __atomic_load_n(&all_pauses, __ATOMIC_RELAXED);
    logPrint(DBG_GC, MSG_INFO, "%u collections took %ld%s",
             __atomic_load_n(&count, __ATOMIC_RELAXED), (long)scaledownNanotime(all),
             scaledDownNanotimeSuffix(all));
}
