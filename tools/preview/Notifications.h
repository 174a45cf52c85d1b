#pragma once

#include <functional>
#include <string>

#include "platform/Notification.h"

namespace qorix::tools::preview {

/// From now on, calls `handler` for every notification of the library.
void observeNotifications(const std::function<void(const Notification&)>& handler);

/// What a host can read from the notification, in one line.
std::string describeNotification(const Notification& notification);

}  // namespace qorix::tools::preview
