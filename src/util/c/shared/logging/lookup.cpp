// What a name in an option means: a module, by name or alias, or a retired name that leads to one.

#include "util/c/shared/logging/logging_internal.h"

#include "util/export/stringutil.h"

#include <stdarg.h>
#include <string.h>
#include <bit>

constexpr size_t ADVICE_BYTES = 256;

int log_fail(char* errbuf, size_t errlen, const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    kestrum_util_vsnprintf(errbuf, errlen, fmt, args);
    va_end(args);
    return -1;
}

static bool is_module(const logmodule* m, const char* name) {
    return strcmp(m->names[0], name) == 0 ||
           (m->names[1] != nullptr && strcmp(m->names[1], name) == 0);
}

// What a name stands for: a module, a retired name, or (logger null) nothing.
struct NamedThing {
    logger* log;
    size_t module;
    const logobsolete* retired;  // null for a module
};

// The first match of a name, logger by logger: its modules, then its retired names.
static NamedThing look_up(const char* name, bool with_retired) {
    for (logger* l = all_loggers.load(std::memory_order_acquire); l != nullptr; l = l->next) {
        for (size_t i = 0; i < l->num_loggers; i++)
            if (is_module(&l->loggers[i], name))
                return {l, i, nullptr};
        for (size_t i = 0; with_retired && i < l->num_obsoletes; i++)
            if (strcmp(l->obsoletes[i].old_name, name) == 0)
                return {l, 0, &l->obsoletes[i]};
    }
    return {nullptr, 0, nullptr};
}

bool find_logmodule(const char* name, deprecation_warner* warn, logger** ppl, size_t* pmindex,
                    char* errbuf, size_t errlen) {
    // A replacement may be retired, too. A cycle ends as a missing replacement does. It is detected
    // when a row remembered at hops 1, 2, 4, 8 ... is reached a second time.
    const logobsolete* remembered = nullptr;
    size_t hops = 0;
    NamedThing found = look_up(name, warn != nullptr);
    while (warn != nullptr && found.retired != nullptr) {
        const logobsolete* retired = found.retired;
        if (retired == remembered)
            return false;
        if (std::has_single_bit(++hops))
            remembered = retired;
        if (retired->new_name == nullptr) {
            log_fail(errbuf, errlen, "Logging module %s is deprecated", name);
            return false;
        }
        char advice[ADVICE_BYTES];
        kestrum_util_snprintf(
            advice, sizeof advice, "Logging module %s is deprecated. Please use %s=%s instead.",
            name, retired->new_name,
            retired->new_level < MSG_MAX ? msglevel_names[retired->new_level] : "?");
        log_fail(errbuf, errlen, "%s", advice);
        if (retired->how == OBSOLETE_FAIL)
            return false;
        warn(advice);
        errbuf = nullptr;  // keeps the advice if the replacement is missing
        name = retired->new_name;
        found = look_up(name, true);
    }
    if (found.log == nullptr) {
        log_fail(errbuf, errlen, "No such logging module \"%s\"", name);
        return false;
    }
    *ppl = found.log;
    *pmindex = found.module;
    return true;
}
