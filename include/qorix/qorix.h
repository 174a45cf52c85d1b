#pragma once

// For hosts.
//
// Everything that a host needs beside its toolkit's door (<qorix/gtk3.h>): the manager, what it
// reports, and what the library says of itself.
//
// Memory: the calls of the manager, of <qorix/gtk3.h> and of <qorix/qorix-gtk.h> throw nothing. If
// there is no memory, they log one line and leave the rest undone; a pointer is then null. These
// may throw std::bad_alloc to the host that calls them, and have changed nothing then: what returns
// a text, a list, a record's member or an observation by value, what makes an object (`create…`),
// and `installPlatform`. So may the calls of the machinery, to those who extend it.

#include <qorix/MyPushAdEvent.h>
#include <qorix/MyPushAdManager.h>
#include <qorix/MyPushAdNotifications.h>
#include <qorix/MyPushAdUtil.h>
#include <qorix/QORIXCommonUtil.h>
#include <qorix/QORIXInfo.h>
#include <qorix/QORIXVersion.h>

/// The library. A host includes this header and its toolkit's door, <qorix/gtk3.h>.
namespace qorix {}
