// How a component declares itself to logging.
//
// A component is one linked object: a program or a shared library. It has one header of its own
// that describes its modules in macros and then includes this one. All of its sources include that
// header; exactly one of them, in C or C++, defines LOG_DEFINE_COMPONENT first and so contains the
// data and the start-up code:
//
//     // gc_log.h
//     #define LOG_MODULES(M) M(DBG_GC, "gc", "collector", LOG_IS_DEFAULT, LOG_LEVEL_AND_MODULE)
//     #include "util/export/logging_static_gen.h"
//
//     // gc_log.c
//     #define LOG_DEFINE_COMPONENT
//     #include "gc_log.h"
//
//     // anywhere in the component
//     logPrint(DBG_GC, MSG_DEBUG, "freed %zu bytes", freed);
//
// Only LOG_MODULES is required. The descriptions:
//
//   LOG_MODULES(MODULE)               MODULE(enumerator, name, alias, flags, decorations) per
//                                     module: the name is a string literal, the alias may be
//                                     NULL, the flags are 0, LOG_IS_DEFAULT, LOG_IS_LINKED or
//                                     both, and the decorations are a word of
//                                     LOG_DECORATION_BIT()s to start with
//   LOG_OBSOLETES(OBSOLETE)           OBSOLETE(old name, new name, enumerator, level, how) per
//                                     retired name that has a replacement; how is OBSOLETE_FAIL
//                                     or OBSOLETE_WARN. The replacement may be another
//                                     component's: the enumerator is then LOG_ALL_MODULES.
//                                     OBSOLETE(old name, NULL, LOG_ALL_MODULES, MSG_QUIET,
//                                     OBSOLETE_FAIL) for one that has none
//   LOG_EXTENDED_DECORATORS(DECORATOR)  DECORATOR(enumerator, name, function) per decoration of
//                                     the component's own, at most 8; the enumerator becomes
//                                     its decoration number and the functions must be declared
//                                     before this header is included
//   LOG_MAX_DECORATION_SIZE           the bytes that extended decorations may add to a line;
//                                     required with them
//   LOG_MSG_DEFAULT                   message level at start and after a reset; MSG_WARN
//   LOG_SANITY_DEFAULT                sanity level at start and after a reset; SANITY_NONE
//
// The definitions have the same names in every component and are hidden in it, so a component never
// uses those of another. C++ inline functions with log statements that two components share need
// -fvisibility-inlines-hidden; otherwise both components run the copy of one of them. Link with the
// utility library and its platform layer. A registered component stays loaded; link a shared
// object with "-z nodelete", too.
#ifndef UTIL_EXPORT_LOGGING_STATIC_GEN_H
#define UTIL_EXPORT_LOGGING_STATIC_GEN_H

#include "osal/export/osal_threads.h"
#include "util/export/logging.h"
#include "util/export/logging_funcs.h"

#ifdef __cplusplus
#include <pthread.h>
#endif

#ifndef LOG_MODULES
#define LOG_MODULES(MODULE)
#endif
#ifndef LOG_MSG_DEFAULT
#define LOG_MSG_DEFAULT MSG_WARN
#endif
#ifndef LOG_SANITY_DEFAULT
#define LOG_SANITY_DEFAULT SANITY_NONE
#endif
#ifndef LOG_OBSOLETES
#define LOG_OBSOLETES(OBSOLETE)
#endif
#ifndef LOG_EXTENDED_DECORATORS
#define LOG_EXTENDED_DECORATORS(DECORATOR)
#ifdef LOG_MAX_DECORATION_SIZE
#error "LOG_MAX_DECORATION_SIZE is set, but there are no LOG_EXTENDED_DECORATORS"
#endif
#define LOG_MAX_DECORATION_SIZE 0
#elif !defined(LOG_MAX_DECORATION_SIZE)
#error "LOG_EXTENDED_DECORATORS need LOG_MAX_DECORATION_SIZE, the bytes they may add to a line"
#endif

// Flags of a module. The values are not valid in a decorations word, so exchanged columns do not
// compile.
enum {
    LOG_IS_DEFAULT = 0x10000,  // an empty message-level option raises it to MSG_INFO
    LOG_IS_LINKED = 0x20000    // follows the module of the same name of a component loaded earlier
};

// The usual initial decorations.
#define LOG_LEVEL_AND_MODULE \
    (LOG_DECORATION_BIT(DECORATION_LEVEL) | LOG_DECORATION_BIT(DECORATION_MODULE))

