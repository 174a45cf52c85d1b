// Which element a real click is judged by and announced with, and when it is looked at.

#include <gmock/gmock.h>

#include "webview/gtk/ControllerTest.h"

namespace qorix::test {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class ClickedElementTest : public ControllerTest {
 protected:
  /// A link that fills the line, as tall as 40 pixels, with text at its left end.
  static std::string link(const std::string& attributes, const std::string& content = "Link") {
    return "<a style='display:block;height:40px;font:30px monospace' " + attributes + ">" +
           content + "</a>";
  }

  /// Clicks the text of the link.
  void clickText(const std::string& id) { click(id, 10, 15); }

  void activateByKeyboard(const std::string& id) {
    evaluate("document.getElementById('" + id + "').focus(); 1");
    run({"xdotool", "key", "Return"});
  }
};

}  // namespace

TEST_F(ClickedElementTest, textThatCannotBeSelectedIsStillText) {
  show(link("id='cocoa_close_web' href='" + server.url("/followed") + "'") +
       "<style>#cocoa_close_web { user-select: none; -webkit-user-select: none; }</style>");
  clickText("cocoa_close_web");
  ASSERT_TRUE(waitForActs(1));
  EXPECT_THAT(delegate->reports, IsEmpty());
  EXPECT_EQ(server.requests().size(), 1U);
}

TEST_F(ClickedElementTest, textBetweenOtherContentIsText) {
  show(link("id='cocoa_close_web' href='" + server.url("/followed") + "'",
            "<!-- x --><i></i><b style='float:right'>b</b>Text<br>"));
  clickText("cocoa_close_web");
  ASSERT_TRUE(waitForActs(1));
  EXPECT_THAT(delegate->reports, IsEmpty());
}

TEST_F(ClickedElementTest, aMarkThatTheLinksOwnHandlerAddsCounts) {
  show(link("id='a' href='https://example.com/a' onclick=\"this.className = 'zamopenout';"
            " this.id = 'changed'; event.stopImmediatePropagation()\"") +
       link("id='b' class='zamopenout' href='" + server.url("/followed") +
            "' onclick=\"this.className = ''\""));
  clickText("a");
  ASSERT_TRUE(waitForActs(1));
  EXPECT_THAT(workspace->opened, ElementsAre("https://example.com/a"));
  EXPECT_THAT(announced, ElementsAre("{(idName is changed)(className is zamopenout)}"));
  clickText("b");
  ASSERT_TRUE(waitForActs(2));
  EXPECT_EQ(server.requests().size(), 1U) << "a mark that it takes away does not count";
}

TEST_F(ClickedElementTest, aMarkThatAHandlerAroundTheLinkAddsCounts) {
  show(link("id='a' href='https://example.com/a'") + link("id='b' href='https://example.com/b'") +
       "<script>const mark = (event) => { event.target.className = 'zamopeniap'; };"
       "addEventListener('click', mark);"
       "document.addEventListener('click', (event) => { if (event.target.id === 'b') {"
       " mark(event); event.stopPropagation(); } }, true);</script>");
  clickText("a");
  ASSERT_TRUE(waitForActs(1));
  clickText("b");
  ASSERT_TRUE(waitForActs(2));
  EXPECT_THAT(delegate->reports,
              ElementsAre("purchase https://example.com/a", "purchase https://example.com/b"));
}

TEST_F(ClickedElementTest, aMarkAddedOnTheWayOfAScriptsClickCounts) {
  show(link("id='a' href='https://example.com/a' onclick=\"this.className = 'zamopenout'\"") +
       link("id='b' href='https://example.com/b' onclick=\"this.className = 'zamopenout';"
            " event.stopImmediatePropagation()\""));
  evaluate("document.getElementById('a').click(); 1");
  ASSERT_TRUE(waitForActs(1));
  evaluate("document.getElementById('b').click(); 1");
  ASSERT_TRUE(waitForActs(2));
  EXPECT_THAT(workspace->opened, ElementsAre("https://example.com/a", "https://example.com/b"));
}

