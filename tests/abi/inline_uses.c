// Uses of the headers' inline functions with sizes that the compiler knows: it must not warn about
// them.
#include "util/export/dynarray.inl"
#include "util/export/posix/stringutil_pd.h"
#include "util/export/streamwriter.h"
#include "util/export/utf8.h"

static char block[5000] = "block";
static const char* text = "\xE2\x82\xAC";
static short small = 1;

size_t use(fio_fd fd, char to[4], void** elements);
size_t use(fio_fd fd, char to[4], void** elements) {
    streamwriter w;
    sw_init(&w, fd, 0);
    sw_bytes(&w, block, sizeof block);
    sw_bytes(&w, block, 3000);
    sw_flush(&w);
    kestrum_util_strncpy(to, "longer than that", 4);
    if (kestrum_util_strncpy_s(to, 4, "longer", 6) || kestrum_util_strncpy_s(to, 4, "abc", 3))
        return wchar2utf8(to, next_utf2wchar(&text));
    DynArrayP smalls = dynArrayNew(0, sizeof small), larges = dynArrayNew(2, 100);
    dynArrayAddLast(smalls, &small);
    dynArrayInsert(smalls, 0, &small);
    dynArraySet(larges, 7, block);
    dynArrayFree(smalls);
    return dynArrayCommit(larges, elements);
}
