#include <array>
#include <string_view>
#include <utility>

#include <qorix/MyPushAdEvent.h>
#include <qorix/MyPushAdNotifications.h>
#include <qorix/MyPushAdUtil.h>
#include <qorix/platform/DomNode.h>
#include <qorix/platform/Platform.h>
#include <qorix/platform/Window.h>

namespace qorix {

namespace {

constexpr std::array<std::pair<const char*, MyPushAdEvent::Kind>, 4> kKinds{{
    {kPushAdWillShowNotification, MyPushAdEvent::Kind::willShow},
    {kPushAdDidCloseNotification, MyPushAdEvent::Kind::didClose},
    {kPushAdOpenIAPNotification, MyPushAdEvent::Kind::openIAP},
    {kPushAdIsTriggeringNavigationNotification, MyPushAdEvent::Kind::triggeringNavigation},
}};

std::optional<MyPushAdEvent::Kind> kindOf(const std::string& name) {
  for (const auto& [known, kind] : kKinds) {
    if (name == known) {
      return kind;
    }
  }
  return std::nullopt;
}

template <class T>
std::shared_ptr<T> objectIn(const Notification& notification, const char* key) {
  const Value* value = notification.userInfo() ? find(*notification.userInfo(), key) : nullptr;
  return value == nullptr ? nullptr : value->object<T>();
}

std::optional<Rect> adFrame(const Notification& notification, bool isPopup) {
  const auto adView = std::dynamic_pointer_cast<View>(notification.object());
  if (adView == nullptr) {
    return std::nullopt;
  }
  const auto window = isPopup ? objectIn<Window>(notification, kPushAdPopupWindowKey) : nullptr;
  return window == nullptr ? adView->frame() : window->contentRectForFrameRect(window->frame());
}

}  // namespace

std::optional<MyPushAdEvent> MyPushAdEvent::read(const Notification& notification) {
  const auto kind = kindOf(notification.name());
  if (!kind) {
    return std::nullopt;
  }
  MyPushAdEvent event;
  event.kind = *kind;
  event.name = notification.name();
  event.isPopup =
      notification.userInfo() && MyPushAdUtil::isPopupWindowForNotification(notification);
  event.info = MyPushAdUtil::fetchPushAdInfoForNotification(notification);
  event.hostView = objectIn<View>(notification, kPushAdHostViewKey);
  event.frame = adFrame(notification, event.isPopup);
  if (notification.userInfo()) {
    const Value* value = find(*notification.userInfo(), kPushAdActionURLKey);
    if (const Url* url = value == nullptr ? nullptr : value->as<Url>()) {
      event.url = *url;
    }
  }
  if (objectIn<DomHtmlElement>(notification, kPushAdActionHTMLElementKey) != nullptr) {
    event.element = MyPushAdUtil::fetchHTMLElementDescriptionForNotification(notification);
  }
  return event;
}

std::vector<NotificationObservation> MyPushAdEvent::observe(
    const std::function<void(const MyPushAdEvent&)>& handler) {
  std::vector<NotificationObservation> observations;
  observations.reserve(kKinds.size());
  for (const auto& [name, kind] : kKinds) {
    observations.push_back(platform().notificationCenter->addObserver(
        name, [handler](const Notification& notification) {
          if (const auto event = read(notification)) {
            handler(*event);
          }
        }));
  }
  return observations;
}

}  // namespace qorix
