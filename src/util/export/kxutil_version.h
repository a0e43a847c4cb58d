// The version of these headers, which is that of both libraries, the classes and the packages.
//
//     #if KXUTIL_VERSION < 200
//     #error "needs kxutil 0.2.0"
//     #endif
//
// A built library tells its version by "readelf --notes libkxutil.so", kxutil.jar in its manifest.
#ifndef UTIL_EXPORT_KXUTIL_VERSION_H
#define UTIL_EXPORT_KXUTIL_VERSION_H

#define KXUTIL_VERSION_MAJOR 0
#define KXUTIL_VERSION_MINOR 1
#define KXUTIL_VERSION_PATCH 0

// One number, for comparisons: 1.2.3 is 10203.
#define KXUTIL_VERSION \
    (KXUTIL_VERSION_MAJOR * 10000 + KXUTIL_VERSION_MINOR * 100 + KXUTIL_VERSION_PATCH)

enum { KXUTIL_HEADERS_VERSION = KXUTIL_VERSION };  // for debuggers, which see no macros

#endif
