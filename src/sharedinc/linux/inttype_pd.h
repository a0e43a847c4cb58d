// Exact-width 64-bit integers under the names that every component of the virtual machine uses.
#ifndef SHAREDINC_LINUX_INTTYPE_PD_H
#define SHAREDINC_LINUX_INTTYPE_PD_H

#include <stdint.h>

typedef int64_t int64;
typedef uint64_t uint64;

#endif
