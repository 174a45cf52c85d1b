// What real clicks on real pages do.

#include <gmock/gmock.h>

#include "webview/gtk/ControllerTest.h"

namespace qorix::test {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class LinkActionsTest : public ControllerTest {
 protected:
  /// A link that fills the line, as tall as 40 pixels.
  static std::string link(const std::string& attributes, const std::string& content) {
    return "<a style='display:block;height:40px;padding:20px;font:20px monospace' " + attributes +
           ">" + content + "</a>";
  }

  static std::size_t countWindows() {
    GList* windows = gtk_window_list_toplevels();
    const std::size_t count = g_list_length(windows);
    g_list_free(windows);
    return count;
  }

  std::size_t requestsFor(const std::string& target) const {
    std::size_t count = 0;
    for (const auto& request : server.requests()) {
      count += request.target == target ? 1 : 0;
    }
    return count;
  }
};

}  // namespace

TEST_F(LinkActionsTest, theTextOfALinkCarriesItsClassMark) {
  show(link("id='out' class='big zamopenout' href='https://example.com/more?a=1'", "More"));
  click("out", 30, 30);
  ASSERT_TRUE(waitForActs(1));
  EXPECT_THAT(workspace->opened, ElementsAre("https://example.com/more?a=1"));
  EXPECT_THAT(announced, ElementsAre("{(idName is out)(className is big zamopenout)}"));
  EXPECT_THAT(delegate->reports, IsEmpty());
}

TEST_F(LinkActionsTest, thePaddingOfALinkIsTheLinkItself) {
  show(link("id='buy' class='zamopeniap' href='https://example.com/buy'", "Buy"));
  click("buy", 5, 5);
  ASSERT_TRUE(waitForActs(1));
  EXPECT_THAT(delegate->reports, ElementsAre("purchase https://example.com/buy"));
  EXPECT_THAT(announced, ElementsAre("{(idName is buy)(className is zamopeniap)}"));
}

TEST_F(LinkActionsTest, anImageInALinkIsWhatIsHit) {
  const std::string image = "<img id='picture' class='wide' width='100' height='30'>";
  show(link("href='https://example.com/buy?zamopeniap=1'", image) +
       link("id='marked' class='zamopenout' href='" + server.url("/followed") + "'",
            "<img id='other' width='100' height='30'>"));
  click("picture");
  ASSERT_TRUE(waitForActs(1));
  EXPECT_THAT(delegate->reports, ElementsAre("purchase https://example.com/buy?zamopeniap=1"));
  click("other");
  ASSERT_TRUE(waitForActs(2));
  EXPECT_EQ(requestsFor("/followed"), 1U) << "the class of the link around an image does not count";
  EXPECT_THAT(announced,
              ElementsAre("{(idName is picture)(className is wide)}", "{(idName is other)}"));
}

TEST_F(LinkActionsTest, linksInInnerFramesActLikeThoseInThePage) {
  show(
      "<iframe id='frame' width='300' height='100' srcdoc=\"<body style='margin:0'><a id='inner' "
      "style='display:block;height:90px' href='https://example.com/in?zamopeniap=1'></a>\">"
      "</iframe>");
  click("frame");
  ASSERT_TRUE(waitForActs(1));
  EXPECT_THAT(delegate->reports, ElementsAre("purchase https://example.com/in?zamopeniap=1"));
  EXPECT_THAT(announced, ElementsAre("{(idName is inner)}"));
}

TEST_F(LinkActionsTest, aCloseControlThatIsAnImageCloses) {
  show(link("href='https://example.com/close'",
            "<img id='cocoa_close_web' width='40' height='30'>"));
  click("cocoa_close_web");
  ASSERT_TRUE(waitForActs(1));
  EXPECT_THAT(delegate->reports, ElementsAre("close"));
  EXPECT_THAT(announced, ElementsAre("{(idName is cocoa_close_web)}"));
}

TEST_F(LinkActionsTest, theTextInsideACloseControlDoesNotClose) {
  show(link("id='cocoa_close_web' href='" + server.url("/followed") + "'", "Close"));
  click("cocoa_close_web", 30, 30);
  ASSERT_TRUE(waitForActs(1));
  EXPECT_EQ(requestsFor("/followed"), 1U);
  EXPECT_THAT(delegate->reports, IsEmpty());
}

