// Inner frames that may run no scripts are frames like any other.

#include <gmock/gmock.h>

#include "webview/gtk/ControllerTest.h"

namespace qorix::test {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ScriptlessFrameTest : public ControllerTest {
 protected:
  /// An inner frame that fills the line, 100 pixels high, and shows `html`, which has no double
  /// quotes.
  static std::string frame(const std::string& attributes, const std::string& html) {
    return "<iframe style='display:block;border:0;width:100%;height:100px' " + attributes +
           " srcdoc=\"<body style='margin:0'>" + html + "\"></iframe>";
  }
  static std::string link(const std::string& attributes) {
    return "<a style='display:block;height:50px;font:30px monospace' " + attributes + ">Link</a>";
  }

  static constexpr const char* kCounter =
      "<script>var loads = 0; function cocoa_obtain_promo_app_ids() { ++loads; return ''; }"
      "function cocoa_post_promo_app_info() {}</script>";
};

}  // namespace

TEST_F(ScriptlessFrameTest, aClickInItHasItsElement) {
  show(frame("id='frame' sandbox", link("id='a' class='zamopenout' href='https://example.com/a'") +
                                       link("id='cocoa_close_web' href='https://example.com/b'")));
  click("frame", 10, 15);
  ASSERT_TRUE(waitForActs(1));
  EXPECT_THAT(workspace->opened, ElementsAre("https://example.com/a"));
  EXPECT_THAT(announced, ElementsAre("{(idName is a)(className is zamopenout)}"));
  click("frame", 200, 65);
  ASSERT_TRUE(waitForActs(2));
  EXPECT_THAT(delegate->reports, ElementsAre("close"));
}

TEST_F(ScriptlessFrameTest, textInItIsText) {
  show(frame("id='frame' sandbox",
             "<style>a { user-select: none; -webkit-user-select: none }</style>"
             "<p style='height:30px;margin:0'>above</p>" +
                 link("id='cocoa_close_web' href='" + server.url("/followed") + "'")));
  click("frame", 10, 45);
  ASSERT_TRUE(waitForActs(1));
  EXPECT_EQ(server.requests().size(), 1U);
  EXPECT_THAT(delegate->reports, IsEmpty());
  EXPECT_THAT(announced, ElementsAre("{(idName is cocoa_close_web)}"));
}

TEST_F(ScriptlessFrameTest, aMiddleClickInItCarriesItsMark) {
  show(frame("id='frame' sandbox", link("id='a' class='zamopeniap' href='https://example.com/a'")));
  click("frame", 10, 15, 2);
  ASSERT_TRUE(waitForActs(1));
  EXPECT_THAT(delegate->reports, ElementsAre("purchase https://example.com/a"));
}

TEST_F(ScriptlessFrameTest, framesInItAreFramesToo) {
  show(frame("id='frame' sandbox",
             "<iframe width='300' height='90' src='data:text/html,<a id=a class=zamopeniap href="
             "https://example.com/a style=display:block;height:90px></a>'></iframe>"));
  click("frame", 100, 50);
  ASSERT_TRUE(waitForActs(1));
  EXPECT_THAT(delegate->reports, ElementsAre("purchase https://example.com/a"));
  EXPECT_THAT(announced, ElementsAre("{(idName is a)(className is zamopeniap)}"));
}

TEST_F(ScriptlessFrameTest, itsLoadAndThatOfEachFrameInItAreReported) {
  show(kCounter + frame("sandbox", "<iframe srcdoc='one'></iframe><iframe srcdoc='two'></iframe>") +
       frame("sandbox='allow-scripts'", "three") + frame("", "four"));
  ASSERT_TRUE(waitFor([&] { return evaluate("loads") == "6"; })) << evaluate("loads");
  settle();
  EXPECT_EQ(evaluate("loads"), "6");
}

TEST_F(ScriptlessFrameTest, whatItShowsNextIsWatchedToo) {
  server.setAnswer("/next", {.headers = {{"Content-Type", "text/html"}},
                             .body = {"<body style='margin:0'><a id='b' class='zamopeniap' "
                                      "href='https://example.com/b' style='display:block;"
                                      "height:90px'></a>"}});
  show(kCounter + frame("id='frame' sandbox", link("id='a' href='" + server.url("/next") + "'")));
  click("frame", 10, 15);
  ASSERT_TRUE(waitFor([&] { return evaluate("loads") == "3"; }));
  click("frame", 100, 50);
  ASSERT_TRUE(waitForActs(2));
  EXPECT_THAT(delegate->reports, ElementsAre("purchase https://example.com/b"));
  EXPECT_THAT(announced,
              ElementsAre("{(idName is a)}", "{(idName is b)(className is zamopeniap)}"));
}

TEST_F(ScriptlessFrameTest, aScriptOfThePageMayClickInIt) {
  show(frame("sandbox='allow-same-origin'",
             link("id='a' href='https://example.com/?zamopeniap=1'")));
  evaluate("frames[0].document.getElementById('a').click(); 1");
  ASSERT_TRUE(waitForActs(1));
  EXPECT_THAT(announced, ElementsAre("{(idName is a)}"));
}

}  // namespace qorix::test
