#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include <qorix/platform/Geometry.h>
#include <qorix/platform/Notification.h>

/// What a host can learn from one of the library's notifications.
struct NotificationFacts {
  bool isPopup = false;
  std::optional<std::int64_t> adId;
  /// Where the advertisement is: in its host view, or on the screen.
  std::optional<qorix::Rect> frame;
  /// The address of a purchase.
  std::optional<std::string> url;
  /// The activated element of the page.
  std::optional<std::string> element;
};

NotificationFacts readNotification(const qorix::Notification& notification);

/// From now on, calls `handler` for every notification of the library.
void observeNotifications(const std::function<void(const qorix::Notification&)>& handler);
