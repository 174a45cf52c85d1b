#include "tools/preview/Preview.h"

#include <glib-unix.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <utility>

#include <qorix/MyPushAdManager.h>
#include <qorix/MyPushAdNotifications.h>
#include <qorix/MyPushAdUtil.h>
#include <qorix/platform/Platform.h>

#include "definition/AdReader.h"
#include "definition/XmlDocument.h"
#include "examples/host/NotificationFacts.h"
#include "tools/adcheck/Refusal.h"
#include "tools/preview/AdDescription.h"
#include "tools/preview/Lines.h"
#include "tools/preview/Painting.h"

namespace {

constexpr guint kPatience = 30;  // seconds that a due picture waits for the page

std::string join(const std::vector<std::string>& texts, const char* between) {
  std::string joined;
  for (const auto& text : texts) {
    joined += (joined.empty() ? "" : between) + text;
  }
  return joined;
}

/// Calls a method without arguments once, after that time.
template <class Self, void (Self::*method)()>
void performLater(Self* self, guint milliseconds) {
  g_timeout_add(
      milliseconds,
      [](gpointer data) -> gboolean {
        (static_cast<Self*>(data)->*method)();
        return G_SOURCE_REMOVE;
      },
      self);
}

std::string frameAndAddress(const NotificationFacts& facts) {
  std::string text;
  if (facts.frame) {
    const auto& [origin, size] = *facts.frame;
    const auto number = [](double value) { return std::to_string(static_cast<long>(value)); };
    text += ", " + number(size.width) + "x" + number(size.height) + " at " + number(origin.x) +
            "," + number(origin.y);
  }
  if (facts.url) {
    text += ", address " + *facts.url;
  }
  return text;
}

}  // namespace

Preview::Preview(Options options, std::string text, std::optional<Handover> past, char** argv)
    : options_(std::move(options)),
      text_(std::move(text)),
      past_(std::move(past)),
      argv_(argv),
      services_(installServices(options_)) {
  if (options_.screenshot) {
    options_.quitAfter = options_.quitAfter.value_or(0);
    status_ = 1;  // until the picture is taken, however the main loop ends
  }
  if (past_) {
    quitAt_ = past_->quitAt;
  } else if (options_.quitAfter) {
    quitAt_ =
        g_get_monotonic_time() + static_cast<std::int64_t>(*options_.quitAfter * G_USEC_PER_SEC);
  }
}

int Preview::run() {
  createWindow();
  takeSignals();
  if (quitAt_ != 0) {
    const std::int64_t left = std::max<std::int64_t>(quitAt_ - g_get_monotonic_time(), 0);
    performLater<Preview, &Preview::timeIsOver>(this, static_cast<guint>(left / 1000));
  }
  gtk_widget_show(editor_.window);
  gtk_main();
  printLine("quit", "status " + std::to_string(status_));
  return status_;
}

void Preview::createWindow() {
  editor_ = createEditorWindow("Preview of " + options_.file + " - " + options_.app, 1,
                               options_.viewWidth, options_.viewHeight);
  GtkWindow* window = GTK_WINDOW(editor_.window);
  if (past_) {
    gtk_window_move(window, past_->x, past_->y);
    gtk_window_set_default_size(window, past_->width, past_->height);
    gtk_window_set_focus_on_map(window, FALSE);  // the user is at work in an editor
  }
  g_signal_connect(window, "map-event", G_CALLBACK(onMap), this);
  g_signal_connect(window, "delete-event", G_CALLBACK(onDelete), this);
}

void Preview::takeSignals() {
  for (const int signal : {SIGINT, SIGTERM}) {
    g_unix_signal_add(
        signal,
        [](gpointer self) -> gboolean {
          static_cast<Preview*>(self)->closed();
          return G_SOURCE_CONTINUE;
        },
        this);
  }
}

gboolean Preview::onMap(GtkWidget* /*window*/, GdkEvent* /*event*/, gpointer self) {
  static_cast<Preview*>(self)->begin();
  return GDK_EVENT_PROPAGATE;
}

