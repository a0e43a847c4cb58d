// The JSON reader: one pass over a text that has been checked to be UTF-8.
//
// The functions below pass a cursor along. The record of the parse keeps what a callback or an
// error may need: every event and every error first stores the cursor and the place where an
// error's extract would begin. Lines are counted only when an error names one.
//
// Valid characters are copied as they are: decoding and encoding them again would give the same
// bytes. The terminating zero byte ends every scan. So does U+0000, encoded in two bytes, which
// counts as the end of the document. Its first byte starts no other character, so scans test for
// that byte only.
//
// Each open container takes one byte in memory of the parse, so nesting needs no stack.

#include "util/c/shared/json/text.h"
#include "util/c/shared/json/words.h"

#include "osal/export/linux/osal_files_pd.h"
#include "osal/export/osal_msmalloc.h"
#include "util/export/scaled_printfmt.h"
#include "util/export/stringutil.h"
#include "util/export/utf8.h"

#include <limits.h>

static_assert(sizeof(JSONVal) == 16 && offsetof(JSONVal, str.length) == 8 && sizeof(JSONType) == 4);

static void deepen(json* js, const char* bracket) {
    js->extract = bracket;
    js->pos = bracket + 1;
    js->open = resize(js, js->open, js->static_open, js->depth, js->max_depth * 2);
    js->max_depth *= 2;
}

static inline const char* begin_container(json* js, const char* bracket) {
    if (js->depth == js->max_depth) [[unlikely]]
        deepen(js, bracket);
    const bool is_array = *bracket == '[';
    js->open[js->depth++] = is_array ? JSON_ARRAY_END : JSON_OBJECT_END;
    deliver(js, bracket, bracket + 1, is_array ? JSON_ARRAY_BEGIN : JSON_OBJECT_BEGIN, nullptr);
    return bracket + 1;
}

static inline bool begins_container(char c) {
    return c == '{' || c == '[';
}

static inline bool in_object(const json* js) {
    return js->depth > 0 && js->open[js->depth - 1] == JSON_OBJECT_END;
}

// Passes over what follows a member's value, which ends at p. Returns the place of the closing
// brace or of the next member.
static inline const char* read_separator(json* js, const char* p) {
    if (*p == ',' && !is_blank(p[1]) && p[1] != '/') [[likely]]
        return p + 1;
    p = next_clean(js, p);
    if (*p == ',' || *p == ';')
        return next_clean(js, p + 1);
    if (*p != '}')
        fail_at(js, p, "Bad character");
    return p;
}

static inline const char* end_container(json* js, const char* bracket) {
    const JSONType end = static_cast<JSONType>(js->open[--js->depth]);
    deliver(js, bracket, bracket + 1, end, nullptr);
    return in_object(js) ? read_separator(js, bracket + 1) : bracket + 1;
}

// True for a minus sign, a digit, or one of the two characters between them. A separate test for
// the sign would be mispredicted.
static inline bool may_begin_number(char c) {
    return c >= '-' && c <= '9';
}

[[gnu::always_inline]] static inline const char* send_scalar(json* js, const char* token) {
    const char c = *token;
    if (begins_string(c)) {
        const char* const end = scan_string_fast(js, token);
        deliver_text(js, token, end, JSON_STRING);
        return end;
    }
    const char* end;
    if (may_begin_number(c)) {
        end = word_end_fast(js, token);
        if (end != nullptr)
            end = js->send_number(js, token, end);
    } else {
        end = send_literal_fast(js, token);
    }
    return end != nullptr ? end : send_word(js, token);
}

// Reads a member's key and what stands between it and the value.
[[gnu::always_inline]] static inline const char* read_key(json* js, const char* key) {
    if (is_end(*key))
        fail_at(js, key, "Object must end with '}'");
    const char* p = begins_string(*key) ? scan_string_fast(js, key) : scan_word(js, key);
    deliver_text(js, key, p, JSON_KEY);
    if (*p == ':' && !is_blank(p[1]) && p[1] != '/') [[likely]]
        return p + 1;
    p = next_clean(js, p);
    if (*p != ':' && *p != '=')
        fail_at(js, p, "Unexpected char");
    return next_clean(js, p + 1);
}

