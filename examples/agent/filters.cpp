// Patterns are matched in callbacks of any thread, while an attach may replace them: `lock` is held
// during one match, and no other lock is taken meanwhile.

#include "filters.h"

#include "osal/export/osal_threads.h"
#include "util/export/globmatch.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <span>
#include <utility>

namespace {

patternset sets[NUM_FILTERS];           // guarded by `lock`
std::atomic<bool> forces[NUM_FILTERS];  // whether a pattern has a '+'
volatile int lock;

bool has_force(const patternset& set) {
    const std::span<const pattern> patterns(set.patterns, set.num_patterns);
    return std::ranges::find(patterns, FORCE, &pattern::type) != patterns.end();
}

MatchType match(patternset& set, const char* type, const char* method) {
    if (set.num_patterns == 0)
        return MATCH;
    if (method == nullptr)
        return patternSetMatch(&set, type);
    return patternSetMatchList(&set, 2, type, '.', method, 0);
}

}  // namespace

int set_filter(Filter filter, const char* patterns, char* errbuf, size_t errlen) {
    patternset set;
    if (patternSetCreate(&set, patterns) != 0) {
        std::snprintf(errbuf, errlen, "Out of memory");
        return -1;
    }
    forces[filter] = has_force(set);
    rwWriteLock(&lock);
    std::swap(set, sets[filter]);
    rwWriteUnlock(&lock);
    patternSetFree(&set);
    return 0;
}

MsgLevel filter_level(Filter filter, MsgLevel usual, const char* type, const char* method) {
    rwReadLock(&lock);
    const MatchType matched = match(sets[filter], type, method);
    rwReadUnlock(&lock);
    if (matched == FORCE)
        return MSG_WARN;
    return matched == MATCH ? usual : MSG_MAX;
}

MsgLevel filter_first_level(Filter filter, MsgLevel usual) {
    return forces[filter] ? MSG_WARN : usual;
}