// The window stays until the process ends.
gboolean Preview::onDelete(GtkWidget* /*window*/, GdkEvent* /*event*/, gpointer self) {
  static_cast<Preview*>(self)->closed();
  return GDK_EVENT_STOP;
}

void Preview::begin() {
  if (std::exchange(hasBegun_, true)) {
    return;
  }
  const auto languages =
      qorix::platform().standardUserDefaults->stringArrayForKey(qorix::kAppleLanguagesKey);
  printLine("ready", "host " + options_.app + ", languages " +
                         (languages ? join(*languages, ", ") : "unknown (en)") + ", applications " +
                         options_.applications.value_or("none"));
  observeNotifications([this](const qorix::Notification& each) { printNotification(each); });
  show(text_);
  watch_ = std::make_unique<DocumentWatch>(
      options_.file, text_,
      DocumentWatch::Handlers{
          [this](const std::string& text) { documentChanged(text); },
          [](const std::string& why) { printLine("unreadable", why + "; nothing changes"); }});
  if (isTimeOver_) {
    timeIsOver();
  }
}

// Showing.

std::shared_ptr<qorix::MyPushAdInfo> Preview::parse(const std::string& text) {
  services_.log->takeLines();
  return qorix::MyPushAdUtil::parseXMLWithString(text);
}

void Preview::show(const std::string& text) {
  const auto info = parse(text);
  if (info == nullptr) {
    isRefused_ = true;
    printRefusal(text, services_.log->takeLines(), "waiting for " + options_.file + " to change");
    return;
  }
  printLine("document", describeAd(*info));
  const auto ofHost = reasonsOfHost(*info, areAllPromotedInstalled(text));
  const auto ofPlace = reasonsOfPlace(*info);
  if (!ofPlace.empty() || (!ofHost.empty() && !options_.anyway)) {
    auto reasons = ofHost;
    reasons.insert(reasons.end(), ofPlace.begin(), ofPlace.end());
    printLine("not shown", join(reasons, "; "));
  } else {
    if (!ofHost.empty()) {
      printLine("shown anyway", join(ofHost, "; "));
    }
    stage_ = Stage::coming;
  }
  if (const auto ofContent = reasonsOfContent(*info); !ofContent.empty()) {
    printLine("empty", join(ofContent, "; "));
    stage_ = Stage::nothing;
  }
  if (options_.anyway) {
    info->setEnable(true);
    info->setDelay(0);
  }
  showAd(info);
}

// The library says so only by switching the advertisement off.
bool Preview::areAllPromotedInstalled(const std::string& text) const {
  const auto document = qorix::XmlDocument::parse(text);
  if (!document) {
    return false;
  }
  const auto reading = qorix::readAdForHost(*document, options_.app);
  services_.log->setKeepsBack(true);  // it has been logged for the host
  const bool areAll = qorix::MyPushAdUtil::areAllPromoAppsAlreadyInstalled(reading.promotedNames);
  services_.log->setKeepsBack(false);
  return areAll;
}

void Preview::showAd(const std::shared_ptr<const qorix::MyPushAdInfo>& info) {
  if (info->enable() && info->delay() > 0) {
    printLine("waiting", "the advertisement comes after " + std::to_string(info->delay()) + " s");
  }
  // Pages are told the host that the manager knows.
  qorix::MyPushAdManager::sharedPushAdManager()->configureWithAppBundle(
      qorix::platform().mainBundle);
  presenter_ =
      qorix::MyPushAdOperator::createInstanceWithHostView<PreviewOperator>(editor_.views.front());
  presenter_->setRegistry(services_.registry);
  presenter_->setPageDidLoad([this] { pageDidLoad(); });
  presenter_->processShowAdIfNeededWithPushAdInfo(info);
}

