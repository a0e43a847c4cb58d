// Values of the nine types: all code that depends on an argument's type is here.

#include "util/export/arguments.h"
#include "util/export/scaled_printfmt.h"
#include "util/export/stringutil.h"
#include "util/export/strparse.h"

#include <string.h>
#include <bit>

static_assert(sizeof(ArgVal) == 8 && sizeof(ArgPtr) == 8 && TYPE_pvoid == 8);

// Parses straight into a variable.
static inline bool convert(ArgType type, const ArgPtr& a, const char* str, const char** error_msg) {
    switch (type) {
        case TYPE_bool: return strToBool(str, a.pbool, error_msg);
        case TYPE_int: return strToSuffixInt(str, a.pint, error_msg);
        case TYPE_s8: return strToSuffixLong(str, a.ps8, error_msg);
        case TYPE_double: return strToSuffixDouble(str, a.pdouble, error_msg);
        case TYPE_size_t: return strToSuffixSize(str, a.psize_t, error_msg);
        case TYPE_u8: return strToSuffixULong(str, a.pu8, error_msg);
        case TYPE_nanotime: return strToSuffixNanoTime(str, a.pnanotime, error_msg);
        case TYPE_pcchar: *a.ppcchar = str; return true;
        case TYPE_pvoid: return strToSuffixAddress(str, a.ppvoid, error_msg);
    }
    return false;
}

bool argConvert2(ArgType type, ArgVal* v, const char* str, const char** error_msg) {
    ArgPtr member;  // all members lie at the union's address
    member.pv = v;
    return convert(type, member, str, error_msg);
}

void argCopy(ArgType type, ArgPtr* dst, ArgVal* src) {
    switch (type) {
        case TYPE_bool: *dst->pbool = src->vbool; return;
        case TYPE_int: *dst->pint = src->vint; return;
        case TYPE_s8: *dst->ps8 = src->vs8; return;
        case TYPE_double: *dst->pdouble = src->vdouble; return;
        case TYPE_size_t: *dst->psize_t = src->vsize_t; return;
        case TYPE_u8: *dst->pu8 = src->vu8; return;
        case TYPE_nanotime: *dst->pnanotime = src->vnanotime; return;
        case TYPE_pcchar: *dst->ppcchar = src->vpcchar; return;
        case TYPE_pvoid: *dst->ppvoid = src->vpvoid; return;
    }
}

bool argConvert(ArgType type, ArgPtr* a, const char* str, const char** error_msg) {
    if (type != TYPE_double)
        return convert(type, *a, str, error_msg);
    double v;  // the only parser that may store a number and then fail
    if (!strToSuffixDouble(str, &v, error_msg))
        return false;
    *a->pdouble = v;
    return true;
}

struct Messages {
    const char *below, *above;
};

// The messages of a type, whose values are printed with the given conversions.
#define MESSAGES(value)                                              \
    Messages {                                                       \
        "(" value "B) is less than minimum required (" value "B)",   \
            "(" value "B) is more than maximum allowed (" value "B)" \
    }

struct Buffer {
    char* text;
    size_t len;
};

// Compares as type T. The functions `show` make the printed arguments from a value.
template <typename T, typename... Show>
static int check(const ArgVal* v, const void* bounds, Buffer buf, Messages messages, Show... show) {
    T value, minimum, maximum;
    memcpy(&value, v, sizeof value);
    memcpy(&minimum, bounds, sizeof minimum);
    memcpy(&maximum, static_cast<const char*>(bounds) + sizeof minimum, sizeof maximum);
    if (value < minimum) {
        kestrum_util_snprintf(buf.text, buf.len, messages.below, show(value)..., show(minimum)...);
        return -1;
    }
    if (value > maximum) {
        kestrum_util_snprintf(buf.text, buf.len, messages.above, show(value)..., show(maximum)...);
        return 1;
    }
    return 0;
}

template <typename T>
static T as_it_is(T value) {
    return value;
}

static const char* word(unsigned char value) {
    return value != 0 ? "true" : "false";
}

static const char* text_at(u8 address) {
    return address != 0 ? std::bit_cast<const char*>(address) : "(null)";
}

static void* pointer(u8 address) {
    return std::bit_cast<void*>(address);
}

static s8 scaled_and_signed(u8 value) {
    return static_cast<s8>(scaledownU8(value));
}

int argCheckBounds(ArgType type, ArgVal* v, const void* bounds, char* buf, size_t len) {
    const Buffer b = {buf, len};
    switch (type) {
        case TYPE_bool: return check<unsigned char>(v, bounds, b, MESSAGES("%s"), word);
        case TYPE_int: return check<int>(v, bounds, b, MESSAGES("%d"), as_it_is<int>);
        case TYPE_s8: return check<s8>(v, bounds, b, MESSAGES("%ld"), as_it_is<s8>);
        case TYPE_double: return check<double>(v, bounds, b, MESSAGES("%lf"), as_it_is<double>);
        case TYPE_size_t:
            return check<size_t>(v, bounds, b, MESSAGES("%lu%s"), scaledownSize,
                                 scaledDownSizeSuffix);
        case TYPE_u8:
            return check<u8>(v, bounds, b, MESSAGES("%ld%s"), scaled_and_signed,
                             scaledDownU8Suffix);
        case TYPE_nanotime:
            return check<nanotime>(v, bounds, b, MESSAGES("%ld%s"), scaledownNanotime,
                                   scaledDownNanotimeSuffix);
        case TYPE_pcchar: return check<u8>(v, bounds, b, MESSAGES("%s"), text_at);
        case TYPE_pvoid: return check<u8>(v, bounds, b, MESSAGES("%p"), pointer);
    }
    return 0;
}