TEST_F(ClickedElementTest, theAnnouncementReadsTheElementLaterThanTheQuestion) {
  show(link("id='a' class='zamopenout' href='https://example.com/a'") +
       link("id='b' class='zamopenout' href='https://example.com/b'"));
  evaluate(
      "for (const id of ['a', 'b']) { const link = document.getElementById(id); link.click();"
      " link.id = id + '-later'; link.className = 'none'; } 1");
  ASSERT_TRUE(waitForActs(2));
  EXPECT_THAT(workspace->opened, ElementsAre("https://example.com/a", "https://example.com/b"));
  ASSERT_TRUE(waitFor([&] { return announced.size() == 2; }));
  EXPECT_THAT(announced, ElementsAre("{(idName is a-later)(className is none)}",
                                     "{(idName is b-later)(className is none)}"));
}

TEST_F(ClickedElementTest, aScriptsClickIsDecidedThoughTheScriptGoesOn) {
  show(link("id='a' class='zamopenout' href='https://example.com/a'"));
  evaluate("setTimeout(() => { document.getElementById('a').click(); for (;;) {} }, 0); 1");
  ASSERT_TRUE(waitFor([&] { return announced.size() == 1; }));
  EXPECT_THAT(workspace->opened, ElementsAre("https://example.com/a"));
}

TEST_F(ClickedElementTest, namesInThePageHideNoTextAndNoMark) {
  std::string names;
  for (const char* name : {"caretRangeFromPoint", "createRange", "webkit", "composedPath", "Range",
                           "MessageChannel", "MutationObserver"}) {
    names += std::string("<img name='") + name + "' width='1' height='1'><form name='" + name +
             "' id='" + name + "'></form><iframe hidden name='" + name + "'></iframe>";
  }
  std::string fields;
  for (const char* name : {"id", "className", "getAttribute", "hasAttribute", "firstChild",
                           "childNodes", "nodeType", "namespaceURI", "localName", "nextSibling",
                           "parentElement", "contains", "addEventListener"}) {
    fields += std::string("<input hidden name='") + name + "'>";
  }
  show(link("id='cocoa_close_web' href='" + server.url("/followed") + "'") + "<div hidden>" +
       names +
       "</div><a href='https://example.com/form'><form id='form' "
       "class='zamopenout' style='height:40px'>" +
       fields + "</form></a>");
  click("form", 200, 20);
  ASSERT_TRUE(waitForActs(1));
  EXPECT_THAT(workspace->opened, ElementsAre("https://example.com/form"));
  clickText("cocoa_close_web");
  ASSERT_TRUE(waitForActs(2));
  EXPECT_THAT(delegate->reports, IsEmpty());
  EXPECT_THAT(announced, ElementsAre("{(idName is form)(className is zamopenout)}",
                                     "{(idName is cocoa_close_web)}"));
}

TEST_F(ClickedElementTest, theKeyboardActivatesTheFocusedLink) {
  show(link("id='a' class='big zamopenout' href='https://example.com/a'") +
       link("id='cocoa_close_web' href='https://example.com/close'"));
  gtk_widget_child_focus(GTK_WIDGET(host.window()), GTK_DIR_TAB_FORWARD);
  activateByKeyboard("a");
  ASSERT_TRUE(waitForActs(1));
  EXPECT_THAT(workspace->opened, ElementsAre("https://example.com/a"));
  EXPECT_THAT(announced, ElementsAre("{(idName is a)(className is big zamopenout)}"));
  activateByKeyboard("cocoa_close_web");
  ASSERT_TRUE(waitForActs(2));
  EXPECT_THAT(delegate->reports, ElementsAre("close"));
}

TEST_F(ClickedElementTest, aMiddleClickCarriesItsMark) {
  show(link("id='a' class='zamopenout' href='https://example.com/a'"));
  click("a", 10, 15, 2);
  ASSERT_TRUE(waitForActs(1));
  EXPECT_THAT(workspace->opened, ElementsAre("https://example.com/a"));
  EXPECT_THAT(announced, ElementsAre("{(idName is a)(className is zamopenout)}"));
}