// Reads the object's members from p on, until it ends or a value is a container.
static const char* read_members(json* js, const char* p) {
    p = next_clean(js, p);
    while (*p != '}') {
        p = read_key(js, p);
        if (begins_container(*p))
            return begin_container(js, p);
        p = read_separator(js, send_scalar(js, p));
    }
    return end_container(js, p);
}

// Reads the array's elements from p on, until it ends or an element is a container.
static const char* read_elements(json* js, const char* p) {
    p = next_clean(js, p);
    while (*p != ']') {
        if (begins_container(*p))
            return begin_container(js, p);
        if (*p != ',')
            p = next_clean(js, send_scalar(js, p));
        if (*p == ',')
            p = next_clean(js, p + 1);
    }
    return end_container(js, p);
}

static void read_document(json* js) {
    const char* p = next_clean(js, js->start);
    if (!begins_container(*p))
        fail_at(js, p, "Object must start with '{'");
    p = begin_container(js, p);
    while (js->depth > 0)
        p = in_object(js) ? read_members(js, p) : read_elements(js, p);
}

// The parse itself; errors jump back here. The record is in the caller's frame, so its fields keep
// their values across the jump.
static int run(json* js) {
    if (setjmp(js->jmp) != 0)
        return -1;
    if (!utf8_validate(js->start, static_cast<size_t>(js->end - js->start), false))
        jsonAbort("Illegal UTF8 text stream");
    read_document(js);
    return 0;
}

int jsonParse(const char* str, json_cb cb, void* arg, char* errbuf, size_t errlen) {
    json js;
    js.start = js.pos = str;
    js.end = str + strlen(str);
    js.extract = nullptr;
    js.callback = cb;
    js.arg = arg;
    js.errbuf = errbuf;
    js.errlen = errlen;
    js.buffer = js.static_buf;
    js.used = 0;
    js.size = sizeof js.static_buf;
    js.open = js.static_open;
    js.depth = 0;
    js.max_depth = sizeof js.static_open;
    js.send_number = number_sender();
    js.decimal_point = json::UNKNOWN;
    js.index.begin = str;
    js.index.bytes = 0;

    __tlnode node;
    stackedLocalPush(&node, &js, jsonkey);
    const int result = run(&js);
    stackedLocalPop(&node);
    if (js.buffer != js.static_buf)
        gsFree(js.buffer);
    if (js.open != js.static_open)
        gsFree(js.open);
    return result;
}

// Memory for a file of that size and a terminator; null with a message when there is none.
static char* allocate_text(filesize size, const char* path, char* errbuf, size_t errlen) {
    if (size > INT_MAX) {
        kestrum_util_snprintf(errbuf, errlen, "Too large file: %s", path);
        return nullptr;
    }
    const size_t bytes = size < 0 ? 0 : static_cast<size_t>(size);
    char* const text = static_cast<char*>(gsMalloc(bytes + 1));
    if (text == nullptr)
        kestrum_util_snprintf(errbuf, errlen, "Could not allocate %lu%sB bytes",
                              scaledownSize(bytes), scaledDownSizeSuffix(bytes));
    return text;
}

int jsonParseFile(const char* path, json_cb cb, void* arg, char* errbuf, size_t errlen) {
    const fio_fd fd = fio_open(path, FIO_READ | FIO_EXISTING);
    if (fd == -1) {
        kestrum_util_snprintf(errbuf, errlen, "Could not open %s", path);
        return -1;
    }
    const filesize size = fio_fdsize(fd);
    char* const text = allocate_text(size, path, errbuf, errlen);
    int result = -1;
    if (text != nullptr && (size < 0 || fio_read_fully(fd, text, static_cast<int>(size)) != size)) {
        kestrum_util_snprintf(errbuf, errlen, "Could not read %s", path);
    } else if (text != nullptr) {
        text[size] = '\0';
        result = jsonParse(text, cb, arg, errbuf, errlen);
    }
    fio_close(fd);
    if (text != nullptr)
        gsFree(text);
    return result;
}
