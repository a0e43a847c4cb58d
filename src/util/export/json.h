// A lenient JSON reader: it reads a text once and reports what it meets, in order, to a callback.
// It builds no tree and keeps nothing.
//
// The dialect, beyond JSON: keys and values may be bare words; strings may stand between single
// quotes; "=" serves as ":", ";" between members as ","; a separator may follow the last member,
// and those of arrays may be left out; "//" and "/* */" comments stand wherever white space may,
// the latter up to the first "*/". Integers may be octal (010) or hexadecimal (0x1F). Quoted
// strings know the escapes b, f, n, r, t, u with four and x with two hexadecimal digits, and no
// others; the digits are read as sscanf() reads them with %x, so white space, a sign or "0x" may be
// among them, and what follows the first digits counts for nothing. The document is one object or
// one array; nothing after it is read. The text is the virtual machine's UTF-8 (utf8.h). Numbers
// mean the same on every platform: what the GNU C library's sscanf() makes of them.
//
// Parses on different threads are independent. On one thread a callback may start another parse.
#ifndef UTIL_EXPORT_JSON_H
#define UTIL_EXPORT_JSON_H

#include "sharedinc/inttype.h"

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

// The kind of an event.
typedef enum JSONType {
    JSON_NONE,  // never delivered
    JSON_ARRAY_BEGIN,
    JSON_ARRAY_END,
    JSON_OBJECT_BEGIN,
    JSON_OBJECT_END,
    JSON_INTEGER,  // int_value
    JSON_FLOAT,    // double_value
    JSON_NULL,
    JSON_TRUE,
    JSON_FALSE,
    JSON_STRING,  // str: a quoted string, or a bare word that is neither literal nor number
    JSON_KEY,     // str: a member's name, quoted or bare, whatever it looks like
    JSON_MAX      // the number of kinds
} JSONType;

// The value of an event. It is valid during the callback only, and so are the bytes of a string.
typedef union JSONVal {
    s8 int_value;
    double double_value;
    struct {
        const char* utf8;  // NUL-terminated; holds no other zero byte (U+0000 is C0 80)
        size_t length;     // in bytes, without the terminator
    } str;
} JSONVal;

// Receives one event, on the thread that parses.
//
//   value  null for kinds that carry none
//   arg    as given to the parse
//
// It may call jsonAbort(), and must then expect to be left without returning: its frames, and
// those of everything between it and jsonAbort(), are abandoned and no destructor runs.
typedef void (*json_cb)(JSONType type, const JSONVal* value, void* arg);

// Reads a document from a string.
//
//   str     NUL-terminated; unchanged during the call
//   cb      called for every event
//   arg     passed to `cb`
//   errbuf  receives the reason of a failure: the message, the line, and the rest of the line from
//           the token in question, as in
//               Bad character, line 2, "c: 3 }"
//           cut to what fits. Null, or an `errlen` of 0, forgoes it. Untouched on success.
//   errlen  size of `errbuf` in bytes, terminator included
//
// Returns 0, or -1 when the text is no document of the dialect, memory ran out, or the callback
// called jsonAbort(). Events delivered before a failure are not taken back, and containers still
// open then get no end events.
//
// Nesting is limited by memory only; the reader's use of the stack does not depend on it. Tokens
// of up to 254 bytes and nesting of up to 1024 containers need no allocation.
//
// Integers that 64 bits cannot hold become the nearest that they can.
int jsonParse(const char* str, json_cb cb, void* arg, char* errbuf, size_t errlen);

// Reads a document from a file of at most 2,147,483,647 bytes; a zero byte in it ends the document.
// Parameters and result are those of jsonParse(). A file that cannot be read whole gives -1 and a
// message that names it, without a line.
int jsonParseFile(const char* path, json_cb cb, void* arg, char* errbuf, size_t errlen);

// Ends the innermost parse that runs on the calling thread: its jsonParse() returns -1 with this
// message, a format as for printf(), followed by line and extract. For callbacks that reject what
// they are given. Does not return while a parse runs on the thread; otherwise does nothing.
void jsonAbort(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
