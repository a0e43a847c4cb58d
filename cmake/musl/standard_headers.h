// Included before everything else when the headers of a C++ library that was set up for the GNU C
// library are used with musl: takes back what they expect of that one. Nothing of the C++ library
// is linked.
#define __GLIBC_PREREQ(major, minor) 0
#define __locale_t locale_t
#ifdef __cplusplus
#include <bits/c++config.h>
#undef _GLIBCXX_USE_PTHREAD_COND_CLOCKWAIT
#undef _GLIBCXX_USE_PTHREAD_MUTEX_CLOCKLOCK
#undef _GLIBCXX_USE_PTHREAD_RWLOCK_CLOCKLOCK
#endif
