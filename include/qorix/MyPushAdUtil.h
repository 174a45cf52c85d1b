#pragma once

// For hosts.

#include <memory>
#include <optional>
#include <set>
#include <string>

#include <qorix/Export.h>
#include <qorix/MyPushAdInfo.h>
#include <qorix/platform/Notification.h>
#include <qorix/platform/View.h>

namespace qorix {

/// Stateless operations: reading ad configuration documents, the test for installed applications,
/// and posting and reading notifications. Never instantiated.
class QORIX_EXPORT MyPushAdUtil {
 public:
  MyPushAdUtil() = delete;

  // Documents.

  /// Turns an ad configuration document (UTF-8; absent allowed) into the running host's record, a
  /// new one that the caller may change until it hands it on.
  /// Null, after one log line that names the defect, when the document is unusable. Takes the host
  /// from the platform's main bundle. Any thread.
  static std::shared_ptr<MyPushAdInfo> parseXMLWithString(const std::optional<std::string>& text);

  // Installed applications.

  /// True when `names` is present, not empty, and each is the name of an installed application
  /// package, spelled exactly so. Any thread.
  static bool areAllPromoAppsAlreadyInstalled(const std::optional<std::set<std::string>>& names);

  /// The names, without extension, of the packages below the platform's applications folder. Read
  /// afresh on every call; empty, after one log line, when the folder cannot be read. Any thread.
  static std::set<std::string> fetchUserInstalledAppNamesSet();

  // Notifications (names and keys: MyPushAdNotifications.h).

  /// Posts to the platform's notification center from a task of the main loop: never inside this
  /// call, in the order of the calls. Any thread.
  static void postOnMainThreadNotificationName(const std::string& name,
                                               const std::shared_ptr<Object>& object,
                                               const std::optional<Dictionary>& userInfo);

  // The readers: any thread. Each also takes any object, null included, and logs one line when that
  // is not what it should be. `MyPushAdEvent::read` reads everything at once.

  /// @{
  /// Is the notification about this host view? True when the very same view is in its user info.
  /// Logs when it has no user info.
  static bool checkEqualsWithHostView(const View& view, const Notification& notification) {
    return checkEqualsWithHostView(&view, &notification);
  }
  static bool checkEqualsWithHostView(const Object* view, const Object* notification);
  /// @}

  /// @{
  /// Is it about an advertisement in the pop-up window? False when that is not known. Logs when it
  /// has no user info.
  static bool isPopupWindowForNotification(const Notification& notification) {
    return isPopupWindowForNotification(&notification);
  }
  static bool isPopupWindowForNotification(const Object* notification);
  /// @}

  /// @{
  /// The advertisement that it is about, or null. Never logs.
  static std::shared_ptr<const MyPushAdInfo> fetchPushAdInfoForNotification(
      const Notification& notification) {
    return fetchPushAdInfoForNotification(&notification);
  }
  static std::shared_ptr<const MyPushAdInfo> fetchPushAdInfoForNotification(
      const Object* notification);
  /// @}

  /// @{
  /// The page element that the user activated, as text: "{(idName is buy)(className is cta)}".
  /// Absent, after one log line, when there is none.
  static std::optional<std::string> fetchHTMLElementDescriptionForNotification(
      const Notification& notification) {
    return fetchHTMLElementDescriptionForNotification(&notification);
  }
  static std::optional<std::string> fetchHTMLElementDescriptionForNotification(
      const Object* notification);
  /// @}
};

}  // namespace qorix
