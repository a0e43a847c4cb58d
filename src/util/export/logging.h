// Logging operations: registration, levels and decorations, printing, option strings.
//
// A component seldom calls these by hand: it declares itself through logging_static_gen.h and
// prints after the test of logging_funcs.h. Unless said otherwise a function may be called from
// any thread at any time, also while others print.
#ifndef UTIL_EXPORT_LOGGING_H
#define UTIL_EXPORT_LOGGING_H

#include "util/export/logging_types.h"

#include <stdarg.h>
#include <stdbool.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

// Registers a component's logger: its modules write to standard error from now on, and options
// and walks see them.
//
// A module declared as linked is tied to the newest module of its name, or with its name as alias,
// of a component registered before: it takes over that module's levels and stream, not its
// decorations, and from then on a setting of the name reaches both. When there is none, "util"
// says so at level ERROR and the module stays an ordinary one, whatever registers later. A retired
// name is no target.
//
// At last the logger gets the decorations that logParseLogDecorations() was last given, if any; as
// with every setting of decorations, the modules that it is linked to get them, too.
//
// Called once per logger by the component's start-up code; calling it again for the same logger
// does nothing. The logger must stay in place for the life of the process: the shared object that
// holds it is kept loaded, also when it is closed; one on the heap must not be freed.
//
// At level WARN "util" tells of names that two modules of the logger have, and of names that
// options cannot reach, with a comma or '=', or misread in places, with '>' or a quote in front.
void _log_add_logger(logger* log);

// Selecting modules.
//
// Wherever a function takes (`l`, `module`), a null `l` selects every module of every registered
// logger and `module` is ignored; LOG_ALL_MODULES selects every module of `l`; any other value
// is the index of one module and is not checked. Each selected module brings along the modules
// that it is linked to.

// Goes on with a walk. The library's operations start their walks themselves; these two functions
// are for components of the virtual machine that are handed a walk in progress.
//
//   pm  receives the next module
//
// Returns false, with `*pm` untouched, when the walk is over. The order is: loggers newest first,
// modules by index, and after each module those it is linked to. A module may come up more than
// once.
bool logiter_next(logiter* iter, logmodule** pm);

// Ends a walk and lets loggers register again. Exactly once per walk, on the thread that started
// it, also when the walk is abandoned.
void logiter_destroy(logiter* iter);

// Sets the message level of the selected modules.
void _log_set_msglevel(logger* l, LogModule module, MsgLevel level);

// Sets the sanity level of the selected modules.
void _log_set_sanitylevel(logger* l, LogModule module, SanityLevel level);

// Adds bits to the decorations word of the selected modules. Each word changes in one step, so
// concurrent callers lose no bits.
void _log_set_decorations(logger* l, LogModule module, unsigned int decorations);

// Takes bits away from the decorations word of the selected modules, likewise.
void _log_clear_decorations(logger* l, LogModule module, unsigned int decorations);

// The decorations word of one module. `l` is not null and `module` a real index.
unsigned int _log_get_decorations(logger* l, LogModule module);

// The names of one module: its name and, when it has one, its alias.
//
//   l, module  one module: not null, a real index
//   pcount     receives the number of names, 1 or 2
//
// Returns the names, which belong to the module.
const char** _log_get_aliases(logger* l, LogModule module, int* pcount);

// Gives every module of every logger its own logger's default message level.
void logResetMsgLevels(void);

// Gives every module of every logger its own logger's default sanity level.
void logResetSanityLevels(void);

// Printing.
//
// These functions print whatever the module's level is; callers test logEnabled() first. A line
// is the module's decorations, a space when the decorations word is not zero, the message, and a
// newline unless the message ends with one. Messages are cut after 1022 bytes, the decorations
// after 99 bytes (plus the logger's max_decoration_size when extended ones are on). A null `fmt`
// prints the decorations and the space only. A conversion that fails ends the message there.
//
// A line reaches the module's stream in one piece and is flushed before the call returns; lines
// of several threads never mix. Nothing is allocated (except the C library's buffer of a standard
// output that nobody has used before), the thread's last-error value is kept, and a stream that
// cannot be written to loses the line silently. A thread is not cancelled within the call's locks.
// "%m" prints the error of the caller. Bits of a decorations word that
// have no decoration print nothing, and a level that has no name shows as "?".
//
//   loggers  whose module is meant; its extended decorators apply. Not null, registered.
//   module   a real index
//   level    the message's level, for the level decoration
//   args     the arguments of `fmt`. Where a va_list may be null, as on x86-64, a null list takes
//            `fmt` as plain text; elsewhere "%s" prints one. The caller ends the list and does not
//            use it again.

