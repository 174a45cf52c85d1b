#pragma once

// For hosts.
//
// Everything that a host needs beside its toolkit's door (<qorix/gtk3.h>): the manager, what it
// reports, and what the library says of itself.

#include <qorix/MyPushAdEvent.h>
#include <qorix/MyPushAdManager.h>
#include <qorix/MyPushAdNotifications.h>
#include <qorix/MyPushAdUtil.h>
#include <qorix/QORIXCommonUtil.h>
#include <qorix/QORIXInfo.h>
#include <qorix/QORIXVersion.h>

/// The library. A host includes this header and its toolkit's door, <qorix/gtk3.h>.
namespace qorix {}
