// This library as a component of its own logging: the generated data of module "util" and the
// static initialiser that registers it, the second of the library's three.

#define LOG_DEFINE_COMPONENT
#include "util/c/shared/logging/logging_internal.h"
