#include "tools/adcheck/report/Describe.h"

#include <cstdint>

#include "presentation/AdFrameLayout.h"
#include "tools/common/Wording.h"

namespace qorix::tools::adcheck {

namespace {

Size sizeOf(const MyPushAdInfo& info) {
  return {static_cast<double>(info.width()), static_cast<double>(info.height())};
}

std::string bannerFrameText(const MyPushAdInfo& info, const Size& view) {
  const Rect frame =
      bannerFrame(view, {info.embed(), sizeOf(info), static_cast<double>(info.offsetx()),
                         static_cast<double>(info.offsety())});
  const auto& [origin, size] = frame;
  const bool isInside = origin.x >= 0 && origin.y >= 0 && origin.x + size.width <= view.width &&
                        origin.y + size.height <= view.height;
  return "x " + numberText(origin.x) + ", y " + numberText(origin.y) + " from the lower left, " +
         sizeText(size.width, size.height) + ", in a host view of " +
         sizeText(view.width, view.height) + (isInside ? "" : "; it passes the view's edges");
}

}  // namespace

std::string times(std::int64_t count) {
  return count == 1 ? "once" : std::to_string(count) + " times";
}

std::string frameOf(const MyPushAdInfo& info, const Size& view) {
  if (info.embed() < 0) {
    return "none";
  }
  if (info.embed() > 0) {
    return bannerFrameText(info, view);
  }
  const bool hasSize = info.width() > 0 && info.height() > 0;
  const Size size = sizeOf(info);
  return (hasSize ? sizeText(size.width, size.height) : "the size of the window") +
         ", in the middle of the screen, whatever the host view";
}

std::string decisionOf(const HostRun& run, const Options& options) {
  const MyPushAdInfo& info = *run.record;
  const std::string stored = inQuotes(options.storedVersion.value_or(""));
  const std::string count = std::to_string(info.count());
  switch (run.decision.reason) {
    case DecisionReason::disabled:
      return "no, it is switched off";
    case DecisionReason::usedUp:
      return "no, this version was shown " + times(run.decision.storedCount) + " and count is " +
             count;
    case DecisionReason::parked:
      return "a showing is counted, but never seen: delay is " + std::to_string(info.delay());
    case DecisionReason::nothingToShow:
      return "a showing is counted, but nothing is shown: embed is " + std::to_string(info.embed());
    case DecisionReason::dueFirst:
      return "yes, nothing was shown on this machine yet, so count is not looked at";
    case DecisionReason::dueNewVersion:
      return "yes, " + stored + " was shown, which is another version: counted from 0";
    case DecisionReason::dueCounted:
      return "yes, this version was shown " + times(run.decision.storedCount - 1) +
             " and count is " + count;
    case DecisionReason::dueUncounted:
      break;
  }
  return "yes, each time: it has no version";
}

std::string languagesOf(const std::optional<LocalizedTexts>& texts) {
  std::string list;
  for (const auto& [language, text] : texts.value_or(LocalizedTexts())) {
    list += (list.empty() ? "" : ", ") + printable(language);
  }
  return list;
}

}  // namespace qorix::tools::adcheck
