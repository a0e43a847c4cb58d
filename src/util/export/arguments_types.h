// Types of the argument facility.
#ifndef UTIL_EXPORT_ARGUMENTS_TYPES_H
#define UTIL_EXPORT_ARGUMENTS_TYPES_H

#include <stddef.h>

typedef const char* pcchar;  // a read-only string
typedef void* pvoid;         // an address

// A walk over an option string. It belongs to its caller, usually on the stack, owns nothing and
// needs no release. The text must outlive it and hold no NUL before `end`.
typedef struct ArgIterS {
    const char* args;   // start of the next item, or `end` when the text is used up
    const char* end;    // one past the last character
    char delim;         // what separates items; not '='
    const char* name;   // the current item's name, inside the text and not terminated
    size_t n_len;       // its length in characters
    const char* value;  // the current item's value, inside the text and not terminated
    size_t v_len;       // its length in characters; 0 for a bare name
} ArgIterS, ArgIter, *ArgIterP;

#endif
