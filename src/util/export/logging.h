// Logging operations: registration, levels and decorations, printing, option strings.
//
// A component declares itself through logging_static_gen.h, which calls most of these functions for
// it. Unless said otherwise any thread may call a function at any time, also while others print.
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

// Registers a component's logger: from now on its modules write to standard error, and options and
// walks reach them.
//
// A module that is declared as linked follows the newest module of that name or alias among the
// components registered before. It takes over the levels and the stream of that module, but not its
// decorations; from then on an option that names the module reaches both. When there is no such
// module, "util" prints an error and the module stays an ordinary one, also when such a module is
// registered later. A retired name is no target.
//
// After that the logger gets the decorations that logParseLogDecorations() received last, if any.
// As with every setting of decorations, the modules that it is linked to get them, too.
//
// The component's start-up code calls it once per logger; a second call for the same logger does
// nothing. The logger must stay in place for the life of the process: the shared object that holds
// it is kept loaded, also when it is closed. A logger on the heap must not be freed.
//
// "util" warns of a name that two modules of the logger have, of names that options cannot reach
// (with a comma or '='), and of names that options may misread (with '>' or a quote in front).
void _log_add_logger(logger* log);

// Selecting modules.
//
// Wherever a function takes (`l`, `module`), a null `l` selects every module of every registered
// logger and `module` is ignored; LOG_ALL_MODULES selects every module of `l`; any other value
// is the index of one module and is not checked. Each selected module brings along the modules
// that it is linked to.

// Continues a walk over modules. The library's operations start their walks themselves; this
// function and logiter_destroy() are for components of the virtual machine that receive a walk in
// progress.
//
//   pm  receives the next module
//
// Returns false and leaves `*pm` untouched when the walk is over. The order is: loggers newest
// first, modules by index, and after each module the modules that it is linked to. A module may
// occur more than once.
bool logiter_next(logiter* iter, logmodule** pm);

// Ends a walk and lets loggers register again. Call it exactly once per walk, also for a walk that
// stops early, on the thread that started it.
void logiter_destroy(logiter* iter);

// Sets the message level of the selected modules.
void _log_set_msglevel(logger* l, LogModule module, MsgLevel level);

// Sets the sanity level of the selected modules.
void _log_set_sanitylevel(logger* l, LogModule module, SanityLevel level);

// Adds bits to the decorations word of the selected modules. Each word changes in one step, so
// concurrent callers lose no bits.
void _log_set_decorations(logger* l, LogModule module, unsigned int decorations);

// Removes bits from the decorations word of the selected modules. Each word changes in one step.
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

// Sets the message level of every module to the default of its logger.
void logResetMsgLevels(void);

// Sets the sanity level of every module to the default of its logger.
void logResetSanityLevels(void);

// Printing.
//
// These functions print at every level of the module; callers test logEnabled() first. A line is
// the decorations, a space when the decorations word is not zero, the message, and a newline unless
// the message ends with one. A message is cut after 1022 bytes, the decorations after 99 bytes
// (plus the logger's max_decoration_size when extended ones are on). A null `fmt` prints the
// decorations and the space only. A conversion that fails ends the message there.
//
// A line reaches the module's stream in one piece and is flushed before the call returns; lines
// of several threads never mix. Nothing is allocated, except the C library's buffer when standard
// output is used for the first time. The thread's last-error value is kept, and "%m" prints it. A
// line to a stream that cannot be written to is lost without a report. A thread is not cancelled
// while the call holds locks. Bits of a decorations word that have no decoration print nothing, and
// a level without a name shows as "?".
//
//   loggers  whose module is meant; its extended decorators apply. Not null, registered.
//   module   a real index
//   level    the message's level, for the level decoration
//   args     the arguments of `fmt`. Where a va_list may be null, as on x86-64, a null list takes
//            `fmt` as plain text; elsewhere "%s" prints one. The caller ends the list and does not
//            use it again.

// Prints a line with the module's own decorations.
void _logforceprintv(logger* loggers, LogModule module, MsgLevel level, const char* fmt,
                     va_list args) __attribute__((format(printf, 4, 0)));

