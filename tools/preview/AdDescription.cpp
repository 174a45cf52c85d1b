#include "tools/preview/AdDescription.h"

#include <cstdint>

#include "tools/common/Placement.h"

namespace qorix::tools::preview {

namespace {

std::string pair(std::int64_t first, const char* between, std::int64_t second) {
  return std::to_string(first) + between + std::to_string(second);
}

}  // namespace

std::string describeAd(const MyPushAdInfo& info) {
  std::string text = "ad " + std::to_string(info.adId()) + ", version " +
                     info.version().value_or("") + ", " + placementOf(info) + ", " +
                     pair(info.width(), "x", info.height());
  if (info.offsetx() != 0 || info.offsety() != 0) {
    text += ", offsets " + pair(info.offsetx(), " and ", info.offsety());
  }
  return text + ", after " + std::to_string(info.delay()) + " s, at most " +
         std::to_string(info.count()) + " times";
}

std::string describeEvent(const MyPushAdEvent& event) {
  if (event.kind == MyPushAdEvent::Kind::triggeringNavigation) {
    return event.name + ": element " + event.element.value_or("unknown");
  }
  std::string text = event.name + (event.isPopup ? ": pop-up" : ": banner");
  if (event.info != nullptr) {
    text += ", ad " + std::to_string(event.info->adId());
  }
  if (event.frame) {
    const auto whole = [](double each) { return static_cast<std::int64_t>(each); };
    const auto& [origin, size] = *event.frame;
    text += ", " + pair(whole(size.width), "x", whole(size.height)) + " at " +
            pair(whole(origin.x), ",", whole(origin.y));
  }
  return event.url ? text + ", address " + event.url->absoluteString() : text;
}

std::vector<std::string> reasonsOfHost(const MyPushAdInfo& info, bool allAppsInstalled) {
  std::vector<std::string> reasons;
  if (allAppsInstalled) {
    reasons.emplace_back("all applications that it promotes are installed");
  } else if (!info.enable()) {
    reasons.emplace_back("it is switched off (enable is 0)");
  }
  if (info.delay() < 0) {
    reasons.push_back("its delay is negative (" + std::to_string(info.delay()) + ")");
  }
  return reasons;
}

std::vector<std::string> reasonsOfPlace(const MyPushAdInfo& info) {
  if (info.embed() >= 0) {
    return {};
  }
  return {"it is neither a banner nor a pop-up (embed is " + std::to_string(info.embed()) + ")"};
}

std::vector<std::string> reasonsOfContent(const MyPushAdInfo& info) {
  std::vector<std::string> reasons;
  if (info.embed() > 0 && (info.width() < 1 || info.height() < 1)) {
    reasons.push_back("the banner has no size (" + pair(info.width(), "x", info.height()) + ")");
  }
  if (info.localizedHtmlString().value_or("").empty()) {
    reasons.emplace_back("there is no page in the user's language");
  }
  return reasons;
}

}  // namespace qorix::tools::preview
