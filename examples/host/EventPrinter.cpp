#include "EventPrinter.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>

#include "NotificationFacts.h"
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

Json adFrame(const std::optional<qorix::Rect>& frame) {
  if (!frame) {
    return nullptr;
  }
  return {number(frame->origin.x), number(frame->origin.y), number(frame->size.width),
          number(frame->size.height)};
}

template <class T>
Json orNull(const std::optional<T>& value) {
  return value ? Json(*value) : Json(nullptr);
}

}  // namespace

void printEvent(const char* name) { print({{"event", name}}); }

void printNotifications(std::vector<std::shared_ptr<qorix::View>> hostViews) {
  observeNotifications([hostViews = std::move(hostViews)](const Notification& notification) {
    const NotificationFacts facts = readNotification(notification);
    print({{"event", notification.name()},
           {"hostView", hostViewIndex(notification, hostViews)},
           {"popup", facts.isPopup},
           {"adId", orNull(facts.adId)},
           {"frame", adFrame(facts.frame)},
           {"url", orNull(facts.url)},
           {"element", orNull(facts.element)}});
  });
}
