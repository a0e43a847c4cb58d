// The listing of modules with their settings, one line each, sorted by name.
//
// A linked module shares the settings of the one that it follows, which is listed in its place. The
// list of modules is allocated before loggers_lock is taken. Modules that register in between may
// not fit into it and are left out.

#include "util/c/shared/logging/logging_internal.h"

#include "osal/export/osal_msmalloc.h"
#include "osal/export/osal_threads.h"
#include "util/c/shared/logging/cancellation.h"
#include "util/export/stringutil.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <algorithm>

constexpr size_t LINE_BYTES = 256;

bool module_list_init(ModuleList* list) {
    list->capacity = num_modules.load(std::memory_order_relaxed);
    list->count = 0;
    list->modules = list->few;
    if (list->capacity > MODULES_WITHOUT_HEAP)
        list->modules = static_cast<logmodule**>(gsMalloc(list->capacity * sizeof(logmodule*)));
    return list->modules != nullptr;
}

void module_list_destroy(ModuleList* list) {
    if (list->modules != list->few)
        gsFree(list->modules);
}

// The order of two modules, given pointers to the pointers to them.
static int compare_module(const void* a, const void* b) {
    const logmodule* const* left = static_cast<logmodule* const*>(a);
    const logmodule* const* right = static_cast<logmodule* const*>(b);
    return strcmp((*left)->names[0], (*right)->names[0]);
}

void module_list_sort(ModuleList* list) {
    qsort(list->modules, list->count, sizeof(logmodule*), compare_module);
}

// Keeps a module that is not linked and not yet in the list. A linear search is fast enough for a
// few dozen modules.
static void keep_module(ModuleList* list, logmodule* m) {
    logmodule** const end = list->modules + list->count;
    if (m->link == nullptr && list->count < list->capacity &&
        std::find(list->modules, end, m) == end)
        list->modules[list->count++] = m;
}

// The name of a level. Java may write any number as a level, so there may be none.
template <size_t count>
static const char* name_of(const char* const (&names)[count], unsigned level) {
    return level < count ? names[level] : "?";
}

static void print_one_module(const logmodule* m, log_output out) {
    const char* const alias = m->names[1];
    const char* const level = name_of(msglevel_names, load_word(m->pMsgLevel));
    const char* const sanity = name_of(sanitylevel_names, load_word(m->pSanityLevel));
    const unsigned decorations = load_word(&m->decorations);
    char line[LINE_BYTES];
    if (alias != nullptr && *alias != '\0')
        kestrum_util_snprintf(line, sizeof line, "\t%s (%s): level=%s, decorations=%x, sanity=%s\n",
                              m->names[0], alias, level, decorations, sanity);
    else
        kestrum_util_snprintf(line, sizeof line, "\t%s: level=%s, decorations=%x, sanity=%s\n",
                              m->names[0], level, decorations, sanity);
    fwrite(line, 1, strlen(line), out);
    fflush(out);
}

void _log_do_print_moduleinfo(logger* l, LogModule module, log_output out) {
    ModuleList list;
    if (!module_list_init(&list))
        return;
    const CancellationOff cancellation_off;
    // Held until the last line is written, so that no logger registers halfway through.
    rwReadLock(&loggers_lock);
    for_each_module(l, module, [&](logmodule* m) { keep_module(&list, m); });
    module_list_sort(&list);
    for (size_t i = 0; i < list.count; i++)
        print_one_module(list.modules[i], out);
    rwReadUnlock(&loggers_lock);
    module_list_destroy(&list);
}
