// A component of another project, in the language that C and C++ share.
#define LOG_MODULES(M) M(DBG_CACHE, "cache", NULL, LOG_IS_DEFAULT, LOG_LEVEL_AND_MODULE)
#define LOG_DEFINE_COMPONENT
#include "util/export/kxutil_version.h"
#include "util/export/logging_static_gen.h"

int cache_start(const char* options);

int cache_start(const char* options) {
    char error[256];
    if (logParseMsgLevelsEx(options, error, sizeof error, NULL) != 0) {
        fprintf(stderr, "%s\n", error);
        return 2;
    }
    logPrint(DBG_CACHE, MSG_DEBUG, "%d of %d slots used", 15, 16);
    return 0;
}