// Prints with the module's own decorations.
void _logforceprintv(logger* loggers, LogModule module, MsgLevel level, const char* fmt,
                     va_list args) __attribute__((format(printf, 4, 0)));

// Prints with the given decorations word instead.
void _logforceprintdecorationsv(logger* loggers, LogModule module, MsgLevel level, int decorations,
                                const char* fmt, va_list args)
    __attribute__((format(printf, 5, 0)));

// The same with the arguments in the call.
void _logforceprintdecorations(logger* loggers, LogModule module, MsgLevel level, int decorations,
                               const char* fmt, ...) __attribute__((format(printf, 5, 6)));

// Writes formatted text into the decorations of a line, for extended decorators.
//
//   buf        where to write
//   bytesLeft  room at `buf`, terminator included; the length of the text, which is cut to fit,
//              is subtracted. With 0 nothing is written.
//
// Returns the position of the terminator. A conversion that fails ends the text where it stands.
char* log_sprintf(char* buf, size_t* bytesLeft, const char* fmt, ...)
    __attribute__((format(printf, 3, 4)));

// Lists the selected modules, sorted by name in the order of bytes, one line for each:
//
//     <tab>gc (collector): level=INFO, decorations=3, sanity=NONE
//
// without the parentheses when there is no alias. Decorations are the word in hexadecimal; a level
// that has no name shows as "?". A linked module is not listed, but the one that it leads to is,
// once. Lines are cut after 255 bytes.
//
//   l, module  as above
//   out        where to; not null. Flushed after every line.
//
// Failed writes are ignored. No component can register meanwhile. From 257 registered modules on
// the call allocates, and writes nothing when it cannot.
void _log_do_print_moduleinfo(logger* l, LogModule module, log_output out);

// Option strings.
//
// The four option strings of the virtual machine; docs/logging.md has their grammar and every
// message. They act at once, item by item: a rejected item ends the parse, those before it stay
// applied. Loggers that register later are not affected, but for the decorations.
//
//   args             the option string
//   errbuf, errlen   where a failure is explained, and its size in bytes: always terminated and
//                    cut to fit. Null or 0 for no explanation. Its content means nothing after a
//                    result of 0.
//   warn_deprecated  called with the advice when a retired name is accepted under its new one;
//                    its result is ignored. Null prints the advice as a warning of "util".
//                    It is called without any lock held.
//
// Return 0, or -1 after a failure.

// Message levels: "module=level", a bare module for INFO, a bare level for all modules. A null or
// empty string raises the modules that are flagged as default to INFO.
int logParseMsgLevelsEx(const char* args, char* errbuf, size_t errlen,
                        int (*warn_deprecated)(const char*));

// Sanity levels: likewise, with CHECK for a bare module. A null or empty string sets every module
// to CHECK.
int logParseSanityLevelsEx(const char* args, char* errbuf, size_t errlen,
                           int (*warn_deprecated)(const char*));

// Log files: "module=file", "module=>other module" for the stream that the other one uses now, a
// bare file for all modules. "stdout" and "stderr" name the standard streams. A null or empty
// string changes nothing. Advice about a retired name behind ">" is always printed.
int logParseLogFilesEx(const char* args, char* errbuf, size_t errlen,
                       int (*warn_deprecated)(const char*));

// Decorations of every module, now and, remembered, of loggers that register later: names
// separated by commas. The empty string (null counts as empty) asks for module, timestamp and
// pid. A component's own decoration is set on that component's modules only; of several
// components with one of that name, on those of the newest.
//
// Returns 0; -1 for an unknown name (those before it are set, and the string is remembered all
// the same), or when memory runs out. When the string cannot be remembered, nothing changes. Of two
// calls at once each sets its own, and the words may end up with some of both. May be called
// while the thread holds a stream or walks over modules.
int logParseLogDecorations(const char* args);

// The same for the modules of one logger, or of every logger when `the_logger` is null, without
// remembering it.
int apply_log_decorations(logger* the_logger, const char* args);

// Sets the extended decoration named `token`, case ignored, on every module of `l`. Returns
// false when `l` has no such decorator. `token` is only read.
bool apply_extended_log_decorations(logger* l, char* token);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
