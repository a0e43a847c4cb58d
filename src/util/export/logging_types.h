// The records and enumerations of logging, shared by all of its headers.
//
// Every component owns one `logger`, static data with its modules; docs/logging.md shows how to
// declare it. Components and the library share these records across shared objects, so their layout
// is fixed.
#ifndef UTIL_EXPORT_LOGGING_TYPES_H
#define UTIL_EXPORT_LOGGING_TYPES_H

#include <stdbool.h>
#include <stddef.h>
#include <stdio.h>

// Fixes the enumerations to an unsigned word in C++ as well, so that any word written from
// outside (Java writes levels through buffers) is a value that may be read.
#ifdef __cplusplus
#define LOG_UNSIGNED_ENUM : unsigned int
#define LOG_STATIC_ASSERT(condition, text) static_assert(condition, text)
#else
#define LOG_UNSIGNED_ENUM
#define LOG_STATIC_ASSERT(condition, text) _Static_assert(condition, text)
#endif

// How much a module prints: a message is printed when its level is at most the module's level.
// Levels compare as unsigned values; messages at MSG_QUIET are always printed.
typedef enum MsgLevel LOG_UNSIGNED_ENUM {
    MSG_QUIET,
    MSG_ERROR,
    MSG_WARN,
    MSG_INFO,
    MSG_DEBUG,
    MSG_TRACE,
    MSG_MAX  // count of levels
} MsgLevel;

// How much a module checks itself. The library stores the value; the component acts on it.
typedef enum SanityLevel LOG_UNSIGNED_ENUM {
    SANITY_NONE,
    SANITY_MINIMAL,
    SANITY_CHECK,
    SANITY_DEBUG,
    SANITY_TRACE,
    SANITY_MAX  // count of levels
} SanityLevel;

// Decoration n is the bit of value 1 << n in a decorations word.
enum {
    DECORATION_LEVEL,       // "[WARN ]"
    DECORATION_MODULE,      // "[util   ]"
    DECORATION_TIMESTAMP,   // "[2026-03-29T14:05:09.042+0200]"
    DECORATION_MILLIS,      // milliseconds since 1970, UTC
    DECORATION_NANOS,       // nanoseconds since 1970, UTC
    DECORATION_OSTHREADID,  // the printing thread's id
    DECORATION_PID,         // the process's id
    NUM_STD_DECORATIONS,    // count of standard decorations; extended ones start here

    LOG_EXTENDED_SLOTS = 8  // bits NUM_STD_DECORATIONS to NUM_STD_DECORATIONS + 7
};

// The bit of a decoration, for a module's initial decorations and the decoration operations.
#define LOG_DECORATION_BIT(decoration) (1U << (decoration))

// The index of a module in its logger, or LOG_ALL_MODULES. Each component has its own enumerators,
// so functions take the integer.
typedef int LogModule;
enum { LOG_ALL_MODULES = -1 };

// What happens when an option uses the retired name of a module.
typedef enum failhow LOG_UNSIGNED_ENUM {
    OBSOLETE_FAIL,  // the option is rejected with advice
    OBSOLETE_WARN   // the advice is printed and the new name used
} failhow;

// What a module writes to.
typedef FILE* log_output;

// Writes one extended decoration of a line.
//
//   position   where to write
//   bytesLeft  room at `position`, terminator included; never 0. The function writes at most
//              *bytesLeft - 1 bytes of text and a NUL, and subtracts the length of the text;
//              log_sprintf() does both.
//
// Returns the position after the text, at its terminator. A position or a count outside the room is
// moved back into it, and the line is cut there. It is called on the printing thread before any
// lock is taken, so several threads may run it concurrently.
typedef char* (*log_decorator)(char* position, size_t* bytesLeft);

typedef struct log_extended_decorator {
    const char* name;    // the word that turns it on in a decorations option
    log_decorator func;  // null in an empty slot
} log_extended_decorator;

