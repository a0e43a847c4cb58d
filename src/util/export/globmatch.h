// Glob patterns with a single wildcard, and ordered sets of them.
//
// "*" matches any characters, also none; several "*" in a row act as one. Every other character
// matches itself, byte for byte. There are no classes and there is no escape.
//
// A subject is one string, or several strings that are read as one text. A separator character
// stands between each two of them; separator 0 means that nothing does. "*" matches separators,
// too, and a pattern writes them like any other character. One case differs from the joined text:
// when the last string is empty and the separator before it is 0, only a pattern that ends in "*"
// matches.
//
// Matching allocates nothing. Its time is at most proportional to the pattern's length times the
// subject's length (characters and strings), for every pattern. Strings are NUL-terminated and are
// read during the call only. No pointer is null unless said otherwise. Any thread may call any
// function. Several threads may match against one set, but not while it is created or freed.
#ifndef UTIL_EXPORT_GLOBMATCH_H
#define UTIL_EXPORT_GLOBMATCH_H

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

// The answer of a set for a subject: the type of the first pattern that matches.
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

// A set. The caller owns the record and patternSetCreate() fills it. `patterns` is null when the
// set is empty.
typedef struct patternset {
    pattern* patterns;  // in source order; the texts lie in the same block
    uint32_t num_patterns;
} patternset;

// True when the pattern matches the whole of `s`.
bool globMatch(const char* pattern, const char* s);

// True when the pattern matches the whole of a subject that is given as an array of strings.
//
//   strs, n_strs  the strings; with n_strs 0 the subject is the empty text
//   separators    separators[i] stands between strs[i] and strs[i + 1]; n_strs - 1 of them are
//                 read, none when there is one string
bool globMatchArray(const char* pattern, const char** strs, unsigned int n_strs,
                    const char* separators);

// True when the pattern matches the whole of a subject that is given in the call: n pairs of a
// string (const char*) and the separator after it (int). The last separator is ignored.
//
//     globMatchList("java.lang.*", 3, "java", '.', "lang", '.', "String", 0)
bool globMatchList(const char* pattern, unsigned int n, ...);

// Makes a set from a list of patterns.
//
//   dst  overwritten without being freed: free an older set before
//   str  patterns separated by spaces and commas. '+' in front makes a pattern FORCE, '-' makes it
//        REJECT; that one character is dropped. Separators at the start or at the end of `str` add
//        an empty pattern there, which matches only the empty subject. Null or "" gives the empty
//        set. `str` is not needed after the call.
//
// Returns 0. Returns -1 and leaves the empty set when memory runs out, or for more than
// 4,294,967,295 patterns. The set is one allocation; patternSetFree() frees it.
int patternSetCreate(patternset* dst, const char* str);

// The set's answer for the string `str`: the patterns are tried in order. An empty set answers
// NOMATCH.
MatchType patternSetMatch(patternset* ps, const char* str);

// The set's answer for a subject that is given as globMatchArray() takes it.
MatchType patternSetMatchArray(patternset* ps, const char** strs, unsigned int n_strs,
                               const char* separators);

// The set's answer for a subject that is given as globMatchList() takes it.
MatchType patternSetMatchList(patternset* ps, unsigned int n, ...);

// Frees the set's memory and leaves the empty set. Freeing an empty set does nothing, so freeing
// twice is harmless.
void patternSetFree(patternset* p);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
