#include <cctype>
#include <memory>
#include <regex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <qorix/MyPushAdViewController.h>
#include <qorix/platform/DomNode.h>
#include <qorix/platform/WebView.h>

#include "docs/Guide.h"
#include "docs/GuideTest.h"
#include "fakes/FakeControllerDelegate.h"
#include "fakes/FakePlatform.h"
#include "fakes/FakePolicyListener.h"
#include "fakes/FakeWorkspace.h"
#include "support/Clicks.h"
#include "webview/OpeningLimit.h"
#include "webview/PageScripts.h"

namespace qorix::test {
namespace {

/// A click on a link: what the address and the clicked element hold.
struct Click {
  std::string query = {};
  std::string className = {};
  std::string id = {};
};

/// One line of the guide's table of marks.
struct Mark {
  std::string text;
  std::string place;  // "query", "class" or "id"
  bool isCaseCounting = false;
  std::string act;  // what the guide says that it does

  Click click() const { return clickWith(text); }
  Click clickWith(const std::string& spelling) const {
    return place == "query"   ? Click{.query = spelling}
           : place == "class" ? Click{.className = spelling}
                              : Click{.id = spelling};
  }
};

std::string actIn(std::string_view words) {
  for (const std::string_view act : {"App Store", "browser", "purchase", "closes"}) {
    if (words.find(act) != words.npos) {
      return std::string(act);
    }
  }
  return "unknown";
}

std::string inCapitals(std::string text) {
  for (char& c : text) {
    c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return text;
}

class GuidePageTest : public testing::Test {
 protected:
  GuidePageTest() {
    auto services = fakes_.services();
    services.workspace = workspace_;
    installPlatform(std::move(services));
    controller_->setDelegate(delegate_);
    controller_->view();
  }

  std::vector<Mark> marks() const {
    std::vector<Mark> marks;
    for (const auto& row : guide_.table("Links and marks")) {
      const std::string& where = row.at(1);
      marks.push_back({codeIn(row.at(0)),
                       where.starts_with("the query")   ? "query"
                       : where.starts_with("the class") ? "class"
                                                        : "id",
                       row.at(2) == "counts", actIn(row.at(3))});
    }
    return marks;
  }

  /// What the library does.
  std::string actOf(const Click& click) {
    FakePolicyListener listener;
    workspace_->opened.clear();
    delegate_->reports.clear();
    const std::string query = click.query.empty() ? "" : "?" + click.query;
    controller_->webViewDecidePolicyForNavigationAction(
        controller_->legacyWebView(), qorix::click(htmlElement(click.id, click.className)),
        *Url::parse("https://example.com/a" + query), {}, listener);
    if (listener.decisions.front() == "use") {
      return "followed";
    }
    if (!workspace_->opened.empty()) {
      return workspace_->opened.front().starts_with("macappstore:") ? "App Store" : "browser";
    }
    if (delegate_->reports.empty()) {
      return "nothing";
    }
    return delegate_->reports.front() == "close" ? "closes" : "purchase";
  }

  const Guide guide_;
  FakePlatform fakes_;
  std::shared_ptr<FakeWorkspace> workspace_ = std::make_shared<FakeWorkspace>();
  std::shared_ptr<FakeControllerDelegate> delegate_ = std::make_shared<FakeControllerDelegate>();
  std::shared_ptr<MyPushAdViewController> controller_ =
      MyPushAdViewController::createInstanceWithPushAdMode(MyPushAdModeBanner);
};

TEST_F(GuidePageTest, everyMarkActsAsTheGuideSays) {
  std::set<std::string> acts;
  for (const Mark& mark : marks()) {
    acts.insert(mark.act);
    EXPECT_EQ(actOf(mark.click()), mark.act) << mark.text;
    EXPECT_EQ(actOf(mark.clickWith(inCapitals(mark.text))),
              mark.isCaseCounting ? "followed" : mark.act)
        << mark.text;
    EXPECT_EQ(actOf(mark.clickWith("x" + mark.text + "x")),
              mark.place == "id" ? "followed" : mark.act)
        << mark.text;
  }
  EXPECT_EQ(acts, (std::set<std::string>{"App Store", "browser", "purchase", "closes"}));
  EXPECT_EQ(actOf({.query = "a=1", .className = "big", .id = "more"}), "followed");
}

TEST_F(GuidePageTest, noMarkIsLeftOut) {
  std::multiset<std::string> found;
  for (const Mark& mark : marks()) {
    found.insert(mark.act + " by the " + mark.place);
  }
  // As the library's tests of a click take them: an address, and a clicked element or none.
  EXPECT_EQ(found, (std::multiset<std::string>{"App Store by the query", "browser by the query",
                                               "browser by the class", "purchase by the query",
                                               "purchase by the class", "closes by the id"}));
}

TEST_F(GuidePageTest, marksAreFoundInTheirPlacesOnly) {
  for (const Mark& mark : marks()) {
    for (const Click& click :
         {Click{.query = mark.text}, Click{.className = mark.text}, Click{.id = mark.text}}) {
      const bool isInPlace = mark.place == "query"   ? !click.query.empty()
                             : mark.place == "class" ? !click.className.empty()
                                                     : !click.id.empty();
      // The mark of a class is also the beginning of the query's: "zamopenout=1" in a class.
      const bool isQueryMarkInClass =
          mark.place == "query" && !click.className.empty() && mark.text.starts_with("zam");
      EXPECT_EQ(actOf(click), isInPlace || isQueryMarkInClass ? mark.act : "followed") << mark.text;
    }
  }
}

TEST_F(GuidePageTest, theUpperMarkWins) {
  const auto all = marks();
  for (std::size_t upper = 0; upper < all.size(); ++upper) {
    for (std::size_t lower = upper + 1; lower < all.size(); ++lower) {
      const Click first = all[upper].click();
      const Click second = all[lower].click();
      EXPECT_EQ(actOf({.query = second.query + "&" + first.query,
                       .className = second.className + " " + first.className,
                       .id = second.id + first.id}),
                all[upper].act)
          << all[upper].text << " and " << all[lower].text;
    }
  }
}

TEST_F(GuidePageTest, theCloseControlAndTheFunctionsAreThoseOfTheLibrary) {
  EXPECT_EQ(marks().back().text, kCloseControlId);
  std::set<std::string> inGuide;
  for (const auto& row : guide_.table("The script bridge")) {
    inGuide.insert(codeIn(row.at(0)));
  }
  std::set<std::string> inScripts;
  const std::regex function("cocoa_\\w+(?=[()])");
  for (const std::string& script :
       {filterSupportScript(), listPromoAppsScript(), postPromoAppInfoScript("", "[]", "[]")}) {
    for (std::sregex_iterator each(script.begin(), script.end(), function), end; each != end;
         ++each) {
      inScripts.insert(each->str());
    }
  }
  EXPECT_EQ(inScripts, inGuide);
}

TEST_F(GuidePageTest, theLimitsOfThePagesListAreThoseOfTheLibrary) {
  const std::string text = guide_.prose();
  std::smatch bytes;
  std::smatch seconds;
  ASSERT_TRUE(std::regex_search(text, bytes, std::regex("longer than (\\d+) bytes")));
  ASSERT_TRUE(std::regex_search(text, seconds, std::regex("for more than (\\d+) seconds")));
  EXPECT_DOUBLE_EQ(std::stod(seconds[1]), kScriptTimeLimit);

  const auto answerTo = [&](const std::string& list) {
    const auto webView = std::make_shared<FakeWebView>();
    webView->page = [list](const std::string& script) {
      return script == listPromoAppsScript()   ? list
             : script == filterSupportScript() ? std::string("support")
                                               : std::string();
    };
    controller_->processAdFilterFeatureIfNeeded(webView);
    return webView->scripts.back();
  };
  const std::string longest(std::stoul(bytes[1]), 'a');
  EXPECT_EQ(answerTo(longest), postPromoAppInfoScript("", "['" + longest + "']", "['0']"));
  EXPECT_EQ(answerTo(longest + "a"), postPromoAppInfoScript("", "[]", "[]"));
}

TEST_F(GuidePageTest, theLimitsOfWhatAPageOpensAreThoseOfTheLibrary) {
  const std::string text = guide_.prose();
  std::smatch limits;
  ASSERT_TRUE(std::regex_search(
      text, limits,
      std::regex("no more than (\\d+) addresses are opened within a second, and (\\d+) in")));
  EXPECT_EQ(std::stoul(limits[1]), OpeningLimit::kPerSecond);
  EXPECT_EQ(std::stoul(limits[2]), OpeningLimit::kPerPage);
  std::smatch schemes;
  ASSERT_TRUE(std::regex_search(
      text, schemes, std::regex("run something \\(`(\\w+):`, `(\\w+):`, `(\\w+):` and")));
  for (std::size_t i = 1; i < schemes.size(); ++i) {
    EXPECT_FALSE(mayBeOpened(schemes[i].str())) << schemes[i];
  }
}

}  // namespace
}  // namespace qorix::test