void Preview::printNotification(const qorix::Notification& notification) {
  const NotificationFacts facts = readNotification(notification);
  std::string text = notification.name() + ": ";
  if (notification.name() == qorix::kPushAdIsTriggeringNavigationNotification) {
    text += "element " + facts.element.value_or("unknown");
  } else {
    text += (facts.isPopup ? "pop-up" : "banner") +
            (facts.adId ? ", ad " + std::to_string(*facts.adId) : "") + frameAndAddress(facts);
  }
  printLine("notification", text);
  if (notification.name() == qorix::kPushAdWillShowNotification && stage_ == Stage::coming) {
    stage_ = Stage::loading;
  } else if (notification.name() == qorix::kPushAdDidCloseNotification) {
    stage_ = Stage::nothing;
    takeDuePicture();
  }
}

void Preview::pageDidLoad() {
  printLine("page", "loaded");
  if (stage_ == Stage::loading || stage_ == Stage::coming) {
    stage_ = Stage::shown;
  }
  takeDuePicture();
}

void Preview::printRefusal(const std::string& text, const std::vector<std::string>& logLines,
                           const std::string& whatFollows) const {
  const qorix::adcheck::SourceDocument source(text);
  std::string why;
  if (const auto refusal = readForHost(source, options_.app).refusal) {
    const auto [line, column] = source.positionOf(refusal->offset);
    why = options_.file + ":" + std::to_string(line) + ":" + std::to_string(column) + ": " +
          refusal->words;
  }
  printLine("refused", why + " (" + join(logLines, "; ") + "); " + whatFollows);
}

// Showing another version.

void Preview::documentChanged(const std::string& text) {
  if (text == text_) {
    printLine("unchanged", options_.file + " holds again what is shown");
    return;
  }
  services_.log->setKeepsBack(true);
  const bool isGood = parse(text) != nullptr;
  services_.log->setKeepsBack(false);
  if (isGood) {
    startAnewWith(text);
    return;
  }
  const auto lines = services_.log->takeLines();
  for (const auto& line : lines) {
    services_.log->write(line);
  }
  printRefusal(text, lines, "what is on screen stays");
}

void Preview::startAnewWith(const std::string& text) {
  printLine("reload", options_.file + " has changed");
  Handover handover;
  handover.text = text;
  GtkWindow* window = GTK_WINDOW(editor_.window);
  gtk_window_get_position(window, &handover.x, &handover.y);
  gtk_window_get_size(window, &handover.width, &handover.height);
  handover.quitAt = quitAt_;
  const int error = startAnew(argv_, handover);
  printLine("reload", std::string("failed: ") + std::strerror(error));
}

// Quitting.

void Preview::timeIsOver() {
  isTimeOver_ = true;
  if (!hasBegun_) {
    return;  // nobody has looked at the document yet
  }
  if (!options_.screenshot) {
    quit(isRefused_ ? 1 : 0);
    return;
  }
  takeDuePicture();
  performLater<Preview, &Preview::patienceIsOver>(this, kPatience * 1000);
}

void Preview::patienceIsOver() {
  failPicture(stage_ == Stage::coming ? "the advertisement has not come"
                                      : "the advertisement has not been painted");
}

// By the user.
void Preview::closed() {
  if (options_.screenshot) {
    failPicture("closed before it was taken");
  } else {
    quit(0);
  }
}

void Preview::takeDuePicture() {
  if (!isTimeOver_ || !options_.screenshot) {
    return;
  }
  if (stage_ == Stage::nothing) {
    failPicture("nothing is shown");
    return;
  }
  const auto webView = presenter_->pushAdViewController()->legacyWebView();
  if (stage_ == Stage::shown && webView != nullptr) {
    whenPainted(*webView, [this, webView] { takePicture(*webView); });
  }
}

void Preview::takePicture(const qorix::View& view) {
  const std::string why = savePicture(view, *options_.screenshot);
  if (!why.empty()) {
    failPicture(why);
    return;
  }
  printLine("screenshot", *options_.screenshot);
  quit(0);
}

void Preview::failPicture(const std::string& why) {
  printLine("screenshot", "none: " + why);
  quit(1);
}

void Preview::quit(int status) {
  status_ = status;
  gtk_main_quit();
}
