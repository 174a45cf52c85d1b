#include "platform/gtk/PageClicks.h"

#include <glib.h>

#include <algorithm>
#include <utility>

#include <qorix/platform/WebView.h>

#include "platform/gtk/ScriptObject.h"

namespace qorix::gtk {

namespace {

// The most that a script can fill by clicking in an endless loop.
constexpr std::size_t kMostClicks = 64;

}  // namespace

struct PageClicks::Reported {
  explicit Reported(JSCValue* report)
      : key(numberProperty(report, "key")),
        isScripted(flagProperty(report, "isScripted")),
        element(flagProperty(report, "isHtmlElement")
                    ? std::make_shared<DomHtmlElement>(std::nullopt, std::nullopt)
                    : nullptr) {
    click.isInMainFrame = flagProperty(report, "isMainFrame");
    click.node = element == nullptr ? std::make_shared<DomNode>() : element;
    if (flagProperty(report, "isText")) {
      click.node = std::make_shared<DomText>(click.node);
    }
  }
  ~Reported() { stopTimer(); }
  Reported(const Reported&) = delete;
  Reported& operator=(const Reported&) = delete;

  void renewElement(JSCValue* report) const {
    if (element != nullptr) {
      element->renew(textProperty(report, "id"), textProperty(report, "className"));
    }
  }

  void stopTimer() {
    if (timer != 0) {
      g_source_remove(std::exchange(timer, 0));
    }
  }

  void callJudge() {
    stopTimer();
    if (const Judge judge = std::exchange(waiting, nullptr)) {
      judge(&click);
    }
  }

  const double key;
  const bool isScripted;
  const std::shared_ptr<DomHtmlElement> element;  // null if it is no HTML element
  Click click;
  std::string link;          // where it leads; empty: unknown
  bool isSeenToEnd = false;  // by the watcher: no listener stopped it on its way
  bool isGiven = false;      // to the navigation that it led to
  Judge waiting;
  guint timer = 0;
};

PageClicks::~PageClicks() = default;

void PageClicks::take(JSCValue* report) {
  const double key = numberProperty(report, "key");
  auto place = std::find_if(clicks_.begin(), clicks_.end(),
                            [key](const auto& each) { return each->key == key; });
  const bool isOver = textProperty(report, "event") == "clickOver";
  if (place == clicks_.end()) {
    if (isOver) {
      return;
    }
    clicks_.push_front(std::make_shared<Reported>(report));
    place = clicks_.begin();
  }
  const auto click = *place;
  if (!click->isGiven) {
    click->link = textProperty(report, "link");
    click->isSeenToEnd = flagProperty(report, "isSeenToEnd");
    click->renewElement(report);
  }
  if (isOver) {
    clicks_.erase(place);
    end(click, report);
  } else if (clicks_.size() > kMostClicks) {
    const auto oldest = clicks_.back();
    clicks_.pop_back();
    oldest->callJudge();
  }
}

// If a listener stopped a script's click, what became of the element is only seen now.
void PageClicks::end(const std::shared_ptr<Reported>& click, JSCValue* report) {
  if (!click->isSeenToEnd) {
    click->renewElement(report);
  }
  click->callJudge();
  click->renewElement(report);
}

void PageClicks::judge(const std::string& address, Judge judge) {
  // For an image map the engine puts the point that was hit after the link's own address.
  const auto place = std::find_if(clicks_.begin(), clicks_.end(), [&address](const auto& each) {
    return !each->isGiven && address.starts_with(each->link);
  });
  if (place == clicks_.end()) {
    judge(nullptr);
    return;
  }
  const auto click = *place;
  click->isGiven = true;
  if (!click->isScripted) {
    judge(&click->click);
    return;
  }
  click->waiting = std::move(judge);
  const auto onTimeUp = [](gpointer data) -> gboolean {
    const auto late = static_cast<std::weak_ptr<Reported>*>(data)->lock();
    if (late != nullptr) {
      late->timer = 0;
      late->callJudge();
    }
    return G_SOURCE_REMOVE;
  };
  click->timer =
      g_timeout_add_full(G_PRIORITY_DEFAULT, static_cast<guint>(kScriptTimeLimit * 1000), onTimeUp,
                         new std::weak_ptr<Reported>(click),
                         [](gpointer data) { delete static_cast<std::weak_ptr<Reported>*>(data); });
}

void PageClicks::endAll() {
  const List ended = std::exchange(clicks_, {});
  for (const auto& each : ended) {
    each->callJudge();
  }
}

}  // namespace qorix::gtk
