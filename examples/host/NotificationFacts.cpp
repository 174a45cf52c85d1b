#include "NotificationFacts.h"

#include <memory>

#include <qorix/MyPushAdNotifications.h>
#include <qorix/MyPushAdUtil.h>
#include <qorix/platform/Platform.h>

namespace {

using qorix::MyPushAdUtil;
using qorix::Notification;

const qorix::Value* detail(const Notification& notification, const char* key) {
  return notification.userInfo() ? find(*notification.userInfo(), key) : nullptr;
}

std::optional<qorix::Rect> adFrame(const Notification& notification, bool isPopup) {
  const auto adView = std::dynamic_pointer_cast<qorix::View>(notification.object());
  if (adView == nullptr) {
    return std::nullopt;
  }
  const qorix::Value* value =
      isPopup ? detail(notification, qorix::kPushAdPopupWindowKey) : nullptr;
  const auto window = value ? value->object<qorix::Window>() : nullptr;
  return window ? window->contentRectForFrameRect(window->frame()) : adView->frame();
}

}  // namespace

NotificationFacts readNotification(const Notification& notification) {
  NotificationFacts facts;
  facts.isPopup = MyPushAdUtil::isPopupWindowForNotification(&notification);
  if (const auto info = MyPushAdUtil::fetchPushAdInfoForNotification(&notification)) {
    facts.adId = info->adId();
  }
  facts.frame = adFrame(notification, facts.isPopup);
  const qorix::Value* value = detail(notification, qorix::kPushAdActionURLKey);
  if (const qorix::Url* url = value ? value->as<qorix::Url>() : nullptr) {
    facts.url = url->absoluteString();
  }
  if (notification.name() == qorix::kPushAdIsTriggeringNavigationNotification) {
    facts.element = MyPushAdUtil::fetchHTMLElementDescriptionForNotification(&notification);
  }
  return facts;
}

void observeNotifications(const std::function<void(const Notification&)>& handler) {
  for (const char* name :
       {qorix::kPushAdWillShowNotification, qorix::kPushAdDidCloseNotification,
        qorix::kPushAdOpenIAPNotification, qorix::kPushAdIsTriggeringNavigationNotification}) {
    qorix::platform().notificationCenter->addObserver(name, handler).keep();
  }
}
