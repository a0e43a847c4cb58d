// The record of a parse: its memory, which grows, and its errors.
//
// An error jumps from any depth to where the parse began. The record is found through a stacked
// thread-local, because a callback that ends the parse has no pointer to it.

#include "util/c/shared/json/json_internal.h"

#include "osal/export/osal_msmalloc.h"
#include "util/export/stringutil.h"

#include <stdarg.h>
#include <stdlib.h>

__slkey jsonkey = &jsonkey;

void fail(json* js, const char* extract, const char* pos, const char* message) {
    js->extract = extract;
    js->pos = pos;
    jsonAbort("%s", message);
    abort();  // not reached: this parse is running
}

char* resize(json* js, char* block, const char* built_in, size_t used, size_t size) {
    char* const old = block == built_in ? nullptr : block;
    char* const grown = static_cast<char*>(gsRealloc(old, size));
    if (grown == nullptr)
        fail(js, js->extract, js->pos, "Out of memory");
    if (old == nullptr)
        memcpy(grown, built_in, used);
    return grown;
}

void grow_buffer(json* js, size_t count, const char* pos) {
    js->pos = pos;
    while (js->used + count >= js->size) {
        js->buffer = resize(js, js->buffer, js->static_buf, js->used, js->size + TOKEN_STEP);
        js->size += TOKEN_STEP;
    }
}

static unsigned line_of(const json* js, const char* pos) {
    unsigned line = 1;
    for (const char* p = js->start; p < pos && p < js->end; p++)
        line += *p == '\n';
    return line;
}

// Appends the line's number and the text from the extract's start to the end of its line. Room is
// kept for a closing quote; without room for it, nothing of that text is appended.
static void append_place(const json* js) {
    char* out = js->errbuf + strlen(js->errbuf);
    size_t room = js->errlen - static_cast<size_t>(out - js->errbuf);
    kestrum_util_snprintf(out, room, ", line %u, \"", line_of(js, js->pos));
    const size_t added = strlen(out);
    out += added;
    room -= added;
    for (const char* p = js->extract; room > 2 && *p != '\0' && *p != '\n'; room--)
        *out++ = *p++;
    if (room >= 2)
        memcpy(out, "\"", 2);
}

void jsonAbort(const char* fmt, ...) {
    json* const js = static_cast<json*>(stackedLocalGet(jsonkey));
    if (js == nullptr)
        return;
    if (js->errbuf != nullptr && js->errlen > 0) {
        js->errbuf[0] = '\0';
        va_list args;
        va_start(args, fmt);
        kestrum_util_vsnprintf(js->errbuf, js->errlen, fmt, args);
        va_end(args);
        if (js->extract != nullptr)
            append_place(js);
    }
    longjmp(js->jmp, 1);
}
