// Glob patterns with a single wildcard, and ordered sets of them.
//
// "*" matches any run of characters, also the empty one; a run of "*" acts as one. Every other
// character matches exactly itself, byte for byte: there are no classes and there is no escape.
//
// A subject is one string, or several that are read as one text with a separator character between
// each two, or with nothing between them where the separator is 0. "*" spans separators as well;
// a pattern names them like any other character. One case differs from the text written out: when
// the last string is empty and nothing separates it from the one before, only a pattern that ends
// in "*" matches.
//
// Matching allocates nothing and takes at most time proportional to the pattern's length times the
// subject's (characters and strings), whatever the pattern. Strings are terminated and only read
// during the call; no pointer is null unless said otherwise. All functions may be called from any
// thread, several at once on the same set, but a set must not be in use while it is created or
// freed.
#ifndef UTIL_EXPORT_GLOBMATCH_H
#define UTIL_EXPORT_GLOBMATCH_H

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

// What a set says about a subject: the type of its first pattern that matches.
typedef enum MatchType {
    REJECT = -1,  // the pattern was written with '-'
    NOMATCH = 0,  // no pattern matches
    MATCH = 1,    // a plain pattern
    FORCE = 2     // the pattern was written with '+'
} MatchType;

// One pattern of a set; never of type NOMATCH.
typedef struct pattern {
    char* str;  // the text without its prefix character
    MatchType type;
} pattern;

// A set. The caller owns the record, patternSetCreate() fills it. `patterns` is null without any.
typedef struct patternset {
    pattern* patterns;  // in source order; the texts lie in the same block
    uint32_t num_patterns;
} patternset;

// True when the pattern matches the whole of `s`.
bool globMatch(const char* pattern, const char* s);

// True when the pattern matches the whole of a subject in pieces.
//
//   strs, n_strs  the strings; with n_strs 0 the subject is the empty text
//   separators    separators[i] stands between strs[i] and strs[i + 1]; n_strs - 1 of them are
//                 read, none when there is one string
bool globMatchArray(const char* pattern, const char** strs, unsigned int n_strs,
                    const char* separators);

// The same with the subject in the call: n pairs of a string (const char*) and the separator that
// follows it (int). The last one's separator is ignored.
//
//     globMatchList("java.lang.*", 3, "java", '.', "lang", '.', "String", 0)
bool globMatchList(const char* pattern, unsigned int n, ...);

// Makes a set from a list of patterns.
//
//   dst  overwritten; a set that it held must have been freed before
//   str  patterns separated by runs of spaces and commas. A leading '+' makes a pattern FORCE, a
//        leading '-' makes it REJECT; one such character is dropped. Separators at the start or
//        at the end of `str` add an empty pattern there, which matches the empty subject alone.
//        Null or "" gives the empty set. Not needed after the call.
//
// Returns 0, or -1 and the empty set when memory runs out (so do more than 4,294,967,295 patterns).
// The set is one allocation and goes back with patternSetFree().
int patternSetCreate(patternset* dst, const char* str);

// What the set says about `str`: its patterns are tried in order. NOMATCH from the empty set.
MatchType patternSetMatch(patternset* ps, const char* str);

// The same for a subject in pieces, as globMatchArray() takes it.
MatchType patternSetMatchArray(patternset* ps, const char** strs, unsigned int n_strs,
                               const char* separators);

// The same for a subject in the call, as globMatchList() takes it.
MatchType patternSetMatchList(patternset* ps, unsigned int n, ...);

// Gives the set's memory back and leaves the empty set; does nothing to an empty one, so freeing
// twice is harmless.
void patternSetFree(patternset* p);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
