// Declared arguments: a list of the caller's records, and a copy of the text whose items they take.
//
// Names and values are NUL-terminated inside the copy, after the iterator has moved past their
// item, so that it never reads a terminator of ours. The caller's text is not changed: a second
// walk over it finds every value at the offset where the copy has it terminated.

#include "util/export/arguments.h"
#include "util/export/stringutil.h"

#include "osal/export/osal_assert.h"
#include "osal/export/osal_msmalloc.h"

#include <stdarg.h>
#include <string.h>
#include <algorithm>
#include <bit>

static_assert(sizeof(argInfo) == 56 && offsetof(argInfo, pos) == 24 && offsetof(argInfo, d) == 32 &&
              offsetof(argInfo, v) == 40);
static_assert(sizeof(argsParse) == 48 && offsetof(argsParse, src) == 16 &&
              offsetof(argsParse, len) == 32 && offsetof(argsParse, delim) == 40);

#define ARGUMENTS_PATH "src/util/c/shared/arguments"

constexpr size_t MESSAGE_BYTES = 128;  // with its terminator

// Replaces the context's message, or keeps the old one when there is no memory. Always -1, so that
// a parser returns it.
[[gnu::format(printf, 2, 3)]] static int error(argsParse* args, const char* fmt, ...) {
    char* message = static_cast<char*>(gsMalloc(MESSAGE_BYTES + 1));
    if (message == nullptr)
        return -1;
    va_list va;
    va_start(va, fmt);
    kestrum_util_vsnprintf(message, MESSAGE_BYTES, fmt, va);
    va_end(va);
    if (args->errbuf != nullptr)
        gsFree(args->errbuf);
    args->errbuf = message;
    return -1;
}

static void add_arg(argsParse* pa, argInfo* arg, const char* name, ArgType kind, const void* v,
                    const char* desc, const char* aliases, unsigned int flags) {
    arg->name = name;
    arg->aliases = aliases;
    arg->d.desc = desc;
    arg->v.pv = v;
    arg->kind = kind;
    arg->required = (flags & _required) != 0;
    arg->multiple = (flags & _multiple) != 0;
    arg->is_sink = 0;
    arg->handled = 0;
    argInfo** end = &pa->args;
    while (*end != nullptr && *end != arg)
        end = &(*end)->next;
    if (*end == nullptr) {
        arg->next = nullptr;
        *end = arg;
    }
}