TEST_F(LinkActionsTest, marksInTheQueryIgnoreLetterCaseAndThoseInTheClassKeepIt) {
  show(link("id='a' href='https://apps.example.com/id1?mt=12&LS=1'", "") +
       link("id='b' href='https://example.com/?ZAMOPENOUT=1'", "") +
       link("id='c' href='https://example.com/?ZamOpenIAP=1'", ""));
  click("a");
  ASSERT_TRUE(waitForActs(1));
  click("b");
  ASSERT_TRUE(waitForActs(2));
  click("c");
  ASSERT_TRUE(waitForActs(3));
  EXPECT_THAT(workspace->opened, ElementsAre("macappstore://apps.example.com/id1?mt=12&LS=1",
                                             "https://example.com/?ZAMOPENOUT=1"));
  EXPECT_THAT(delegate->reports, ElementsAre("purchase https://example.com/?ZamOpenIAP=1"));
}

TEST_F(LinkActionsTest, aClassMarkInCapitalsIsNone) {
  show(link("id='a' class='ZAMOPENOUT ZAMOPENIAP' href='" + server.url("/followed") + "'", ""));
  click("a");
  ASSERT_TRUE(waitForActs(1));
  EXPECT_EQ(requestsFor("/followed"), 1U);
  EXPECT_THAT(workspace->opened, IsEmpty());
  EXPECT_THAT(announced, ElementsAre("{(idName is a)(className is ZAMOPENOUT ZAMOPENIAP)}"));
}

TEST_F(LinkActionsTest, formsReloadsAndStepsBackAreLetThroughWhateverTheirMarks) {
  for (const char* name : {"answer", "elsewhere"}) {
    server.setAnswer(std::string("/") + name,
                     {.headers = {{"Content-Type", "text/html"}},
                      .body = {std::string("<title>") + name + "</title>"}});
  }
  show("<form action='" + server.url("/answer") +
       "'><input type='hidden' name='zamopeniap' value='1'>"
       "<button id='send' style='width:100px;height:40px'>Send</button></form>");
  click("send");
  ASSERT_TRUE(waitForTitle("answer"));
  EXPECT_EQ(requestsFor("/answer?zamopeniap=1"), 1U);
  evaluate("document.title = 'before'; location.reload(); 1");
  ASSERT_TRUE(waitForTitle("answer"));
  EXPECT_EQ(requestsFor("/answer?zamopeniap=1"), 2U);
  evaluate("location.href = '" + server.url("/elsewhere?ls=1") + "'; 1");
  ASSERT_TRUE(waitForTitle("elsewhere"));
  evaluate("history.back(); 1");
  EXPECT_TRUE(waitForTitle("answer"));
  settle();
  EXPECT_THAT(delegate->reports, IsEmpty());
  EXPECT_THAT(workspace->opened, IsEmpty());
  EXPECT_THAT(announced, IsEmpty());
}

TEST_F(LinkActionsTest, aScriptsClickNamesTheElement) {
  show(link("id='a' class='zamopenout' href='https://example.com/'", "More"));
  evaluate("document.getElementById('a').click(); 1");
  ASSERT_TRUE(waitForActs(1));
  EXPECT_THAT(workspace->opened, ElementsAre("https://example.com/"));
  EXPECT_THAT(announced, ElementsAre("{(idName is a)(className is zamopenout)}"));
}

TEST_F(LinkActionsTest, aLinkForANewWindowOpensNone) {
  show(link("id='a' target='_blank' href='" + server.url("/window") + "'", "") +
       link("id='b' href='https://example.com/?zamopeniap=1'", ""));
  const std::size_t windows = countWindows();
  click("a");
  click("b");
  ASSERT_TRUE(waitForActs(1));  // both clicks have arrived by then
  EXPECT_EQ(requestsFor("/window"), 0U);
  EXPECT_EQ(evaluate("document.title"), "loaded");
  EXPECT_EQ(countWindows(), windows);
}

TEST_F(LinkActionsTest, aLinkWithoutIdAndClassIsAnnouncedOnceAndAlone) {
  show("<a href='" + server.url("/followed") +
       "' style='display:block;height:100px'></a><p id='below'></p>");
  click("below", 10, -50);
  ASSERT_TRUE(waitForActs(1));
  EXPECT_EQ(requestsFor("/followed"), 1U);
  EXPECT_THAT(announced, ElementsAre("{}"));
}

TEST_F(LinkActionsTest, aPageStaysWhereItIsAfterAnAction) {
  show(link("id='a' href='" + server.url("/buy?zamopeniap=1") + "'", ""));
  click("a");
  ASSERT_TRUE(waitForActs(1));
  EXPECT_THAT(delegate->reports, ElementsAre("purchase " + server.url("/buy?zamopeniap=1")));
  EXPECT_THAT(server.requests(), IsEmpty());
  EXPECT_EQ(evaluate("document.title"), "loaded");
}

}  // namespace qorix::test
