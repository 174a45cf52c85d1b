#include "EventPrinter.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>

#include <qorix/qorix.h>

namespace {

using Json = nlohmann::ordered_json;
using qorix::MyPushAdEvent;

void print(const Json& event) {
  // Texts come from pages: what is no UTF-8 must not end the host.
  const std::string line = event.dump(-1, ' ', false, Json::error_handler_t::replace);
  std::printf("%s\n", line.c_str());
  std::fflush(stdout);
}

Json number(double value) {
  return value == std::floor(value) ? Json(static_cast<std::int64_t>(value)) : Json(value);
}

Json indexOf(const std::shared_ptr<qorix::View>& view,
             const std::vector<std::shared_ptr<qorix::View>>& hostViews) {
  const auto found = std::ranges::find(hostViews, view);
  return found == hostViews.end() ? Json(nullptr) : Json(found - hostViews.begin());
}

Json adFrame(const std::optional<qorix::Rect>& frame) {
  if (!frame) {
    return nullptr;
  }
  return {number(frame->origin.x), number(frame->origin.y), number(frame->size.width),
          number(frame->size.height)};
}

}  // namespace

void printEvent(const char* name) { print({{"event", name}}); }

std::vector<qorix::NotificationObservation> printAdEvents(
    std::vector<std::shared_ptr<qorix::View>> hostViews) {
  return MyPushAdEvent::observe([hostViews = std::move(hostViews)](const MyPushAdEvent& event) {
    print({{"event", event.name},
           {"hostView", indexOf(event.hostView, hostViews)},
           {"popup", event.isPopup},
           {"adId", event.info == nullptr ? Json(nullptr) : Json(event.info->adId())},
           {"frame", adFrame(event.frame)},
           {"url", event.url ? Json(event.url->absoluteString()) : Json(nullptr)},
           {"element", event.element ? Json(*event.element) : Json(nullptr)}});
  });
}
