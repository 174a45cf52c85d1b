#pragma once

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include <qorix/gtk3.h>
#include <qorix/platform/Platform.h>

#include "fakes/RecordingLog.h"
#include "support/Picture.h"
#include "support/TestDesktop.h"

namespace qorix {

inline void PrintTo(const Size& size, std::ostream* out) {
  *out << size.width << " x " << size.height;
}

inline void PrintTo(const Rect& rect, std::ostream* out) {
  *out << "(" << rect.origin.x << ", " << rect.origin.y << ") ";
  PrintTo(rect.size, out);
}

}  // namespace qorix

namespace qorix::test {

inline constexpr Pixel kRed = {255, 0, 0};
inline constexpr Pixel kGreen = {0, 255, 0};
inline constexpr Pixel kBlue = {0, 0, 255};
inline constexpr Pixel kYellow = {255, 255, 0};
inline constexpr double kPatience =
    40;  // seconds; sanitized and beside others, a page takes its time

/// Starts the desktop that the tests of this process use, until the process ends. Returns false if
/// it cannot be started. The only test to run can ask for another one by its name. "onTwoMonitors…"
/// has two side by side, each of 800 x 900; "onAFineScreen…" has two pixels for each point; for
/// "…WithClientDecorations" GTK draws the decorations. "WaylandWindowTest…" runs on sway,
/// "onTwoOutputs…" on the one with two outputs, "…UnderWeston" on weston; what
/// "tellsTheCompositor…" sends is written to standard error. "ScreenReaderTest…" has a bus for
/// assistive technology as well.
bool startDesktop();

/// The desktop that this process uses.
const TestDesktop& desktop();

/// What the desktop shows now.
Picture screenPicture();

/// The colour of the desktop at a point, y downwards.
Pixel colorAt(int x, int y);

/// The smallest rectangle around what has that colour now, in points; without size if nothing has.
GdkRectangle placeOf(const Pixel& color);

/// Clicks at a point, as a user does.
void clickOn(int x, int y, int button = 1);

/// Runs the main loop until `condition` holds. Returns false if it does not within `seconds`.
bool waitFor(const std::function<bool()>& condition, double seconds = kPatience);

/// Runs the main loop until there is nothing left to do now.
void serveLoop();

/// Runs a program and returns what it wrote. Fails the test when the program fails.
std::string run(const std::vector<std::string>& command);

/// A widget of one plain colour.
GtkWidget* newColoredArea(const Pixel& color, int minimalWidth = 0, int minimalHeight = 0);

/// A window of a host: a green overlay of the given size with yellow neighbours, 40 points wide, on
/// all sides.
class HostWindow {
 public:
  HostWindow(int width, int height);
  ~HostWindow();
  HostWindow(const HostWindow&) = delete;
  HostWindow& operator=(const HostWindow&) = delete;

  GtkWindow* window() const { return window_; }
  GtkOverlay* overlay() const { return overlay_; }
  std::shared_ptr<View> view() const { return gtk::viewForOverlay(overlay_); }

  /// Shows the window and waits until it is on the screen.
  void show();
  void resizeOverlay(int width, int height);
  /// Where the overlay is on the screen, in points, y downwards.
  GdkRectangle overlayOnScreen() const;
  void destroy();

 private:
  static constexpr int kMargin = 40;  // the neighbours' width

  bool isOnScreen() const;

  GtkWindow* window_;
  GtkOverlay* overlay_;
};

/// A page without anything but its colour.
inline constexpr const char* kRedPage = "<body style='margin:0;background:#f00'></body>";

/// Installs the real platform with a log that can be read; GLib's warnings are failures.
class GtkTest : public testing::Test {
 public:
  ~GtkTest() override;

 protected:
  GtkTest();

  std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>();
};

/// Records the questions of a web view and answers them.
class RecordingDelegate : public WebViewDelegate {
 public:
  struct Question {
    Dictionary action;
    std::string url;
    bool isMainFrame;
  };

  void webViewDidFinishLoadForFrame(const std::shared_ptr<WebView>& webView,
                                    const WebFrame& frame) override {
    finishedFrames.push_back(frame.isMainFrame);
    if (onFinish) {
      onFinish(webView);
    }
  }

  void webViewDecidePolicyForNavigationAction(const std::shared_ptr<WebView>& webView,
                                              const Dictionary& action, const Url& url,
                                              const WebFrame& frame,
                                              WebPolicyDecisionListener& listener) override {
    questions.push_back({action, url.absoluteString(), frame.isMainFrame});
    if (onQuestion) {
      onQuestion(webView);
    }
    const bool isLink = find(action, kWebActionNavigationTypeKey)->integerValue() == 0;
    if (isLink && ignoresLinks) {
      listener.ignore();
    } else {
      listener.use();
    }
  }

  /// The questions about clicked links.
  std::vector<Question> linkQuestions() const {
    std::vector<Question> links;
    for (const auto& question : questions) {
      if (find(question.action, kWebActionNavigationTypeKey)->integerValue() == 0) {
        links.push_back(question);
      }
    }
    return links;
  }

  int mainLoads() const {
    return static_cast<int>(std::count(finishedFrames.begin(), finishedFrames.end(), true));
  }

  bool ignoresLinks = true;
  std::function<void(const std::shared_ptr<WebView>&)> onFinish;
  std::function<void(const std::shared_ptr<WebView>&)> onQuestion;
  std::vector<bool> finishedFrames;  // whether it was the main frame
  std::vector<Question> questions;
};

/// The node that was hit, or null when the question names none.
std::shared_ptr<DomNode> clickedNode(const RecordingDelegate::Question& question);

/// The views of the library's interface file and their page.
class Page {
 public:
  Page();

  void load(const std::string& html);
  /// Loads and waits for the main frame's report.
  void loadAndWait(const std::string& html);
  /// Shows the page as a banner of the host.
  void showIn(const HostWindow& host, const Rect& frame);
  std::shared_ptr<WebView> webView() const { return interface->webView.lock(); }
  std::string evaluate(const std::string& script) const {
    return webView()->stringByEvaluatingJavaScriptFromString(script);
  }

  std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
  std::optional<Interface> interface;
};

}  // namespace qorix::test
