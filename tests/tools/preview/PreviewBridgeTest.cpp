#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tools/preview/PreviewFixture.h"

namespace qorix::test {
namespace {

using ::testing::ElementsAre;

class PreviewBridgeTest : public PreviewFixture {
 protected:
  static constexpr const char* kPost = "function cocoa_post_promo_app_info(host, ids, flags) {}";

  static std::string listing(const std::string& result) {
    return "function cocoa_obtain_promo_app_ids() { return " + result + "; }";
  }

  /// What a preview tells about a page with that script.
  std::vector<std::string> bridgeOf(const std::string& script,
                                    std::vector<std::string> options = {}) const {
    write(document({.height = "60"},
                   "<body style='margin:0;background:#777'><script>" + script + "</script>"));
    options.insert(options.end(), {"--app", "com.example.editor"});
    PreviewProcess preview(arguments(options));
    EXPECT_TRUE(preview.waitForLine("page"));
    closeWindow(preview);
    return preview.texts("bridge");
  }

  struct Seen {
    std::vector<std::string> bridge;  // the lines
    std::string told;                 // where the page's link leads: what it was told
  };

  /// What is seen of a page that lists that text and whose link shows what it was told.
  Seen seenWith(const std::string& listed, const std::string& host) const {
    write(document({.height = "60"},
                   std::string(kPinkPage) +
                       "<a id='link' href='#nothing' style='display:block;height:100vh'></a>"
                       "<script>" +
                       listing("'" + listed + "'") +
                       "function cocoa_post_promo_app_info(host, ids, flags) {"
                       " link.href = '#' + encodeURIComponent(ids.join('+')); }</script>"));
    PreviewProcess preview(arguments({"--app", host}));
    const PixelBox ad = waitForColor(kPink, 300, 60);
    EXPECT_TRUE(preview.waitForLine("page"));
    clickAt(ad.x + 150, ad.y + 30);
    const std::string decision = preview.waitForLine("decision", 2).value_or("");
    closeWindow(preview);
    const auto begin = decision.find('#');
    return {preview.texts("bridge"), decision.substr(begin, decision.find(' ', begin) - begin)};
  }

