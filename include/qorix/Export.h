#pragma once

// What the shared libraries export; everything else in them is hidden.
//
// Hosts subclass the library's classes and see their members, so a release may change the size of a
// class and the order of its virtual functions. Whoever links a release therefore links its soname,
// which has both numbers of the version (libqorix.so.2.0): a program runs with the release that it
// was built with, and several can be installed at once. Within one soname nothing of this changes.

#ifdef __cplusplus
#define QORIX_EXPORT [[gnu::visibility("default")]]
#else  // C had no such spelling before C23
#define QORIX_EXPORT __attribute__((visibility("default")))
#endif
