#include <jsc/jsc.h>

#include "platform/gtk/PageClicks.h"
#include "platform/gtk/Unref.h"
#include "support/gtk/GtkTest.h"

namespace qorix::test {

namespace {

/// The reports of a page's watcher, spelled as it makes them.
class PageClicksTest : public GtkTest {
 protected:
  void report(const std::string& members) {
    const std::unique_ptr<JSCValue, gtk::Unref> value(
        jsc_context_evaluate(context(), ("({" + members + "})").c_str(), -1));
    clicks->take(value.get());
  }

  /// A user's click on a link to https://example.com/`name`, whose element has that id.
  void click(int key, const std::string& name, const std::string& more = "") {
    report(reportOf("click", key, name) + more);
  }
  void scriptsClick(int key, const std::string& name, bool isSeenToEnd = true) {
    click(key, name,
          std::string(", isScripted: true, isSeenToEnd: ") + (isSeenToEnd ? "true" : "false"));
  }
  void over(int key, const std::string& name) { report(reportOf("clickOver", key, name)); }

  /// Asks about a link; the answer is added to `judged` when it arrives.
  void ask(const std::string& address) {
    clicks->judge(address, [this](const gtk::PageClicks::Click* click) {
      if (click == nullptr) {
        judged.emplace_back("nothing");
        return;
      }
      const auto text = std::dynamic_pointer_cast<DomText>(click->node);
      element = std::dynamic_pointer_cast<DomHtmlElement>(text == nullptr ? click->node
                                                                          : text->parentElement());
      judged.push_back((text == nullptr ? "" : "text in ") +
                       (element == nullptr ? "?" : element->idName().value_or("?")));
    });
  }

  std::unique_ptr<gtk::PageClicks> clicks = std::make_unique<gtk::PageClicks>();
  std::vector<std::string> judged;
  std::shared_ptr<DomHtmlElement> element;  // judged last

 private:
  static std::string reportOf(const std::string& event, int key, const std::string& name) {
    return "event: '" + event + "', key: " + std::to_string(key) + ", link: 'https://example.com/" +
           name + "', isMainFrame: true, isHtmlElement: true, id: '" + name + "', className: ''";
  }

  // Never destroyed: the destructor runs this program's templates, whose checks the engine fails.
  static JSCContext* context() {
    static JSCContext* const context = jsc_context_new();
    return context;
  }
};

}  // namespace

TEST_F(PageClicksTest, aClickIsGivenToTheNavigationThatItMadeAndOnce) {
  click(1, "a");
  ask("https://example.com/b");
  ask("https://example.com/a");
  ask("https://example.com/a");
  EXPECT_EQ(judged, (std::vector<std::string>{"nothing", "a", "nothing"}));
}

TEST_F(PageClicksTest, aClickThatIsOverIsGivenToNone) {
  click(1, "a");
  over(1, "a");
  ask("https://example.com/a");
  click(2, "a");
  clicks->endAll();
  ask("https://example.com/a");
  EXPECT_EQ(judged, (std::vector<std::string>{"nothing", "nothing"}));
}

TEST_F(PageClicksTest, theNewestClickOnALinkComesFirst) {
  click(1, "a");
  click(2, "a", ", isText: true");
  ask("https://example.com/a");
  ask("https://example.com/a");
  EXPECT_EQ(judged, (std::vector<std::string>{"text in a", "a"}));
}

TEST_F(PageClicksTest, anImageThatIsAMapPutsItsPointBehindTheAddress) {
  click(1, "map");
  ask("https://example.com/map?3,5");
  EXPECT_EQ(judged, (std::vector<std::string>{"map"}));
}

TEST_F(PageClicksTest, aClickIsJudgedByItsLatestReport) {
  click(1, "first");
  click(1, "second");
  ask("https://example.com/second");
  ASSERT_EQ(judged, (std::vector<std::string>{"second"}));
  over(1, "third");
  EXPECT_EQ(element->idName(), "third") << "the element goes on changing";
}

TEST_F(PageClicksTest, aScriptsClickIsJudgedWhenTheScriptHasEnded) {
  scriptsClick(1, "a");
  ask("https://example.com/a");
  scriptsClick(2, "b", false);
  ask("https://example.com/b");
  EXPECT_EQ(judged, (std::vector<std::string>{}));
  over(1, "later");
  EXPECT_EQ(judged, (std::vector<std::string>{"a"})) << "as it was when the engine asked";
  EXPECT_EQ(element->idName(), "later");
  over(2, "later");
  EXPECT_EQ(judged, (std::vector<std::string>{"a", "later"}))
      << "as it became, where the end could not be seen";
}

TEST_F(PageClicksTest, aScriptThatGoesOnIsNotWaitedFor) {
  scriptsClick(1, "a");
  ask("https://example.com/a");
  const gint64 start = g_get_monotonic_time();
  EXPECT_TRUE(waitFor([&] { return judged == std::vector<std::string>{"a"}; }));
  EXPECT_GE(g_get_monotonic_time() - start, 1'900'000);
  over(1, "later");
  EXPECT_EQ(element->idName(), "later");
  EXPECT_EQ(judged.size(), 1U);
}

TEST_F(PageClicksTest, whoWaitsIsAnsweredWhenAllEnds) {
  scriptsClick(1, "a");
  ask("https://example.com/a");
  clicks->endAll();
  EXPECT_EQ(judged, (std::vector<std::string>{"a"}));
}

TEST_F(PageClicksTest, aScriptThatClicksWithoutEndIsKeptInBounds) {
  for (int i = 0; i < 1000; ++i) {
    scriptsClick(i, "a" + std::to_string(i));
    ask("https://example.com/a" + std::to_string(i));
  }
  EXPECT_GE(judged.size(), 900U);
  EXPECT_EQ(judged.at(0), "a0");
}

TEST_F(PageClicksTest, whoJudgesMayEndEverything) {
  scriptsClick(1, "a");
  clicks->judge("https://example.com/a", [this](const gtk::PageClicks::Click*) { clicks.reset(); });
  over(1, "a");
  EXPECT_EQ(clicks, nullptr);
}

TEST_F(PageClicksTest, whoWaitsInVainIsForgotten) {
  scriptsClick(1, "a");
  ask("https://example.com/a");
  clicks.reset();
  serveLoop();
  EXPECT_EQ(judged, (std::vector<std::string>{}));
}

}  // namespace qorix::test