// The component's modules, numbered from 0.
#define LOG_ENUMERATOR(enumerator, name, alias, flags, decorations) enumerator,
enum { LOG_MODULES(LOG_ENUMERATOR) NumLogModules };
#undef LOG_ENUMERATOR

// The component's extended decorations, numbered after the standard ones.
#define LOG_ENUMERATOR(enumerator, name, function) enumerator,
enum {
    LOG_LAST_STD_DECORATION = NUM_STD_DECORATIONS - 1,
    LOG_EXTENDED_DECORATORS(LOG_ENUMERATOR) LOG_END_DECORATIONS
};
#undef LOG_ENUMERATOR

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(hidden)

// The component's logger, registered when the component is loaded.
extern logger _loggers;

// The component's static initialiser: registers _loggers. The dynamic linker calls it once, at
// load, before the component's ordinary constructors, which may print.
__attribute__((constructor(102))) void _siloginit(void);

// Prints a line at every level of the module, see _logforceprintv(). logPrint() calls it when its
// test succeeds.
//
//   loggers  the component's own _loggers
void _logforceprint(logger* loggers, LogModule module, MsgLevel level, const char* fmt, ...)
    __attribute__((format(printf, 4, 5)));

// The log statement: prints a line to a module of this component when the module's level admits it.
//
//   logPrint(module, level, fmt, ...);
//
//   module  a real index, evaluated once
//   level   a MsgLevel, evaluated once
//   fmt     a format as printf() takes it, checked by the compiler, and its arguments, which are
//           evaluated only when the line is printed
//
// It is one statement, also alone in a branch of `if`. While the level is off it costs one load and
// one comparison; the compiler moves the call out of the way. May be used on any thread.
#define logPrint(module, level, ...) LOG_PRINT(__COUNTER__, module, level, __VA_ARGS__)
#define LOG_PRINT(n, module, level, ...) LOG_PRINT_AS(n, module, level, __VA_ARGS__)
#define LOG_PRINT_AS(n, module, level, ...)                                        \
    do {                                                                           \
        const LogModule log_module_##n = (module);                                 \
        const MsgLevel log_level_##n = (level);                                    \
        if (__builtin_expect(logEnabled(log_module_##n, log_level_##n), false))    \
            _logforceprint(&_loggers, log_module_##n, log_level_##n, __VA_ARGS__); \
    } while (0)

// Holds a module's stream for direct writing: it is neither replaced nor closed until
// _log_release_stream(), which the same thread calls soon. Several threads may hold a stream. A
// hold excludes options, not other writers, whose lines may come in between; flockfile() excludes
// those, too. Meanwhile this thread may print to the module and set levels and decorations. It must
// not parse log-file options or load a component, because both may wait for the hold. A thread that
// may be cancelled turns cancellation off around the hold. `module` is a real index.
FILE* _log_acquire_stream(logger* l, LogModule module);

// Releases the stream that _log_acquire_stream() returned for the same module.
void _log_release_stream(logger* l, LogModule module, FILE* f);

// Lists modules with their levels and decorations, see _log_do_print_moduleinfo(): of the
// component's own _loggers, or of every component when `l` is null.
static inline void _log_print_moduleinfo(logger* l, LogModule module, FILE* f) {
    _log_do_print_moduleinfo(l, module, f);
}

#ifdef __cplusplus
}

// Holds the stream of a module of this component and the stream's own lock, so that a block of
// direct writes stays together:
//
//     {
//         LogStream out(DBG_GC);
//         for (const Region& r : regions)
//             fprintf(out, "%p %zu\n", r.start, r.size);
//     }
//
// The destructor flushes the stream; the thread is not cancelled before. Meanwhile the lines of
// other threads to this stream wait, also those of other modules that share it. This thread may
// print to modules with this stream and set levels and decorations. It must not print to other
// streams, hold a second LogStream, parse log-file options or load a component: that can deadlock.
// It must not fork: the C library leaves a stream lock that the forking thread holds unusable in
// the child.
class LogStream {
  public:
    explicit LogStream(LogModule module)
        : cancelable_(turn_cancellation_off()),
          module_(module),
          stream_(_log_acquire_stream(&_loggers, module)) {
        flockfile(stream_);
    }
    ~LogStream() {
        fflush(stream_);
        funlockfile(stream_);
        _log_release_stream(&_loggers, module_, stream_);
        pthread_setcancelstate(cancelable_, NULL);
    }
    LogStream(const LogStream&) = delete;
    LogStream& operator=(const LogStream&) = delete;

    operator FILE*() const {
        return stream_;
    }

  private:
    static int turn_cancellation_off() {
        int before;
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before);
        return before;
    }

    const int cancelable_;
    const LogModule module_;
    FILE* const stream_;
};
#endif
#pragma GCC visibility pop

#endif

#if defined(LOG_DEFINE_COMPONENT) && !defined(LOG_COMPONENT_DEFINED)
#define LOG_COMPONENT_DEFINED

// Checks of the description, one per row. The empty literal in front of a name admits only string
// literals.
//
// LOG_DECORATION_BIT() makes unsigned words, and decoration numbers are int: for an unsigned word
// "word * 0 - 1" is positive. The text of the argument tells the number 0 from the word 0.
// LOG_IS_FUNCTION() is true for a value that converts to a decorator and is no null pointer
// constant.
#define LOG_TEXT_OF(...) #__VA_ARGS__
#define LOG_TEXT(...) LOG_TEXT_OF(__VA_ARGS__)
#define LOG_IS_WORD(decorations) \
    ((decorations)*0 - 1 > 0 ||  \
     ((decorations) == 0 && sizeof LOG_TEXT(decorations) <= sizeof "(0)"))
#ifdef __cplusplus
#define LOG_IN_RANGE(value, end) (static_cast<unsigned>(value) < static_cast<unsigned>(end))
char (&log_kind_of(log_decorator))[2];
char (&log_kind_of(decltype(nullptr)))[1];
char (&log_kind_of(int))[1];
char (&log_kind_of(long))[1];
#define LOG_IS_FUNCTION(function) (sizeof log_kind_of(function) == 2)
#else
#define LOG_IN_RANGE(value, end) ((unsigned)(value) < (unsigned)(end))
#define LOG_IS_FUNCTION(function) _Generic((function), log_decorator : 1, default : 0)
#endif
#define LOG_CHECK_MODULE(enumerator, name, alias, flags, decorations)                      \
    LOG_STATIC_ASSERT(sizeof("" name) > 1, "module " #enumerator " needs a name");         \
    LOG_STATIC_ASSERT(((flags) & ~(LOG_IS_DEFAULT | LOG_IS_LINKED)) == 0,                  \
                      "module " #enumerator                                                \
                      " has flags other than LOG_IS_DEFAULT, LOG_IS_LINKED");              \
    LOG_STATIC_ASSERT(((decorations) >> LOG_END_DECORATIONS) == 0,                         \
                      "module " #enumerator " starts with decorations that do not exist"); \
    LOG_STATIC_ASSERT(LOG_IS_WORD(decorations),                                            \
                      "module " #enumerator " has decorations without LOG_DECORATION_BIT()");
#define LOG_CHECK_OBSOLETE(old_name, new_name, enumerator, level, how)                 \
    LOG_STATIC_ASSERT(sizeof("" old_name) > 1, "a retired module needs its old name"); \
    LOG_STATIC_ASSERT(LOG_IN_RANGE((enumerator) + 1, NumLogModules + 1),               \
                      "retired module " #old_name ": no such replacement");            \
    LOG_STATIC_ASSERT(LOG_IN_RANGE(level, MSG_MAX),                                    \
                      "retired module " #old_name ": no such level");                  \
    LOG_STATIC_ASSERT(LOG_IN_RANGE(how, OBSOLETE_WARN + 1),                            \
                      "retired module " #old_name ": fail or warn?");
#define LOG_CHECK_DECORATOR(enumerator, name, function)                                \
    LOG_STATIC_ASSERT(sizeof("" name) > 1, "decoration " #enumerator " needs a name"); \
    LOG_STATIC_ASSERT(LOG_IS_FUNCTION(function), "decoration " #enumerator " needs a function");

LOG_MODULES(LOG_CHECK_MODULE)
LOG_OBSOLETES(LOG_CHECK_OBSOLETE)
LOG_EXTENDED_DECORATORS(LOG_CHECK_DECORATOR)
LOG_STATIC_ASSERT(NumLogModules > 0, "LOG_MODULES(MODULE) lists at least one module");
LOG_STATIC_ASSERT(LOG_END_DECORATIONS + 0 <= NUM_STD_DECORATIONS + LOG_EXTENDED_SLOTS,
                  "a component has at most 8 extended decorators");
LOG_STATIC_ASSERT(LOG_END_DECORATIONS + 0 == NUM_STD_DECORATIONS + 0 || LOG_MAX_DECORATION_SIZE > 0,
                  "extended decorators need room in the line");
LOG_STATIC_ASSERT(LOG_MAX_DECORATION_SIZE <= 65536, "lines are built on the stack");
LOG_STATIC_ASSERT(LOG_IN_RANGE(LOG_MSG_DEFAULT, MSG_MAX), "LOG_MSG_DEFAULT is not a message level");
LOG_STATIC_ASSERT(LOG_IN_RANGE(LOG_SANITY_DEFAULT, SANITY_MAX),
                  "LOG_SANITY_DEFAULT is not a sanity level");
#undef LOG_CHECK_MODULE
#undef LOG_CHECK_OBSOLETE
#undef LOG_CHECK_DECORATOR
#undef LOG_TEXT_OF
#undef LOG_TEXT
#undef LOG_IS_WORD
#undef LOG_IN_RANGE
#undef LOG_IS_FUNCTION

#ifdef __cplusplus
extern "C" {
#endif

#define LOG_ROW(enumerator, name, alias, flags, decorations) LOG_MSG_DEFAULT,
MsgLevel _logLevels[NumLogModules] = {LOG_MODULES(LOG_ROW)};
#undef LOG_ROW

#define LOG_ROW(enumerator, name, alias, flags, decorations) LOG_SANITY_DEFAULT,
SanityLevel _sanityLevels[NumLogModules] = {LOG_MODULES(LOG_ROW)};
#undef LOG_ROW

// The row of zeroes is there because the table may otherwise be empty; it is not counted.
#define LOG_ROW(old_name, new_name, enumerator, level, how) \
    {old_name, new_name, enumerator, level, how},
static const logobsolete log_obsoletes[] = {
    LOG_OBSOLETES(LOG_ROW){NULL, NULL, LOG_ALL_MODULES, MSG_QUIET, OBSOLETE_FAIL}};
#undef LOG_ROW
enum { LOG_NUM_OBSOLETES = sizeof log_obsoletes / sizeof log_obsoletes[0] - 1 };

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"  // initialising a trailing array
#define LOG_ROW(enumerator, name, function) {name, function},
#define LOG_LOGGER_FIELDS                                                                    \
    NULL, NumLogModules, LOG_MAX_DECORATION_SIZE, LOG_NUM_OBSOLETES,                         \
        LOG_NUM_OBSOLETES > 0 ? log_obsoletes : NULL, LOG_MSG_DEFAULT, LOG_SANITY_DEFAULT, { \
        LOG_EXTENDED_DECORATORS(LOG_ROW)                                                     \
    }
#define LOG_MODULE_ROW(enumerator, name, alias, flags, decorations) \
    {NULL,                                                          \
     {name, alias},                                                 \
     0,                                                             \
     &_logLevels[enumerator],                                       \
     &_sanityLevels[enumerator],                                    \
     &_loggers,                                                     \
     NULL,                                                          \
     ((flags)&LOG_IS_DEFAULT) != 0,                                 \
     ((flags)&LOG_IS_LINKED) != 0,                                  \
     decorations},
#if defined(__clang__) && defined(__cplusplus)
// clang does not initialise a flexible array member in C++. This record has a fixed number of
// modules instead; its name for the linker is _loggers.
#pragma GCC diagnostic ignored "-Wgnu-variable-sized-type-not-at-end"
struct log_component {
    logger head;
    logmodule modules[NumLogModules];
};
extern struct log_component log_component __asm__("_loggers") __attribute__((visibility("hidden")));
struct log_component log_component = {{LOG_LOGGER_FIELDS, {}}, {LOG_MODULES(LOG_MODULE_ROW)}};
LOG_STATIC_ASSERT(offsetof(struct log_component, modules) == offsetof(logger, loggers),
                  "modules start where the trailing array does");
#else
logger _loggers = {LOG_LOGGER_FIELDS, {LOG_MODULES(LOG_MODULE_ROW)}};
#endif
#undef LOG_ROW
#undef LOG_LOGGER_FIELDS
#undef LOG_MODULE_ROW
#pragma GCC diagnostic pop

static inline int loginit(void) {
    _log_add_logger(&_loggers);
    return 0;
}

void _siloginit(void) {
    (void)loginit();
}

void _logforceprint(logger* loggers, LogModule module, MsgLevel level, const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    _logforceprintv(loggers, module, level, fmt, args);
    va_end(args);
}

FILE* _log_acquire_stream(logger* l, LogModule module) {
    rwReadLock(&l->loggers[module].lock);
    return l->loggers[module].out;
}

void _log_release_stream(logger* l, LogModule module, FILE* f) {
    (void)f;
    rwReadUnlock(&l->loggers[module].lock);
}

#ifdef __cplusplus
}
#endif

#endif