// A retired module name. Its replacement may be retired, too. A circle of retired names counts as a
// missing replacement.
typedef struct logobsolete {
    const char* old_name;
    const char* new_name;        // null when nothing replaces it
    const LogModule new_module;  // the replacement's index; for readers of the table only
    const MsgLevel new_level;    // the level that the advice names
    failhow how;
} logobsolete;

typedef struct logger logger;
typedef struct logmodule logmodule;

// A named channel of messages.
struct logmodule {
    log_output out;        // standard error from registration on; guarded by `lock`
    const char* names[2];  // the name, and an alias or null
    volatile int lock;     // lock word: shared while a line is written, exclusive to replace `out`
    MsgLevel* pMsgLevel;   // this module's entry in its component's _logLevels
    SanityLevel* pSanityLevel;    // this module's entry in its component's _sanityLevels
    logger* log;                  // the owner
    logmodule* link;              // the module that a linked module follows, or null
    unsigned int is_default : 1;  // an empty message-level option raises it to MSG_INFO
    unsigned int is_linked : 1;   // follows an earlier component's module of the same name
    unsigned int decorations;     // decorations word
};

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"  // a trailing array that C++ accepts, too

// A component's modules. It is registered once, when the component is loaded, and never removed.
struct logger {
    logger* next;                      // the next older registered logger
    const size_t num_loggers;          // modules in `loggers`
    const size_t max_decoration_size;  // bytes that extended decorations may add to a line
    const size_t num_obsoletes;        // rows in `obsoletes`
    const logobsolete* obsoletes;      // retired module names; null when there are none
    MsgLevel msg_default;              // what logResetMsgLevels() restores
    SanityLevel sanity_default;        // what logResetSanityLevels() restores
    log_extended_decorator extended_decorators[LOG_EXTENDED_SLOTS];
    logmodule loggers[];  // entry i is the module of index i
};

#pragma GCC diagnostic pop

LOG_STATIC_ASSERT(sizeof(MsgLevel) == 4 && sizeof(SanityLevel) == 4 && sizeof(failhow) == 4 &&
                      sizeof(LogModule) == 4,
                  "levels are 32-bit words");
LOG_STATIC_ASSERT(sizeof(logobsolete) == 32 && offsetof(logobsolete, new_module) == 16 &&
                      offsetof(logobsolete, new_level) == 20 && offsetof(logobsolete, how) == 24,
                  "layout of logobsolete");
LOG_STATIC_ASSERT(sizeof(logmodule) == 72 && offsetof(logmodule, names) == 8 &&
                      offsetof(logmodule, lock) == 24 && offsetof(logmodule, pMsgLevel) == 32 &&
                      offsetof(logmodule, pSanityLevel) == 40 && offsetof(logmodule, log) == 48 &&
                      offsetof(logmodule, link) == 56 && offsetof(logmodule, decorations) == 68,
                  "layout of logmodule");
LOG_STATIC_ASSERT(sizeof(log_extended_decorator) == 16 &&
                      offsetof(log_extended_decorator, func) == 8,
                  "layout of log_extended_decorator");
LOG_STATIC_ASSERT(sizeof(logger) == 176 && offsetof(logger, num_loggers) == 8 &&
                      offsetof(logger, num_obsoletes) == 24 && offsetof(logger, obsoletes) == 32 &&
                      offsetof(logger, msg_default) == 40 &&
                      offsetof(logger, sanity_default) == 44 &&
                      offsetof(logger, extended_decorators) == 48 &&
                      offsetof(logger, loggers) == 176,
                  "layout of logger");

// A walk over modules, see logiter_next().
typedef struct logiter {
    logger* log;      // the logger being walked
    logmodule* link;  // the next module along the current chain of links, or null
    bool all;         // walk every registered logger
    size_t low;       // next module index
    size_t high;      // end of the index range
} logiter;

#endif
