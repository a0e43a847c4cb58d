// Integer types shared by all components of the virtual machine.
#ifndef SHAREDINC_INTTYPE_H
#define SHAREDINC_INTTYPE_H

#include "sharedinc/linux/inttype_pd.h"

// The digit counts bytes, not bits.
typedef int64 s8;
typedef uint64 u8;

#endif