#define DEFINE_ADD(T)                                                                       \
    T argAdd##T(const char* name, argsParse* pa, argInfo* arg, T* v, T d, const char* desc, \
                const char* aliases, unsigned int flags) {                                  \
        add_arg(pa, arg, name, TYPE_##T, v, desc, aliases, flags);                          \
        return d;                                                                           \
    }

DEFINE_ADD(bool)
DEFINE_ADD(int)
DEFINE_ADD(s8)
DEFINE_ADD(double)
DEFINE_ADD(size_t)
DEFINE_ADD(u8)
DEFINE_ADD(nanotime)
DEFINE_ADD(pcchar)
DEFINE_ADD(pvoid)
#undef DEFINE_ADD

pcchar argAddFallback(argsParse* a, argInfo* ai, pcchar* np, pcchar* vp) {
    add_arg(a, ai, "*", TYPE_pcchar, vp, nullptr, nullptr, 0);
    ai->d.np = np;
    ai->is_sink = 1;
    return nullptr;
}

// Takes the next name off a list of aliases; null at its end.
static const char* next_alias(const char** aliases, size_t* len) {
    const char* const alias = *aliases;
    if (*alias == '\0')
        return nullptr;
    const char* const end = strchrnul(alias, ',');
    *len = static_cast<size_t>(end - alias);
    *aliases = *end == ',' ? end + 1 : end;
    return alias;
}

static bool match_alias(const char* name, size_t len, const char* aliases) {
    size_t alias_len;
    while (const char* alias = next_alias(&aliases, &alias_len))
        if (alias_len == len && memcmp(alias, name, len) == 0)
            return true;
    return false;
}

static bool match_arg(const char* name, size_t len, const argInfo* a) {
    size_t i = 0;
    while (i < len && a->name[i] == name[i] && name[i] != '\0')
        i++;
    return (i == len && a->name[len] == '\0') ||
           (a->aliases != nullptr && match_alias(name, len, a->aliases));
}

// The first and the last eight characters of a name; they overlap in names of less than sixteen.
struct Ends {
    u8 head, tail;
};

static inline Ends ends_of(const char* name, size_t len) {
    Ends ends = {0, 0};
    if (len >= 8) {
        memcpy(&ends.head, name, 8);
        memcpy(&ends.tail, name + len - 8, 8);
    } else if (len >= 4) {
        memcpy(&ends.head, name, 4);
        memcpy(&ends.tail, name + len - 4, 4);
    } else if (len > 0) {
        const char all[] = {name[0], name[len / 2], name[len - 1]};
        memcpy(&ends.head, all, sizeof all);
    }
    return ends;
}

static inline bool same_name(const char* a, const char* b, size_t len) {
    const Ends x = ends_of(a, len), y = ends_of(b, len);
    return x.head == y.head && x.tail == y.tail && (len <= sizeof(Ends) || memcmp(a, b, len) == 0);
}

// Equal names have equal hashes; different names may share one, but seldom do.
static inline u8 hash(const char* name, size_t len) {
    const Ends ends = ends_of(name, len);
    return (ends.head ^ std::rotl(ends.tail, 1)) * 0x9E3779B97F4A7C15;  // mixes the high bits
}

// Finds an item's argument. The first declared one that matches takes the item, so a walk down the
// list finds it. The tables tell by the item's hash where the walk may begin: at the first argument
// that has a name or an alias of that hash. Usually the first candidate is the match.
constexpr int MAX_TABLE_BITS = 9;

struct Finder {
    argInfo* sink;                         // the last catch-all, or null
    int shift;                             // turns a hash into a place in the tables
    argInfo* begin[1 << MAX_TABLE_BITS];   // null when no name has the hash
    size_t name_len[1 << MAX_TABLE_BITS];  // the length of that argument's name
};

static void add_to_table(Finder* finder, argInfo* arg, size_t name_len, const char* name,
                         size_t len) {
    const size_t place = hash(name, len) >> finder->shift;
    if (finder->begin[place] != nullptr)
        return;
    finder->begin[place] = arg;
    finder->name_len[place] = name_len;
}

static void init_finder(Finder* finder, argInfo* first) {
    size_t count = 1;
    for (const argInfo* arg = first; arg != nullptr; arg = arg->next)
        count++;
    // More places per argument when there are many, because walks are longer then.
    const int width = static_cast<int>(std::bit_width(count));
    const int bits = std::clamp(3 * width / 2 - 1, 1, MAX_TABLE_BITS);
    finder->sink = nullptr;
    finder->shift = 64 - bits;
    memset(finder->begin, 0, sizeof(argInfo*) << bits);
    for (argInfo* arg = first; arg != nullptr; arg = arg->next) {
        if (arg->is_sink) {
            finder->sink = arg;
            continue;
        }
        const size_t name_len = strlen(arg->name);
        add_to_table(finder, arg, name_len, arg->name, name_len);
        const char* aliases = arg->aliases != nullptr ? arg->aliases : "";
        size_t len;
        while (const char* alias = next_alias(&aliases, &len))
            add_to_table(finder, arg, name_len, alias, len);
    }
}

static inline argInfo* find_argument(const Finder& finder, const char* name, size_t len) {
    const size_t place = hash(name, len) >> finder.shift;
    argInfo* arg = finder.begin[place];
    if (arg == nullptr || (finder.name_len[place] == len && same_name(arg->name, name, len)))
        return arg;
    while (arg != nullptr && (arg->is_sink || !match_arg(name, len, arg)))
        arg = arg->next;
    return arg;
}

// Gives an item to its argument. Both strings are terminated and lie in the context's copy.
static int accept_item(argsParse* args, argInfo* arg, const char* name, const char* value) {
    if (arg->handled != 0 && !arg->multiple)
        return error(args, "Duplicate parameter %s", name);
    const char* reason = "";
    const bool ok = argConvert(arg->kind, &arg->v, value, &reason);
    arg->pos = name;
    arg->handled = (arg->handled + 1U) & 0xFFFF;
    if (!ok)
        return error(args, "Could not parse value for argument '%s': %s (%s)", name, value, reason);
    return 0;
}

static int add_argument(argsParse* args, const Finder& finder, const ArgIter& item) {
    char* const name = args->data + (item.name - args->data);
    char* const value = args->data + (item.value - args->data);
    name[item.n_len] = '\0';
    value[item.v_len] = '\0';
    if (argInfo* arg = find_argument(finder, name, item.n_len))
        return accept_item(args, arg, name, value);
    const argInfo* const sink = finder.sink;
    if (sink == nullptr)
        return error(args, "Unknown parameter %s", name);
    if (sink->d.np != nullptr)
        *sink->d.np = name;
    if (sink->v.ppcchar != nullptr)
        *sink->v.ppcchar = value;
    return 0;
}

static int check_unhandled(argsParse* args) {
    for (const argInfo* arg = args->args; arg != nullptr; arg = arg->next)
        if (arg->required && arg->handled == 0)
            return error(args, "Required parameter %s missing", arg->name);
    return 0;
}

int argParse(argsParse* a, const char* args, size_t len, char delim) {
    a->data = static_cast<char*>(gsMalloc(len + 1));
    if (a->data == nullptr)
        return error(a, "Could not allocate memory");
    if (len > 0)
        memcpy(a->data, args, len);
    a->data[len] = '\0';
    a->src = args;
    a->len = len;
    a->delim = delim;
    Finder finder;
    init_finder(&finder, a->args);
    ArgIter iter;
    argIterInit(&iter, a->data, len, delim);
    while (!argIterDone(&iter)) {
        argIterNext(&iter);
        if (add_argument(a, finder, iter) != 0)
            return -1;
    }
    return check_unhandled(a);
}

static size_t size_of(ArgType kind) {
    return kind == TYPE_bool ? sizeof(bool) : kind == TYPE_int ? sizeof(int) : sizeof(ArgVal);
}

// Moves on to the argument's next item. False when there is none.
static bool find_item(ArgIter* iter, const argInfo* a) {
    while (!argIterDone(iter)) {
        argIterNext(iter);
        if (match_arg(iter->name, iter->n_len, a))
            return true;
    }
    return false;
}

void argGetValues(argsParse* args, argInfo* a, void* dest, size_t count) {
    if (count == 0)
        return;
    const size_t size = size_of(a->kind);
    memset(dest, 0, count * size);
    if (args->data == nullptr)
        return;
    ArgIter iter;
    argIterInit(&iter, args->src, args->len, args->delim);
    for (size_t i = 0; i < count && i < a->handled && find_item(&iter, a); i++) {
        const char* tmp = args->data + (iter.value - args->src);
        ArgPtr p;
        p.pv = static_cast<char*>(dest) + i * size;
        (void)OSAL_CHECK(argConvert(a->kind, &p, tmp, NULL), ARGUMENTS_PATH);
    }
}

int argCount(argsParse* args) {
    int count = 0;
    for (const argInfo* arg = args->args; arg != nullptr; arg = arg->next)
        count += !arg->is_sink;
    return count;
}

const char* argError(argsParse* a) {
    return a->errbuf != nullptr ? a->errbuf : "";
}

void argFree(argsParse* a) {
    if (a->data != nullptr)
        gsFree(a->data);
    if (a->errbuf != nullptr)
        gsFree(a->errbuf);
    a->data = nullptr;
    a->errbuf = nullptr;
}
