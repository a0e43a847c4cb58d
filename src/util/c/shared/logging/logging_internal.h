// What the files of logging share, grouped by the file that defines it.
//
// Locks, in the order in which a thread may take them:
//
//   loggers_lock    the chain of loggers and the count of modules. Held shared by every walk,
//                   exclusively only while a logger is linked in. A thread may take it shared
//                   again while it holds it shared.
//   a module's lock its stream. Shared while a line is written, exclusive while it is replaced.
//   streams_lock    the list of open log files, private to streams.cpp.
//
// The remembered decorations have another lock, private to decorations.cpp. No other lock is taken
// while it is held.
//
// Calls go one way: options; registration and listing; decorations and lookup; registry, streams
// and print. Only registration and lookup's callers print messages of their own, on the module
// "util".
//
// Levels and decoration words are single words that change at any time without a lock.
#ifndef UTIL_C_SHARED_LOGGING_LOGGING_INTERNAL_H
#define UTIL_C_SHARED_LOGGING_LOGGING_INTERNAL_H

// The library is a component of its own framework, with one module.
#define LOG_MODULES(MODULE) MODULE(DBG_UTIL, "util", NULL, 0, LOG_LEVEL_AND_MODULE)
#include "util/export/logging_static_gen.h"

#include <atomic>

extern "C" {

// registry.cpp

extern volatile int loggers_lock;

// The newest logger. The chain behind a logger never changes after the logger became the head, so a
// lookup may follow it without the lock: it loads the head with acquire and so sees all that was
// written before the head was stored with release. Under the lock a relaxed load is enough.
extern std::atomic<logger*> all_loggers;

// The number of modules of all registered loggers. Grows under loggers_lock, before a new logger is
// in the chain. May be read relaxed: a list with room for too few modules leaves some out.
extern std::atomic<size_t> num_modules;

// Starts a walk over the modules that (`l`, `m`) selects. Takes loggers_lock shared until
// logiter_destroy().
void logiter_init(logiter* iter, logger* l, LogModule m);

// decorations.cpp

// Gives a logger that has just joined the chain the decorations of the latest option, if there was
// one. Takes loggers_lock shared. Allocates: without memory the logger keeps its own decorations.
void apply_remembered_decorations(logger* log);

// format.cpp

// Formats into a buffer of `max` bytes, at least 1, and returns the position of the terminator.
// With a null `args`, `fmt` is plain text; `args` is a pointer because a va_list may be a record.
// The list is used up; its owner calls va_end().
char* log_vsnprintf(char* buf, size_t max, const char* fmt, va_list* args);

// Writes a decimal number of at least `min_digits` digits, zero-filled, in at most NUMBER_BYTES
// and without a terminator. Returns its end.
char* put_number(char* position, s8 value, int min_digits);
constexpr size_t NUMBER_BYTES = 20;

// print.cpp

// Builds one line for module `m` with the decorations word `d` and writes it. `args` may be null:
// `fmt` is then plain text. Takes the module's lock shared.
void logprint(logger* loggers, logmodule* m, int d, MsgLevel level, const char* fmt, va_list* args);

// streams.cpp

// The stream of a file, with one reference for the caller. The file is opened unless a record
// already covers it. "stdout" and "stderr" give the standard streams, which are not counted. Null
// when the file cannot be opened or memory is exhausted.
log_output register_stream(const char* filename);

// Adds a reference to a stream.
void use_stream(log_output f);

// Drops a reference to a stream, closing the file at zero.
void release_stream(log_output f);

// Makes `to` write to `f`, for which the caller has added a reference, and drops the reference to
// the stream before it. Takes the module's lock exclusively.
void set_stream(logmodule* to, log_output f);

// Makes `to` write to what `from` writes to at this moment. Takes both modules' locks in turn.
void redirect_logmodule(logmodule* from, logmodule* to);

// lookup.cpp

// Explains a failure in the caller's buffer, when there is one; always -1, so that a parser
// returns it.
int log_fail(char* errbuf, size_t errlen, const char* fmt, ...)
    __attribute__((format(printf, 3, 4)));

// Called with the advice when a retired name is accepted; its result is ignored.
using deprecation_warner = int(const char* advice);

// Finds a module by name or alias, newest logger first.
//
//   warn          called for each retired name, which then leads to its replacement; null when
//                 retired names mean nothing
//   ppl, pmindex  receive the module's logger and index; untouched when there is none
//   errbuf        may be null; says why the name was not found, or that it is retired
//
// Takes no lock.
bool find_logmodule(const char* name, deprecation_warner* warn, logger** ppl, size_t* pmindex,
                    char* errbuf, size_t errlen);

// listing.cpp

constexpr size_t MODULES_WITHOUT_HEAP = 256;

// Room for a pointer to each module that is registered when the list is made.
struct ModuleList {
    size_t capacity;
    size_t count;
    logmodule** modules;
    logmodule* few[MODULES_WITHOUT_HEAP];
};

// Makes an empty list; false when there is no memory. Not to be called with loggers_lock held.
bool module_list_init(ModuleList* list);

// Frees what module_list_init() has allocated.
void module_list_destroy(ModuleList* list);

// Sorts the modules by the bytes of their names.
void module_list_sort(ModuleList* list);

}  // extern "C"

// The names that options and lines use.
inline constexpr const char* msglevel_names[MSG_MAX] = {"QUIET", "ERROR", "WARN",
                                                        "INFO",  "DEBUG", "TRACE"};
inline constexpr const char* sanitylevel_names[SANITY_MAX] = {"NONE", "MINIMAL", "CHECK", "DEBUG",
                                                              "TRACE"};
inline constexpr const char* decoration_names[NUM_STD_DECORATIONS] = {
    "LEVEL", "MODULE", "TIMESTAMP", "MILLIS", "NANOS", "OSTHREADID", "PID"};

// Levels and decoration words change while other threads read them. Relaxed accesses are enough on
// every processor: each value stands alone, and a thread that sees a new one needs no other data
// written before it. Tables of decorators are constant, and streams have locks.
template <typename T>
inline void store_word(T* word, T value) {
    __atomic_store_n(word, value, __ATOMIC_RELAXED);
}

template <typename T>
inline T load_word(const T* word) {
    return __atomic_load_n(word, __ATOMIC_RELAXED);
}

// Calls `action` with every module that (`l`, `module`) selects, links included.
template <typename Action>
inline void for_each_module(logger* l, LogModule module, Action action) {
    logiter iter;
    logiter_init(&iter, l, module);
    logmodule* m;
    while (logiter_next(&iter, &m))
        action(m);
    logiter_destroy(&iter);
}

#endif
