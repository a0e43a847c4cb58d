// A component without "-z nodelete": closing it unloads it unless something keeps it loaded.
#define LOG_MODULES(MODULE) MODULE(DBG_UNLOADED, "unloaded", NULL, 0, 0)
#define LOG_DEFINE_COMPONENT
#include "util/export/logging_static_gen.h"
