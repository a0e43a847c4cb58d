// A lenient JSON reader: it reads a text once and reports the elements in order to a callback.
// It builds no tree and keeps nothing.
//
// A document is one object or one array; nothing after it is read. The text is the virtual
// machine's UTF-8 (utf8.h). The dialect beyond JSON, by examples:
//
//     document             reported value
//     {a: 1, 'b': 2}       keys a and b; a key is bare, in single or in double quotes
//     {a = 1; b = 2,}      the same; '=' is ':', ';' is ',', and one may follow the last member
//     [1 2,,3]             1, 2 and 3; commas in arrays are optional and may repeat
//     [on, TRUE, 'x y']    the string on, true, the string x y
//     [010, 0x1F, -7]      8, 31 and -7; an integer is read as sscanf() reads %li
//     [1e3, .5, 1.]        1000.0, 0.5 and 1.0; a word with '.' or 'e' is tried as %lf
//     [08, 1E3, 12abc]     three strings: no number format reads the whole word
//     ["\x41\u0042\n"]     the string A, B and a newline; the escapes are b f n r t u x
//     ["\u0000"]           the string C0 80
//     {a: 1} rest          the object; the rest is not read
//
// Both kinds of C comments may stand wherever white space may. The digits of an escape (four
// after "u", two after "x") are read as sscanf() reads %x: white space, a sign or "0x" may be among
// them, and what follows the first digits is ignored. There is no escape for a quote or a
// backslash: write \x22, \x27 or \x5c.
//
// Numbers mean the same on every platform: what the GNU C library's sscanf() makes of them.
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
    JSON_KEY,     // str: a member's name, quoted or bare; always a string
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
//   value  null for kinds that have no value
//   arg    as given to the parse
//
// It may call jsonAbort(), which does not return: the callback's frame and all frames between it
// and jsonAbort() are left by a longjmp(), and no destructor runs.
//
// It must not throw. A C++ exception that leaves it leaves the parse's binding on the thread, and
// the next parse or stackedLocalGet() on this thread crashes or never ends.
typedef void (*json_cb)(JSONType type, const JSONVal* value, void* arg);

// Reads a document from a string.
//
//   str     NUL-terminated; unchanged during the call
//   cb      called for every event
//   arg     passed to `cb`
//   errbuf  receives the reason of a failure, cut to fit: the message, the line, and the rest of
//           that line from the wrong token, as in `Bad character, line 2, "c: 3 }"`. Null or an
//           `errlen` of 0 asks for none. Untouched on success.
//   errlen  size of `errbuf` in bytes, terminator included
//
// Returns 0, or -1 when the text is no document of the dialect, memory runs out, or the callback
// calls jsonAbort(). Events before a failure stay delivered, and containers that are open then get
// no end events.
//
// Only memory limits the nesting; the reader's use of the stack does not depend on it. Tokens
// of up to 254 bytes and nesting of up to 1024 containers need no allocation.
//
// An integer outside the range of 64 bits becomes the nearest value in it.
int jsonParse(const char* str, json_cb cb, void* arg, char* errbuf, size_t errlen);

// Reads a document from a file of at most 2,147,483,647 bytes; a zero byte in it ends the document.
// Parameters and result are those of jsonParse(). A file that cannot be read whole gives -1 and a
// message that names it, without a line.
//
// The file must have a size: a pipe, a device or a file of /proc is read as an empty document, so
// the result is -1 with "Object must start with '{'". A platform layer may answer -1 for the size
// of such a file; the message is then "Could not read" with the name.
int jsonParseFile(const char* path, json_cb cb, void* arg, char* errbuf, size_t errlen);

// Ends the innermost parse of the calling thread: its jsonParse() returns -1 with this message.
//
//   fmt  a format as for printf(). The line and the rest of that line follow the message.
//        Neither the format nor its arguments may lie in the parse's `errbuf`, which is written
//        meanwhile.
//
// A callback uses it to reject what it receives. Does not return while a parse runs on the thread;
// otherwise does nothing.
void jsonAbort(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
