#pragma once

// What the shared libraries export; everything else in them is hidden.
//
// Hosts subclass the library's classes and see their members, so a change of a class's size or of
// the order of its virtual functions breaks them. Whoever links the library therefore links its
// soname, libqorix.so.2, with the number of the binary interface: within one number nothing that a
// host sees goes away or changes its shape, and libraries of several numbers can be installed at
// once. The number is not the version's; abi/README.md says when it grows.

#ifdef __cplusplus
#define QORIX_EXPORT [[gnu::visibility("default")]]
#else  // C had no such spelling before C23
#define QORIX_EXPORT __attribute__((visibility("default")))
#endif