  static std::string warningOf(const std::string& identifier) {
    return "; the page receives a wrong list or none: \"" + identifier +
           "\" holds a quote, a backslash or a line break";
  }
};

TEST_F(PreviewBridgeTest, tellsWhatThePageListsAndWhatItIsTold) {
  const auto applications = std::filesystem::path(std::getenv("XDG_DATA_HOME")) / "applications";
  std::filesystem::create_directories(applications);
  std::ofstream(applications / "com.example.viewer.desktop")
      << "[Desktop Entry]\nType=Application\nName=Viewer\nExec=true\n";
  const std::string script =
      listing("' com.example.viewer ,com.example.converter,, a\\tb'") + kPost;
  EXPECT_THAT(bridgeOf(script, {"--applications", applications}),
              ElementsAre("host com.example.editor, promotes com.example.viewer (installed), "
                          "com.example.converter (not installed), a\\tb (not installed)"));
  EXPECT_THAT(bridgeOf(script),
              ElementsAre("host com.example.editor, promotes com.example.viewer (not installed), "
                          "com.example.converter (not installed), a\\tb (not installed)"));
}

TEST_F(PreviewBridgeTest, tellsThatAPageListsNothing) {
  for (const char* result : {"['com.example.viewer']", "undefined", "''", "noSuchName"}) {
    EXPECT_THAT(bridgeOf(listing(result) + kPost),
                ElementsAre("host com.example.editor, promotes nothing: "
                            "cocoa_obtain_promo_app_ids gave no text that names any (a list is "
                            "none: join it with commas)"))
        << result;
  }
}

TEST_F(PreviewBridgeTest, tellsWhyAPageDoesNotTakePart) {
  EXPECT_THAT(bridgeOf(""),
              ElementsAre("the page does not take part: it defines neither function"));
  EXPECT_THAT(bridgeOf(kPost), ElementsAre("the page does not take part: it defines no function "
                                           "cocoa_obtain_promo_app_ids"));
  EXPECT_THAT(bridgeOf(listing("'com.example.viewer'") + "var cocoa_post_promo_app_info = 1;"),
              ElementsAre("the page does not take part: it defines no function "
                          "cocoa_post_promo_app_info"));
}

TEST_F(PreviewBridgeTest, tellsWhichIdentifierBreaksTheAnswer) {
  const struct {
    const char* listed;   // in the page's script
    const char* printed;  // control characters are written out
    const char* told;
  } cases[] = {
      {"com.obrien", nullptr, "#com.example.viewer%2Bcom.obrien"},
      {"com.o\\'brien", "com.o'brien", "#nothing"},
      {"com.a\\nb", "com.a\\nb", "#nothing"},
      {"com.a\\\\tb", "com.a\\tb", "#com.example.viewer%2Bcom.a%09b"},
  };
  for (const auto& each : cases) {
    const Seen seen = seenWith(std::string("com.example.viewer,") + each.listed, "com.example.a");
    EXPECT_EQ(seen.told, each.told);
    EXPECT_THAT(seen.bridge,
                ElementsAre(std::string("host com.example.a, promotes com.example.viewer (not "
                                        "installed), ") +
                            (each.printed ? each.printed : each.listed) + " (not installed)" +
                            (each.printed ? warningOf(each.printed) : "")));
  }
}

TEST_F(PreviewBridgeTest, tellsThatTheHostsOwnIdentifierBreaksTheAnswer) {
  const Seen seen = seenWith("com.example.viewer", "com.o'brien");
  EXPECT_EQ(seen.told, "#nothing");
  EXPECT_THAT(seen.bridge,
              ElementsAre("host com.o'brien, promotes com.example.viewer (not installed)" +
                          warningOf("com.o'brien")));
}

// Functions that no look at the page's text would find.
TEST_F(PreviewBridgeTest, looksAtWhatThePagesScriptsHaveMade) {
  EXPECT_THAT(bridgeOf("var half = 'cocoa_' + 'obtain_promo_app_ids';"
                       "window[half] = () => ['com.example.a', 'com.example.b'].join();"
                       "eval('window.cocoa_' + 'post_promo_app_info = function () {}');"),
              ElementsAre("host com.example.editor, promotes com.example.a (not installed), "
                          "com.example.b (not installed)"));
  EXPECT_THAT(bridgeOf("// function cocoa_obtain_promo_app_ids() {}\n" + std::string(kPost)),
              ElementsAre("the page does not take part: it defines no function "
                          "cocoa_obtain_promo_app_ids"));
  EXPECT_THAT(bridgeOf(listing("'com.example.viewer'") + kPost + " this is no script"),
              ElementsAre("the page does not take part: it defines neither function"));
}

TEST_F(PreviewBridgeTest, callsThePagesFunctionsNoMoreOftenThanAHost) {
  write(document({.height = "60"},
                 "<body style='margin:0'><iframe hidden srcdoc='inner'></iframe><script>"
                 "let lists = 0, posts = 0;"
                 "function cocoa_obtain_promo_app_ids() { return 'com.example.a' + ++lists; }"
                 "function cocoa_post_promo_app_info() {"
                 " if (++posts === 2) document.body.style.background = '#ff00aa'; }</script>"));
  PreviewProcess preview(arguments());
  expectPainted(kPink, 300, 60);
  EXPECT_TRUE(preview.waitForLine("page"));
  EXPECT_THAT(preview.texts("bridge"),
              ElementsAre("host qorix.preview, promotes com.example.a1 (not installed)",
                          "host qorix.preview, promotes com.example.a2 (not installed)"));
  closeWindow(preview);
}

}  // namespace
}  // namespace qorix::test
