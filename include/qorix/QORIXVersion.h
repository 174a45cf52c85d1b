#pragma once

// For hosts.

#include <qorix/Export.h>

// The exported version data, under names of C, so that tools find it in the library's file: what(1)
// and strings(1) by the mark "@(#)", other languages by dlsym.

extern "C" {

/// "@(#)PROGRAM:QORIX  PROJECT:QORIX-2", a newline and the terminating NUL. Read-only, there from
/// the library's loading to its unloading; any thread.
QORIX_EXPORT extern const char QORIXVersionString[];

/// 2.0, the project's version. Read-only; any thread.
QORIX_EXPORT extern const double QORIXVersionNumber;
}
