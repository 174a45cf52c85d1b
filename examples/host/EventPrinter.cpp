#include "EventPrinter.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>

#include "platform/Platform.h"
#include "qorix/MyPushAdNotifications.h"
#include "qorix/MyPushAdUtil.h"

namespace {

using Json = nlohmann::ordered_json;
using qorix::MyPushAdUtil;
using qorix::Notification;

void print(const Json& event) {
  // Texts come from pages: what is no UTF-8 must not end the host.
  const std::string line = event.dump(-1, ' ', false, Json::error_handler_t::replace);
  std::printf("%s\n", line.c_str());
  std::fflush(stdout);
}

Json number(double value) {
  return value == std::floor(value) ? Json(static_cast<std::int64_t>(value)) : Json(value);
}

Json hostViewIndex(const Notification& notification,
                   const std::vector<std::shared_ptr<qorix::View>>& hostViews) {
  for (std::size_t i = 0; i < hostViews.size(); ++i) {
    if (MyPushAdUtil::checkEqualsWithHostView(hostViews[i].get(), &notification)) {
      return i;
    }
  }
  return nullptr;
}

// Where the advertisement is: in its host view, or on the screen.
Json adFrame(const Notification& notification, bool popup) {
  std::optional<qorix::Rect> frame;
  if (const auto adView = std::dynamic_pointer_cast<qorix::View>(notification.object())) {
    frame = adView->frame();
    const qorix::Value* value =
        popup ? find(*notification.userInfo(), qorix::kPushAdPopupWindowKey) : nullptr;
    if (const auto window = value ? value->object<qorix::Window>() : nullptr) {
      frame = window->contentRectForFrameRect(window->frame());
    }
  }
  if (!frame) {
    return nullptr;
  }
  return {number(frame->origin.x), number(frame->origin.y), number(frame->size.width),
          number(frame->size.height)};
}

Json actionUrl(const Notification& notification) {
  const qorix::Value* value = notification.userInfo()
                                  ? find(*notification.userInfo(), qorix::kPushAdActionURLKey)
                                  : nullptr;
  const qorix::Url* url = value ? value->as<qorix::Url>() : nullptr;
  return url ? Json(url->absoluteString()) : Json(nullptr);
}

Json clickedElement(const Notification& notification) {
  if (notification.name() != qorix::kPushAdIsTriggeringNavigationNotification) {
    return nullptr;
  }
  const auto element = MyPushAdUtil::fetchHTMLElementDescriptionForNotification(&notification);
  return element ? Json(*element) : Json(nullptr);
}

}  // namespace

void printEvent(const char* name) { print({{"event", name}}); }

void printNotifications(std::vector<std::shared_ptr<qorix::View>> hostViews) {
  const auto printOne = [hostViews = std::move(hostViews)](const Notification& notification) {
    const bool popup = MyPushAdUtil::isPopupWindowForNotification(&notification);
    const auto info = MyPushAdUtil::fetchPushAdInfoForNotification(&notification);
    print({{"event", notification.name()},
           {"hostView", hostViewIndex(notification, hostViews)},
           {"popup", popup},
           {"adId", info ? Json(info->adId()) : Json(nullptr)},
           {"frame", adFrame(notification, popup)},
           {"url", actionUrl(notification)},
           {"element", clickedElement(notification)}});
  };
  for (const char* name :
       {qorix::kPushAdWillShowNotification, qorix::kPushAdDidCloseNotification,
        qorix::kPushAdOpenIAPNotification, qorix::kPushAdIsTriggeringNavigationNotification}) {
    qorix::platform().notificationCenter->addObserver(name, printOne);
  }
}
