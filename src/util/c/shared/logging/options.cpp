// The option strings for levels, sanity levels and log files, and the lookup of modules by name.
//
// One tokenizer serves all three: an item whose name is a module goes to the option's cb_ok, any
// other to its cb_not_module, which takes the name of a bare item for a value meant for every
// module. Each item acts at once; the first that fails ends the parse, and the error buffer says
// why.

#include "util/c/shared/logging/logging_internal.h"

#include "osal/export/osal_msmalloc.h"
#include "util/export/arguments.h"
#include "util/export/posix/stringutil_pd.h"
#include "util/export/stringutil.h"

#include <stdarg.h>
#include <string.h>
#include <bit>
#include <span>

constexpr size_t ADVICE_BYTES = 256;

// Explains a failure in the caller's buffer, when there is one; always -1, so that a parser
// returns it.
__attribute__((format(printf, 3, 4))) static int fail(char* errbuf, size_t errlen, const char* fmt,
                                                      ...) {
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

bool find_logmodule(const parse_callback* cb, const char* name, logger** ppl, size_t* pmindex,
                    char* errbuf, size_t errlen) {
    // A replacement may be retired in turn. A chain that comes back to a row goes in a circle and
    // ends as a missing replacement does; the milestone, moved on ever more seldom, is met again.
    const logobsolete* milestone = nullptr;
    size_t hops = 0;
    NamedThing found = look_up(name, cb != nullptr);
    while (found.retired != nullptr) {
        const logobsolete* retired = found.retired;
        if (retired == milestone)
            return false;
        if (std::has_single_bit(++hops))
            milestone = retired;
        if (retired->new_name == nullptr) {
            fail(errbuf, errlen, "Logging module %s is deprecated", name);
            return false;
        }
        char advice[ADVICE_BYTES];
        kestrum_util_snprintf(
            advice, sizeof advice, "Logging module %s is deprecated. Please use %s=%s instead.",
            name, retired->new_name,
            retired->new_level < MSG_MAX ? msglevel_names[retired->new_level] : "?");
        fail(errbuf, errlen, "%s", advice);
        if (retired->how == OBSOLETE_FAIL)
            return false;
        if (cb->cb_deprecated != nullptr)
            cb->cb_deprecated(advice);
        errbuf = nullptr;  // keeps the advice if the replacement is missing
        name = retired->new_name;
        found = look_up(name, true);
    }
    if (found.log == nullptr) {
        fail(errbuf, errlen, "No such logging module \"%s\"", name);
        return false;
    }
    *ppl = found.log;
    *pmindex = found.module;
    return true;
}

static int log_parse(const char* args, const parse_callback* cb, char* errbuf, size_t errlen) {
    ArgIter iter;
    argIterInitDefault(&iter, args);
    int result = 0;
    while (!argIterDone(&iter) && result == 0) {
        char* name;
        char* value;
        if (!argIterGetNext(&iter, &name, &value))
            return fail(errbuf, errlen, "argIterGetNext failed. Out of memory?");
        logger* log;
        size_t module;
        // A name that is no module keeps the lookup's message: the callback gets no buffer.
        result = find_logmodule(cb, name, &log, &module, errbuf, errlen)
                     ? cb->cb_ok(log, module, value, errbuf, errlen)
                     : cb->cb_not_module(name, value, nullptr, 0);
        gsFree(name);
        gsFree(value);
    }
    return result;
}

// Stores the level that a value names, case ignored, or the one that the empty value stands for.
// False for an unknown name.
template <typename Level>
static bool level_of(const char* value, Level when_empty, std::span<const char* const> names,
                     Level* level) {
    if (*value == '\0') {
        *level = when_empty;
        return true;
    }
    for (size_t i = 0; i < names.size(); i++)
        if (kestrum_util_stricmp(names[i], value) == 0) {
            *level = static_cast<Level>(i);
            return true;
        }
    return false;
}

static int set_msglevel(logger* l, size_t module, const char* value, char* errbuf, size_t errlen) {
    MsgLevel level;
    if (!level_of(value, MSG_INFO, msglevel_names, &level))
        return fail(errbuf, errlen, "Illegal message level '%s'.", value);
    _log_set_msglevel(l, static_cast<LogModule>(module), level);
    return 0;
}

static int set_sanitylevel(logger* l, size_t module, const char* value, char* errbuf,
                           size_t errlen) {
    SanityLevel level;
    if (!level_of(value, SANITY_CHECK, sanitylevel_names, &level))
        return fail(errbuf, errlen, "Illegal sanity level '%s'.", value);
    _log_set_sanitylevel(l, static_cast<LogModule>(module), level);
    return 0;
}

static int log_deprecated_module(const char* msg) {
    if (logEnabled(DBG_UTIL, MSG_WARN))
        _logforceprint(&_loggers, DBG_UTIL, MSG_WARN, "%s", msg);
    return 0;
}

static int set_logfile(logger* l, size_t module, const char* value, char* errbuf, size_t errlen);

// An item that names no module is a value for every module, unless it has a value of its own.
template <int (*set)(logger*, size_t, const char*, char*, size_t)>
static int try_all(const char* token, const char* arg, char* errbuf, size_t errlen) {
    if (*arg != '\0')
        return fail(errbuf, errlen, "No such log module: %s.", token);
    return set(nullptr, 0, token, errbuf, errlen);
}

static const parse_callback log_levels = {set_msglevel, try_all<set_msglevel>,
                                          log_deprecated_module};
static const parse_callback sanity_levels = {set_sanitylevel, try_all<set_sanitylevel>,
                                             log_deprecated_module};
static const parse_callback logfiles = {set_logfile, try_all<set_logfile>, log_deprecated_module};

// Makes the selected modules write to what the module named `target` writes to now.
static int follow_module(logger* l, size_t module, const char* target, char* errbuf,
                         size_t errlen) {
    logger* target_log;
    size_t target_module;
    if (!find_logmodule(&logfiles, target, &target_log, &target_module, errbuf, errlen))
        return fail(errbuf, errlen, "No such log module '%s'.", target);
    logmodule* from = &target_log->loggers[target_module];
    for_each_module(l, static_cast<LogModule>(module),
                    [=](logmodule* m) { redirect_logmodule(from, m); });
    return 0;
}

static int set_logfile(logger* l, size_t module, const char* value, char* errbuf, size_t errlen) {
    if (*value == '>')
        return follow_module(l, module, value + 1, errbuf, errlen);
    log_output stream = register_stream(value);
    if (stream == nullptr)
        return fail(errbuf, errlen, "Could not open stream '%s'", value);
    // Counted before it is given: another option may take the stream away from the module at once,
    // and drop the module's reference with it.
    for_each_module(l, static_cast<LogModule>(module), [=](logmodule* m) {
        use_stream(stream);
        set_stream(m, stream);
    });
    release_stream(stream);
    return 0;
}

static bool is_empty(const char* args) {
    return args == nullptr || *args == '\0';
}

// Parses with the option's callbacks, and with the caller's way of hearing about retired names
// when it has one.
static int parse_option(const char* args, parse_callback cb, char* errbuf, size_t errlen,
                        int (*warn_deprecated)(const char*)) {
    if (warn_deprecated != nullptr)
        cb.cb_deprecated = warn_deprecated;
    return log_parse(args, &cb, errbuf, errlen);
}

int logParseMsgLevelsEx(const char* args, char* errbuf, size_t errlen,
                        int (*warn_deprecated)(const char*)) {
    if (!is_empty(args))
        return parse_option(args, log_levels, errbuf, errlen, warn_deprecated);
    for_each_module(nullptr, LOG_ALL_MODULES, [](logmodule* m) {
        if (m->is_default)
            store_word(m->pMsgLevel, MSG_INFO);
    });
    return 0;
}

int logParseSanityLevelsEx(const char* args, char* errbuf, size_t errlen,
                           int (*warn_deprecated)(const char*)) {
    if (!is_empty(args))
        return parse_option(args, sanity_levels, errbuf, errlen, warn_deprecated);
    _log_set_sanitylevel(nullptr, 0, SANITY_CHECK);
    return 0;
}

int logParseLogFilesEx(const char* args, char* errbuf, size_t errlen,
                       int (*warn_deprecated)(const char*)) {
    if (!is_empty(args))
        return parse_option(args, logfiles, errbuf, errlen, warn_deprecated);
    return 0;
}
