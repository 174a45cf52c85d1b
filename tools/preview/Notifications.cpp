#include "tools/preview/Notifications.h"

#include <memory>

#include "platform/Platform.h"
#include "platform/Url.h"
#include "platform/View.h"
#include "platform/Window.h"
#include "qorix/MyPushAdNotifications.h"
#include "qorix/MyPushAdUtil.h"

namespace qorix::tools::preview {

namespace {

const Value* detail(const Notification& notification, const char* key) {
  return notification.userInfo() ? find(*notification.userInfo(), key) : nullptr;
}

/// Where the advertisement is: in its host view, or on the screen.
std::string frameText(const Notification& notification, bool isPopup) {
  const auto view = std::dynamic_pointer_cast<View>(notification.object());
  if (view == nullptr) {
    return "";
  }
  const Value* value = isPopup ? detail(notification, kPushAdPopupWindowKey) : nullptr;
  const auto window = value != nullptr ? value->object<Window>() : nullptr;
  const auto& [origin, size] =
      window != nullptr ? window->contentRectForFrameRect(window->frame()) : view->frame();
  const auto number = [](double each) { return std::to_string(static_cast<long>(each)); };
  return ", " + number(size.width) + "x" + number(size.height) + " at " + number(origin.x) + "," +
         number(origin.y);
}

}  // namespace

void observeNotifications(const std::function<void(const Notification&)>& handler) {
  for (const char* name : {kPushAdWillShowNotification, kPushAdDidCloseNotification,
                           kPushAdOpenIAPNotification, kPushAdIsTriggeringNavigationNotification}) {
    platform().notificationCenter->addObserver(name, handler);
  }
}

std::string describeNotification(const Notification& notification) {
  std::string text = notification.name() + ": ";
  if (notification.name() == kPushAdIsTriggeringNavigationNotification) {
    return text + "element " +
           MyPushAdUtil::fetchHTMLElementDescriptionForNotification(&notification)
               .value_or("unknown");
  }
  const bool isPopup = MyPushAdUtil::isPopupWindowForNotification(&notification);
  text += isPopup ? "pop-up" : "banner";
  if (const auto info = MyPushAdUtil::fetchPushAdInfoForNotification(&notification)) {
    text += ", ad " + std::to_string(info->adId());
  }
  text += frameText(notification, isPopup);
  const Value* address = detail(notification, kPushAdActionURLKey);
  if (const Url* url = address != nullptr ? address->as<Url>() : nullptr) {
    text += ", address " + url->absoluteString();
  }
  return text;
}

}  // namespace qorix::tools::preview
