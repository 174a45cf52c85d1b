#include "qorix/QORIXVersion.h"

const char QORIXVersionString[] = "@(#)PROGRAM:QORIX  PROJECT:QORIX-2\n";
const double QORIXVersionNumber = 2.0;
