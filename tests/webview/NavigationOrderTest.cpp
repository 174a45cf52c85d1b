#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <qorix/MyPushAdViewController.h>

#include "fakes/FakePlatform.h"
#include "support/Clicks.h"

namespace qorix {
namespace {

using ::testing::ElementsAre;

/// Records what is decided, logged, opened and reported, in order.
class NavigationOrderTest : public ::testing::Test {
 protected:
  struct Witness : WebPolicyDecisionListener, Log, Workspace, MyPushAdViewControllerDelegate {
    void use() override { events.emplace_back("use"); }
    void ignore() override { events.emplace_back("ignore"); }
    void write(std::string_view /*line*/) override { events.emplace_back("log"); }
    void openUrl(const Url& /*url*/) override { events.emplace_back("open"); }
    void pushAdViewControllerCloseButtonDidClick(
        const std::shared_ptr<MyPushAdViewController>& /*controller*/) override {
      events.emplace_back("close");
    }
    void pushAdViewControllerOpenIAPButtonDidClickWithURL(
        const std::shared_ptr<MyPushAdViewController>& /*controller*/,
        const std::optional<Url>& /*url*/) override {
      events.emplace_back("purchase");
    }
    std::vector<std::string> events;
  };

  NavigationOrderTest() {
    auto services = fakes_.services();
    services.log = witness_;
    services.workspace = witness_;
    installPlatform(std::move(services));
    controller_ = MyPushAdViewController::createInstanceWithPushAdMode(MyPushAdModeBanner);
    controller_->setDelegate(witness_);
    controller_->view();
  }

  std::vector<std::string> eventsOf(const std::string& url, const Dictionary& actionInformation) {
    witness_->events.clear();
    controller_->webViewDecidePolicyForNavigationAction(
        controller_->legacyWebView(), actionInformation, Url::fromWebEngine(url), {}, *witness_);
    return witness_->events;
  }

  FakePlatform fakes_;
  std::shared_ptr<MyPushAdViewController> controller_;
  std::shared_ptr<Witness> witness_ = std::make_shared<Witness>();
};

TEST_F(NavigationOrderTest, theAnswerComesBeforeTheActionAndTheLogBeforeTheOpening) {
  EXPECT_THAT(eventsOf("https://example.com/?ls=1", {}), ElementsAre("ignore", "log", "open"));
  EXPECT_THAT(eventsOf("https://example.com/?zamopenout=1", {}),
              ElementsAre("ignore", "log", "open"));
  EXPECT_THAT(eventsOf("https://example.com/?zamopeniap=1", {}), ElementsAre("ignore", "purchase"));
  EXPECT_THAT(eventsOf("https://example.com/", click(htmlElement("cocoa_close_web", ""))),
              ElementsAre("ignore", "close"));
}

}  // namespace
}  // namespace qorix
