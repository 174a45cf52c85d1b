#include <gmock/gmock.h>

#include <qorix/platform/WebView.h>

#include "fakes/FakePlatform.h"
#include "tools/preview/DecisionReason.h"

namespace qorix {
namespace {

using ::testing::AnyOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

Dictionary navigation(int type, const std::shared_ptr<DomNode>& node) {
  return {{kWebActionNavigationTypeKey, type},
          {kWebActionElementKey, Dictionary{{kWebElementDomNodeKey, node}}}};
}

std::shared_ptr<DomNode> element(const std::string& idName, const std::string& className) {
  return std::make_shared<DomHtmlElement>(idName, className);
}

/// Asks for the reason as the real controller answers.
class AskingListener : public WebPolicyDecisionListener {
 public:
  explicit AskingListener(std::function<std::string(bool use)> ask) : ask_(std::move(ask)) {}
  void use() override { reason = "use: " + ask_(true); }
  void ignore() override { reason = "ignore: " + ask_(false); }
  std::string reason;

 private:
  std::function<std::string(bool use)> ask_;
};

class DecisionReasonTest : public ::testing::Test {
 protected:
  DecisionReasonTest() {
    installPlatform(fakes_.services());
    makeController(MyPushAdModeBanner);
  }

  void makeController(std::int64_t mode) {
    controller_ = MyPushAdViewController::createInstanceWithPushAdMode(mode);
    controller_->view();
  }

  /// The controller's answer and the reason for it.
  std::string decide(const std::string& address, const Dictionary& information,
                     bool byOwnWebView = true) {
    const Url url = Url::fromWebEngine(address);
    AskingListener listener([&](bool use) {
      return decisionReason(*controller_, byOwnWebView, url, information, use);
    });
    controller_->webViewDecidePolicyForNavigationAction(
        byOwnWebView ? controller_->legacyWebView() : nullptr, information, url, {}, listener);
    return listener.reason;
  }

  std::string click(const std::string& address, const std::shared_ptr<DomNode>& node) {
    return decide(address, navigation(0, node));
  }

  FakePlatform fakes_;
  std::shared_ptr<MyPushAdViewController> controller_;
};

TEST_F(DecisionReasonTest, namesTheMarkAndWhereItWasFound) {
  const auto plain = element("", "");
  EXPECT_EQ(click("https://a.example/?ls=1", plain),
            "ignore: opens the App Store: the query holds ls=1");
  EXPECT_EQ(click("https://a.example/?a=1&zamopenout=1", plain),
            "ignore: opens the browser: the query holds zamopenout=1");
  EXPECT_EQ(click("https://a.example/", element("", "zamopenout")),
            "ignore: opens the browser: the clicked element's class holds zamopenout");
  EXPECT_EQ(click("https://a.example/?zamopeniap=1", plain),
            "ignore: asks the host for the purchase: the query holds zamopeniap=1");
  EXPECT_EQ(click("https://a.example/", element("", "cta zamopeniap")),
            "ignore: asks the host for the purchase: the clicked element's class holds zamopeniap "
            "(in cta zamopeniap)");
  EXPECT_EQ(click("https://a.example/", element("cocoa_close_web", "")),
            "ignore: closes the banner: the clicked element has the id cocoa_close_web");
}

TEST_F(DecisionReasonTest, namesTheParameterThatHoldsAMarkByChance) {
  EXPECT_EQ(click("https://a.example/?x=2&tools=12&y=3", nullptr),
            "ignore: opens the App Store: the query holds ls=1 (in tools=12)");
  EXPECT_EQ(click("https://a.example/?LS=1", nullptr),
            "ignore: opens the App Store: the query holds ls=1 (in LS=1)");
}

TEST_F(DecisionReasonTest, tellsWhatWasClickedWhenALinkIsFollowed) {
  EXPECT_EQ(click("https://a.example/", element("more", "cta")),
            "use: followed inside the ad: no mark was found; clicked: the element with id "
            "\"more\", class \"cta\"");
  EXPECT_THAT(click("https://a.example/", nullptr), EndsWith("no element of the page is known to "
                                                             "have been clicked"));
}

TEST_F(DecisionReasonTest, tellsNearMissesFromPlainLinks) {
  const auto textOfCloseControl = std::make_shared<DomText>(element("cocoa_close_web", ""));
  EXPECT_THAT(
      click("https://a.example/", textOfCloseControl),
      AllOf(StartsWith("use: followed"), HasSubstr("only the close control itself closes")));
  EXPECT_THAT(click("https://a.example/", element("", "ZamOpenOut")),
              AllOf(StartsWith("use: followed"), HasSubstr("small letters")));
}

TEST_F(DecisionReasonTest, aPopupIsNotClosedByItsPage) {
  makeController(MyPushAdModePopup);
  EXPECT_EQ(click("https://a.example/", element("cocoa_close_web", "")),
            "ignore: does nothing, a pop-up is closed by its window: the clicked element has the "
            "id cocoa_close_web");
}

TEST_F(DecisionReasonTest, onlyLinkClicksInTheOwnWebViewAreLookedAt) {
  const auto form = navigation(1, element("cocoa_close_web", ""));
  EXPECT_EQ(navigationKind(form), "form submission");
  EXPECT_EQ(decide("https://a.example/?ls=1", form),
            "use: let through: only link clicks are looked at");
  EXPECT_EQ(decide("https://a.example/?ls=1", navigation(0, nullptr), false),
            "use: let through: another web view asks");
  EXPECT_EQ(navigationKind({}), "link click");
  EXPECT_EQ(navigationKind(navigation(5, nullptr)), "load");
}

// Whatever is clicked, the reason is one for the answer that was really given.
TEST_F(DecisionReasonTest, neverContradictsTheAnswer) {
  int answers = 0;
  for (const char* query : {"", "?", "?ls=1", "?zamopenout=1", "?zamopeniap=1", "?tools=12&x",
                            "?ls=1&zamopeniap=1", "?ZAMOPENOUT=1"}) {
    for (const char* className : {"", "zamopenout", "zamopeniap", "a zamopenoutb", "ZAMOPENIAP"}) {
      for (const char* idName : {"", "cocoa_close_web", "other"}) {
        for (const bool isText : {false, true}) {
          for (int type = 0; type < 6; ++type) {
            auto node = element(idName, className);
            if (isText) {
              node = std::make_shared<DomText>(node);
            }
            const auto reason =
                decide(std::string("https://a.example/") + query, navigation(type, node));
            EXPECT_THAT(reason, AnyOf(StartsWith("ignore: opens the App Store: the query"),
                                      StartsWith("ignore: opens the browser: the "),
                                      StartsWith("ignore: asks the host for the purchase: the "),
                                      StartsWith("ignore: closes the banner: "),
                                      StartsWith("use: followed inside the ad: "),
                                      StartsWith("use: let through: ")));
            ++answers;
          }
        }
      }
    }
  }
  EXPECT_EQ(answers, 8 * 5 * 3 * 2 * 6);
}

TEST_F(DecisionReasonTest, claimsNothingAboutAnAnswerThatDoesNotFit) {
  const Url url = Url::fromWebEngine("https://a.example/?ls=1");
  EXPECT_EQ(decisionReason(*controller_, true, url, navigation(0, nullptr), true),
            "for a reason that is not known here");
}

}  // namespace
}  // namespace qorix