// Prints a line with the given decorations word instead of the module's own.
void _logforceprintdecorationsv(logger* loggers, LogModule module, MsgLevel level, int decorations,
                                const char* fmt, va_list args)
    __attribute__((format(printf, 5, 0)));

// Prints a line with the given decorations word, with the arguments in the call.
void _logforceprintdecorations(logger* loggers, LogModule module, MsgLevel level, int decorations,
                               const char* fmt, ...) __attribute__((format(printf, 5, 6)));

// Writes formatted text into the decorations of a line, for extended decorators.
//
//   buf        where to write
//   bytesLeft  room at `buf`, terminator included. The text is cut to fit and its length is
//              subtracted here. With 0 nothing is written.
//
// Returns the position of the terminator. A conversion that fails ends the text there.
char* log_sprintf(char* buf, size_t* bytesLeft, const char* fmt, ...)
    __attribute__((format(printf, 3, 4)));

// Lists the selected modules, one line each, sorted by name in the order of bytes.
//
//     <tab>gc (collector): level=INFO, decorations=3, sanity=NONE
//
// The parentheses are missing when there is no alias. Decorations are the word in hexadecimal; a
// level without a name shows as "?". In place of a linked module the module that it follows is
// listed, once. Lines are cut after 255 bytes.
//
//   l, module  as above
//   out        where to; not null. Flushed after every line.
//
// Failed writes are ignored. No component can register meanwhile. With 257 registered modules or
// more the call allocates, and prints nothing when memory runs out.
void _log_do_print_moduleinfo(logger* l, LogModule module, log_output out);

// Option strings.
//
// The four option strings of the virtual machine. docs/logging.md has the meaning of their items
// and every message; arguments.h has the grammar of an item. Items take effect one by one: a
// rejected item ends the parse, and those before it stay applied. Loggers that register later get
// the decorations only.
//
//   args             the option string
//   errbuf, errlen   receives the message of a failure, cut to fit and NUL-terminated; its size in
//                    bytes. Null or 0 asks for no message. After a result of 0 its contents are
//                    unspecified.
//   warn_deprecated  called with the advice when a retired name is accepted in place of its new
//                    one; its result is ignored. Null prints the advice as a warning of "util". No
//                    lock is held during the call.
//
// Return 0, or -1 after a failure.

// Sets message levels: "module=level", a bare module for INFO, a bare level for all modules. A null
// or empty string sets the modules that are flagged as default to INFO.
int logParseMsgLevelsEx(const char* args, char* errbuf, size_t errlen,
                        int (*warn_deprecated)(const char*));

// Sets sanity levels: "module=level", a bare module for CHECK, a bare level for all modules. A null
// or empty string sets every module to CHECK.
int logParseSanityLevelsEx(const char* args, char* errbuf, size_t errlen,
                           int (*warn_deprecated)(const char*));

// Sets log files: "module=file", "module=>other" for the stream that the module `other` uses now, a
// bare file for all modules. "stdout" and "stderr" name the standard streams. A null or empty
// string changes nothing. The advice about a retired name behind ">" is always printed.
int logParseLogFilesEx(const char* args, char* errbuf, size_t errlen,
                       int (*warn_deprecated)(const char*));

// Sets the decorations of every module: names separated by commas. The string is remembered for
// loggers that register later. The empty string (null counts as empty) means module, timestamp
// and pid. A component's own decoration is set on that component's modules only; when several
// components have one of that name, on those of the newest.
//
// Returns 0, or -1 for an unknown name or when memory runs out. At an unknown name the names before
// it are set, and the string is still remembered. When the string cannot be remembered, nothing
// changes. After two concurrent calls a module may have decorations of both. May be called while
// the thread holds a stream or walks over modules.
int logParseLogDecorations(const char* args);

// Sets the decorations of the modules of one logger, or of every logger when `the_logger` is null,
// as logParseLogDecorations() does, but does not remember the string.
int apply_log_decorations(logger* the_logger, const char* args);

// Sets the extended decoration `token`, without regard to case, on every module of `l`. Returns
// false when `l` has no such decorator. `token` is not changed.
bool apply_extended_log_decorations(logger* l, char* token);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
