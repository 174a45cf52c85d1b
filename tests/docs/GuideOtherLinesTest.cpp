#include <regex>
#include <string>

#include <qorix/MyPushAdManager.h>
#include <qorix/MyPushAdViewController.h>
#include <qorix/platform/Error.h>

#include "docs/GuideTest.h"
#include "fakes/FakePlatform.h"
#include "fakes/FakePolicyListener.h"

namespace qorix::test {
namespace {

using testing::Contains;

/// A whole host on fakes.
class GuideOtherLinesTest : public testing::Test {
 protected:
  GuideOtherLinesTest() {
    installPlatform(fakes_.services());
    fakes_.applicationsFolder->contents->push_back({true, "Example Viewer.app"});
    manager_->configureWithAppBundle(platform().mainBundle);
    manager_->prepareAndShowAdWithHostView(std::make_shared<FakeView>(),
                                           MyPushAdFileHostModeWebServer, "https://example.com/");
  }

  void fetch(const std::string& text) {
    fakes_.runLoop->advance(60);  // after a failure another attempt begins
    fakes_.urlSessions->sessions.at(0)->deliver(text);
    fakes_.urlSessions->sessions.at(0)->complete();
    fakes_.runLoop->runUntilIdle();
  }

  FakePlatform fakes_;
  std::shared_ptr<MyPushAdManager> manager_ = MyPushAdManager::sharedPushAdManager();
};

/// Whether a line ends in that text, in which "…" matches anything.
bool isLogged(const Lines& lines, const std::string& text) {
  const std::string gap = "…";
  const auto cut = text.find(gap);
  const auto head = text.substr(0, cut);
  const auto tail = cut == text.npos ? "" : text.substr(cut + gap.size());
  for (const auto& line : lines) {
    const auto begin = line.find(head);
    if (begin != line.npos &&
        (cut == text.npos ? begin + head.size() == line.size() : line.ends_with(tail))) {
      return true;
    }
  }
  return false;
}

TEST_F(GuideOtherLinesTest, theOtherLinesAreWhatAHostLogs) {
  const Guide guide;
  const std::string off =
      std::regex_replace(guide.block("minimal"), std::regex("</push_ad>"),
                         "<promo_app_name>Example Viewer</promo_app_name></push_ad>");
  fetch("not XML");
  fetch(off);
  fakes_.urlSessions->sessions.at(0)->complete(Error{"no network", 1, ""});
  fakes_.runLoop->runUntilIdle();
  const auto controller = MyPushAdViewController::createInstanceWithPushAdMode(MyPushAdModeBanner);
  controller->view();
  controller->processAdFilterFeatureIfNeeded(controller->legacyWebView());
  FakePolicyListener listener;
  for (const auto* address : {"https://example.com/?ls=1", "https://example.com/?zamopenout=1",
                              "file:///etc/hosts?zamopenout=1", "https://example.com/?ls=1"}) {
    controller->webViewDecidePolicyForNavigationAction(controller->legacyWebView(),
                                                       {{kWebActionIsUserActKey, false}},
                                                       *Url::parse(address), {}, listener);
  }
  const auto lines = fakes_.log->lines();
  for (const auto& row : guide.table("Other lines")) {
    EXPECT_TRUE(isLogged(lines, codesIn(row.at(0)).at(0)))
        << row.at(0) << " in " << testing::PrintToString(lines);
  }
  EXPECT_THAT(lines, Contains(testing::HasSubstr(" 353: ZAM <=> Opening URL:[macappstore:")));
  EXPECT_THAT(lines, Contains(testing::HasSubstr(" 361: ZAM <=> Opening URL:[https:")));
}

}  // namespace
}  // namespace qorix::test
