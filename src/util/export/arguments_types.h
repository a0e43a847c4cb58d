// Types of the argument facility.
#ifndef UTIL_EXPORT_ARGUMENTS_TYPES_H
#define UTIL_EXPORT_ARGUMENTS_TYPES_H

#include "osal/export/osal_timing_types.h"
#include "sharedinc/inttype.h"

#include <stdbool.h>
#include <stddef.h>

typedef const char* pcchar;  // a read-only string
typedef void* pvoid;         // an address

// A walk over an option string. It belongs to its caller, is usually a local variable, and owns
// nothing. The text must outlive it and hold no NUL before `end`.
typedef struct ArgIterS {
    const char* args;   // start of the next item, or `end` when the text is used up
    const char* end;    // one past the last character
    char delim;         // what separates items; not '='
    const char* name;   // the current item's name, inside the text, without a terminator
    size_t n_len;       // its length in characters
    const char* value;  // the current item's value, inside the text, without a terminator
    size_t v_len;       // its length in characters; 0 for a bare name
} ArgIterS, ArgIter, *ArgIterP;

// What a value is, named after its C type.
typedef enum ArgType {
    TYPE_bool,
    TYPE_int,
    TYPE_s8,
    TYPE_double,
    TYPE_size_t,
    TYPE_u8,
    TYPE_nanotime,
    TYPE_pcchar,
    TYPE_pvoid
} ArgType;

// A value of any type.
typedef union ArgVal {
    bool vbool;
    int vint;
    s8 vs8;
    double vdouble;
    size_t vsize_t;
    u8 vu8;
    nanotime vnanotime;
    pcchar vpcchar;
    pvoid vpvoid;
} ArgVal;

// Where a variable of any type is.
typedef union ArgPtr {
    bool* pbool;
    int* pint;
    s8* ps8;
    double* pdouble;
    size_t* psize_t;
    u8* pu8;
    nanotime* pnanotime;
    pcchar* ppcchar;
    pvoid* ppvoid;
    const void* pv;  // the same pointer, whatever the type
} ArgPtr;

// How an argument is declared; flags are combined with '|'.
enum {
    _required = 1,  // it must occur
    _multiple = 2   // it may occur more than once
};

// One declared argument. The record belongs to the caller that declares it and must live as long as
// its context is used. The declaring functions fill in everything except `pos`.
typedef struct argInfo {
    struct argInfo* next;  // the one declared after it
    const char* name;
    const char* aliases;  // other names, each followed by a comma, or null
    const char* pos;      // the name under which it was found last, inside the context's `data`
    union {
        const char* desc;  // a description, for the caller's own use
        const char** np;   // of a catch-all: receives the name of an unknown item
    } d;
    ArgPtr v;          // the variable that receives the value
    ArgType kind : 8;  // the type of the value
    unsigned int required : 1;
    unsigned int multiple : 1;
    unsigned int is_sink : 1;   // it is the catch-all for unknown items
    unsigned int handled : 16;  // the number of its items, modulo 65536
} argInfo;

// A set of declared arguments and the text parsed into them. It belongs to its caller, is usually a
// local variable, and starts all zero.
typedef struct argsParse {
    argInfo* args;    // the first declared argument
    char* errbuf;     // the last message, or null
    const char* src;  // the caller's text
    char* data;       // a copy of it, in which names and values are terminated
    size_t len;       // length of the text
    char delim;       // what separates its items
} argsParse;

#endif