TEST_F(ClickedElementTest, aClickThatLeadsNowhereIsGivenToNoOtherNavigation) {
  show(link("id='a' class='zamopenout' href='https://example.com/a' "
            "onclick=\"event.preventDefault(); frames[0].document.getElementById('b').click()\"") +
       "<iframe srcdoc=\"<a id='b' href='" + server.url("/followed") + "'>b</a>\"></iframe>");
  clickText("a");
  ASSERT_TRUE(waitForActs(1));
  EXPECT_THAT(workspace->opened, IsEmpty());
  EXPECT_THAT(announced, ElementsAre("{(idName is b)}"));
}

TEST_F(ClickedElementTest, aLinkOutsideTheDocumentHasItsElement) {
  show(
      "<script>var unchanged = 0; addEventListener('probe', () => ++unchanged);"
      "const probe = dispatchEvent(new Event('probe')) && window.dispatchEvent(new Event('probe'));"
      "const link = document.createElement('a'); link.id = 'a'; link.className = 'zamopenout';"
      "link.href = 'https://example.com/a';"
      "const part = document.createElement('p');"
      "part.innerHTML = \"<a class='zamopeniap' href='https://example.com/b'><b id='b'>b</b></a>\";"
      "</script>");
  EXPECT_EQ(evaluate("probe + ' ' + unchanged"), "true 2") << "the page's own calls are as ever";
  evaluate("link.click(); link.id = 'later'; 1");
  ASSERT_TRUE(waitForActs(1));
  EXPECT_THAT(workspace->opened, ElementsAre("https://example.com/a"));
  evaluate("part.querySelector('b').dispatchEvent(new MouseEvent('click', {bubbles: true})); 1");
  ASSERT_TRUE(waitFor([&] { return announced.size() == 2; }));
  EXPECT_THAT(announced,
              ElementsAre("{(idName is later)(className is zamopenout)}", "{(idName is b)}"));
}

TEST_F(ClickedElementTest, aLinkIsReportedOnceWhenItComesIntoTheDocument) {
  show(
      "<script>const link = document.createElement('a'); link.className = 'zamopenout';"
      "link.href = 'https://example.com/a'; link.addEventListener('click', (event) => {"
      " if (!link.isConnected) { event.preventDefault(); } });</script>");
  evaluate("link.click(); document.body.append(link); link.click(); 1");
  ASSERT_TRUE(waitForActs(1));
  EXPECT_THAT(announced, ElementsAre("{(className is zamopenout)}"));
}

TEST_F(ClickedElementTest, eachOfManyRapidClicksHasItsOwnState) {
  constexpr std::size_t kClicks = 120;
  show("<script>var count = 0;</script>" +
       link("id='a' href='https://example.com/' onclick=\"this.id = 'a' + ++count;"
            " this.className = 'zamopeniap'; setTimeout(() => { this.className = ''; }, 0)\""));
  clickText("a");
  // Of clicks in quick succession not all need to arrive in the page: its own count is compared.
  const auto clicksInPage = [this] { return std::stoul("0" + evaluate("count")); };
  for (std::size_t clicks = 1; clicksInPage() < kClicks; clicks += 20) {
    ASSERT_LT(clicks, 10 * kClicks) << clicksInPage() << " in the page";
    run({"xdotool", "click", "--repeat", "20", "--delay", "10", "1"});
    settle();
  }
  // The last ones may still be on their way.
  ASSERT_TRUE(waitFor([&] {
    const std::size_t count = clicksInPage();
    return announced.size() == count && delegate->reports.size() == count;
  })) << announced.size()
      << " and " << delegate->reports.size() << " of " << clicksInPage();
  for (std::size_t i = 0; i < announced.size(); ++i) {
    EXPECT_THAT(announced[i], HasSubstr("(idName is a" + std::to_string(i + 1) + ")"));
  }
}

}  // namespace qorix::test
