// The garbage collector of the demo, a component in C.
//
// Each worker allocates blocks in a region of its own, so what it prints depends on its rounds
// alone. A collection keeps a quarter of the region. Blocks grow over four rounds until the last
// one does not fit.

#define LOG_DEFINE_COMPONENT
#include "gc_log.h"

#include "component.h"
#include "gc_options.h"
#include "util/export/scaled_printfmt.h"

enum { BLOCKS_PER_ROUND = 4, CROWDED_PERCENT = 75 };

static const nanotime SWEEP_NANOS_PER_MB = 1000000;

// Counts of megabytes; the totals may wrap around, their difference does not mind.
static _Thread_local struct {
    unsigned allocated;
    unsigned freed;
    unsigned in_use;
} region;

static unsigned region_mb(void) {
    return (unsigned)(options.region >> 20);
}

static unsigned occupancy(void) {
    return 100 * region.in_use / region_mb();
}

char* gc_write_occupancy(char* position, size_t* bytesLeft) {
    return log_sprintf(position, bytesLeft, "[%3u%%]", occupancy());
}

static void allocate(unsigned worker, unsigned mb) {
    if (region.in_use + mb > region_mb()) {
        logPrint(DBG_HEAP, MSG_ERROR, "worker %u: no room for %u MB", worker, mb);
        return;
    }
    region.allocated += mb;
    region.in_use += mb;
    logPrint(DBG_HEAP, MSG_TRACE, "worker %u: allocated %u MB", worker, mb);
}

// Returns the megabytes freed.
static unsigned sweep(unsigned worker) {
    const unsigned mb = region.in_use / 4 * 3;
    region.freed += mb;
    region.in_use -= mb;
    logPrint(DBG_SWEEP, MSG_DEBUG, "worker %u: swept, %u MB survive", worker, region.in_use);
    return mb;
}

static void verify(unsigned worker) {
    if (region.allocated - region.freed != region.in_use) {
        logPrint(DBG_HEAP, MSG_ERROR, "worker %u: region damaged", worker);
    } else {
        logPrint(DBG_HEAP, MSG_INFO, "worker %u: verified, %u MB in use", worker, region.in_use);
    }
}

// What the options ask to be told of a collection that took so long.
static void tell_of(unsigned worker, nanotime duration) {
    for (size_t i = 0; i < options.num_phases; i++)
        logPrint(DBG_GC, MSG_INFO, "worker %u: %s done", worker, options.phases[i]);
    if (options.pause != 0 && duration > options.pause)
        logPrint(DBG_GC, MSG_WARN, "worker %u: collection took %ld%s", worker,
                 (long)scaledownNanotime(duration), scaledDownNanotimeSuffix(duration));
}

void component_work(unsigned worker, unsigned round) {
    for (int i = 0; i < BLOCKS_PER_ROUND; i++)
        allocate(worker, 4 * (round % 4 + 1));
    if (occupancy() >= CROWDED_PERCENT)
        logPrint(DBG_HEAP, MSG_WARN, "worker %u: region is %u%% full", worker, occupancy());
    const unsigned freed = sweep(worker);
    logPrint(DBG_GC, MSG_INFO, "worker %u: collection %u freed %u MB", worker, round, freed);
    tell_of(worker, freed * SWEEP_NANOS_PER_MB);
    if (options.verify || logGetSanityLevel(DBG_HEAP) >= SANITY_CHECK)
        verify(worker);
}

logger* component_logger(void) {
    return &_loggers;
}
