// Uses of what the headers put into their users' code, with sizes that the compiler knows: it must
// not take them for mistakes.
#include "util/export/dynarray.inl"
#include "util/export/posix/stringutil_pd.h"
#include "util/export/streamwriter.h"
#include "util/export/utf8.h"

static const char block[5000] = "block";

void write_blocks(fio_fd fd);
void write_blocks(fio_fd fd) {
    streamwriter w;
    sw_init(&w, fd, 0);
    sw_bytes(&w, block, sizeof block);
    sw_bytes(&w, block, 3000);
    sw_flush(&w);
}

bool copy(char to[4]);
bool copy(char to[4]) {
    kestrum_util_strncpy(to, "longer than that", 4);
    return kestrum_util_strncpy_s(to, 4, "longer", 6) || kestrum_util_strncpy_s(to, 4, "abc", 3);
}

size_t collect(void** elements);
size_t collect(void** elements) {
    const short small = 1;
    const char large[100] = "large";
    DynArrayP smalls = dynArrayNew(0, sizeof small), larges = dynArrayNew(2, sizeof large);
    if (smalls == NULL || larges == NULL)
        return 0;
    dynArrayAddLast(smalls, (void*)&small);
    dynArrayInsert(smalls, 0, (void*)&small);
    dynArraySet(larges, 7, (void*)large);
    dynArrayFree(smalls);
    return dynArrayCommit(larges, elements);
}

unsigned encode(char to[3]);
unsigned encode(char to[3]) {
    const char* text = "\xE2\x82\xAC";
    return wchar2utf8(to, next_utf2wchar(&text));
}
