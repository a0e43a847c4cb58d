// The option strings for levels, sanity levels and log files.
//
// One tokenizer serves all three; they differ in the setter that gives a value to modules. The
// setter gets the module that an item names. For an item without a value whose name is no module,
// it gets every module, and the name as the value. Each item takes effect before the next one is
// read. The first that fails ends the parse, and the error buffer says why.

#include "util/c/shared/logging/logging_internal.h"

#include "osal/export/osal_msmalloc.h"
#include "util/export/arguments.h"
#include "util/export/posix/stringutil_pd.h"

#include <span>

// Gives a value to the selected modules. Returns 0, or -1 with the reason in the error buffer.
using Setter = int(logger* l, LogModule module, const char* value, char* errbuf, size_t errlen);

// Called for retired names when the caller of an option gives no callback.
static int print_warning(const char* advice) {
    if (logEnabled(DBG_UTIL, MSG_WARN))
        _logforceprint(&_loggers, DBG_UTIL, MSG_WARN, "%s", advice);
    return 0;
}

static int log_parse(const char* args, Setter* set, deprecation_warner* warn, char* errbuf,
                     size_t errlen) {
    if (warn == nullptr)
        warn = print_warning;
    ArgIter iter;
    argIterInitDefault(&iter, args);
    int result = 0;
    while (!argIterDone(&iter) && result == 0) {
        char* name;
        char* value;
        if (!argIterGetNext(&iter, &name, &value))
            return log_fail(errbuf, errlen, "argIterGetNext failed. Out of memory?");
        logger* log;
        size_t module;
        if (find_logmodule(name, warn, &log, &module, errbuf, errlen))
            result = set(log, static_cast<LogModule>(module), value, errbuf, errlen);
        else if (*value == '\0')
            result =
                set(nullptr, 0, name, nullptr, 0);  // without a buffer: the lookup's message stays
        else
            result = -1;
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

static int set_msglevel(logger* l, LogModule module, const char* value, char* errbuf,
                        size_t errlen) {
    MsgLevel level;
    if (!level_of(value, MSG_INFO, msglevel_names, &level))
        return log_fail(errbuf, errlen, "Illegal message level '%s'.", value);
    _log_set_msglevel(l, module, level);
    return 0;
}

static int set_sanitylevel(logger* l, LogModule module, const char* value, char* errbuf,
                           size_t errlen) {
    SanityLevel level;
    if (!level_of(value, SANITY_CHECK, sanitylevel_names, &level))
        return log_fail(errbuf, errlen, "Illegal sanity level '%s'.", value);
    _log_set_sanitylevel(l, module, level);
    return 0;
}

// Makes the selected modules write to what the module named `target` writes to now.
static int follow_module(logger* l, LogModule module, const char* target, char* errbuf,
                         size_t errlen) {
    logger* target_log;
    size_t target_module;
    if (!find_logmodule(target, print_warning, &target_log, &target_module, errbuf, errlen))
        return log_fail(errbuf, errlen, "No such log module '%s'.", target);
    logmodule* from = &target_log->loggers[target_module];
    for_each_module(l, module, [=](logmodule* m) { redirect_logmodule(from, m); });
    return 0;
}

static int set_logfile(logger* l, LogModule module, const char* value, char* errbuf,
                       size_t errlen) {
    if (*value == '>')
        return follow_module(l, module, value + 1, errbuf, errlen);
    log_output stream = register_stream(value);
    if (stream == nullptr)
        return log_fail(errbuf, errlen, "Could not open stream '%s'", value);
    // Counted before it is set: another option may immediately give the module another stream,
    // which drops the module's reference to this one.
    for_each_module(l, module, [=](logmodule* m) {
        use_stream(stream);
        set_stream(m, stream);
    });
    release_stream(stream);
    return 0;
}

static bool is_empty(const char* args) {
    return args == nullptr || *args == '\0';
}

int logParseMsgLevelsEx(const char* args, char* errbuf, size_t errlen,
                        int (*warn_deprecated)(const char*)) {
    if (!is_empty(args))
        return log_parse(args, set_msglevel, warn_deprecated, errbuf, errlen);
    for_each_module(nullptr, LOG_ALL_MODULES, [](logmodule* m) {
        if (m->is_default)
            store_word(m->pMsgLevel, MSG_INFO);
    });
    return 0;
}

int logParseSanityLevelsEx(const char* args, char* errbuf, size_t errlen,
                           int (*warn_deprecated)(const char*)) {
    if (!is_empty(args))
        return log_parse(args, set_sanitylevel, warn_deprecated, errbuf, errlen);
    _log_set_sanitylevel(nullptr, 0, SANITY_CHECK);
    return 0;
}

int logParseLogFilesEx(const char* args, char* errbuf, size_t errlen,
                       int (*warn_deprecated)(const char*)) {
    if (!is_empty(args))
        return log_parse(args, set_logfile, warn_deprecated, errbuf, errlen);
    return 0;
}
