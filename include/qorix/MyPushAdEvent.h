#pragma once

// For hosts.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <qorix/Export.h>
#include <qorix/MyPushAdInfo.h>
#include <qorix/platform/Geometry.h>
#include <qorix/platform/NotificationCenter.h>
#include <qorix/platform/Url.h>
#include <qorix/platform/View.h>

namespace qorix {

/// What one of the library's notifications says, as plain values. Main thread only.
struct QORIX_EXPORT MyPushAdEvent {
  /// Which of the four notifications it is.
  enum class Kind {
    willShow,              ///< An advertisement is about to be shown.
    didClose,              ///< The user has closed it.
    openIAP,               ///< Its page asks the host to offer an in-app purchase.
    triggeringNavigation,  ///< The user has activated a link in its page.
  };

  /// What has happened. The members below say which kinds have them.
  Kind kind = Kind::willShow;

  /// The notification's name, such as kPushAdWillShowNotification.
  std::string name;

  /// Whether the advertisement is in the pop-up window. False for triggeringNavigation, which does
  /// not say.
  bool isPopup = false;

  /// The advertisement. Null for triggeringNavigation, and when the notification lacks it.
  std::shared_ptr<const MyPushAdInfo> info;

  /// The host's view that the advertisement was offered to; if it offered none, a stand-in of the
  /// library. Null when the view has been destroyed, and for triggeringNavigation.
  std::shared_ptr<View> hostView;

  /// Where the advertisement is, in points: a banner in its host view, the content of the pop-up
  /// window on the screen. Read when the event is made. Absent for triggeringNavigation.
  std::optional<Rect> frame;

  /// The address of the purchase: only for openIAP.
  std::optional<Url> url;

  /// The activated element, "{(idName is buy)(className is cta)}": only for triggeringNavigation.
  std::optional<std::string> element;

  /// Reads a notification; absent when it is not one of the library's. Never logs.
  static std::optional<MyPushAdEvent> read(const Notification& notification);

  /// Calls `handler` for each of the library's notifications until the returned observations end.
  static std::vector<NotificationObservation> observe(
      const std::function<void(const MyPushAdEvent&)>& handler);
};

}  // namespace qorix
