#include <string>
#include <utility>
#include <vector>

#include "docs/GuideTest.h"

namespace qorix::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

/// The guide's complete example, as its hosts read it.
class GuideExampleTest : public GuideTest {
 protected:
  std::shared_ptr<const MyPushAdInfo> read(const std::string& host,
                                           const std::vector<std::string>& languages = {}) {
    installHost(host);
    userDefaults_->setStringArray(languages, kAppleLanguagesKey);
    return parse(guide_.block("example"));
  }
};

TEST_F(GuideExampleTest, theEditorShowsTheBanner) {
  const auto info = read(kEditor);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->adId(), 2);
  EXPECT_TRUE(info->enable());
  EXPECT_EQ(info->version(), "1a2");
  EXPECT_EQ(info->embed(), 1);
  EXPECT_EQ(info->width(), 640);
  EXPECT_EQ(info->height(), 90);
  EXPECT_EQ(info->offsetx(), 0);
  EXPECT_EQ(info->offsety(), 12);
  EXPECT_EQ(info->count(), 2);
  EXPECT_EQ(info->delay(), 0);
  info->doCheck();
  EXPECT_THAT(log_->lines(), IsEmpty());
}

TEST_F(GuideExampleTest, everyOtherHostShowsThePopup) {
  for (const auto& [host, delay] : std::vector<std::pair<std::string, int>>{
           {"com.example.viewer", 10}, {"com.example.player", 2}, {"", 2}}) {
    const auto info = read(host);
    ASSERT_NE(info, nullptr) << host;
    EXPECT_EQ(info->adId(), 1);
    EXPECT_TRUE(info->enable());
    EXPECT_EQ(info->embed(), 0);
    EXPECT_EQ(info->width(), 480);
    EXPECT_EQ(info->height(), 240);
    EXPECT_EQ(info->count(), 3);
    EXPECT_EQ(info->delay(), delay) << host;
  }
}

TEST_F(GuideExampleTest, everyUserGetsALanguage) {
  struct Texts {
    std::vector<std::string> languages;
    std::string title;
    std::string page;
  };
  const std::vector<Texts> banner = {
      {{}, "The viewer", "Opens what your editor writes."},
      {{"en-GB"}, "The viewer", "Opens what your editor writes."},
      {{"fr-FR", "de-DE"}, "The viewer", "Opens what your editor writes."},
      {{"de-AT"}, "Der Betrachter", "Öffnet, was der Editor schreibt."},
      {{"zh-Hans-CN"}, "阅读器", "打开编辑器的文档。"},
      {{"zh-Hant-TW"}, "The viewer", "Opens what your editor writes."},
  };
  for (const auto& [languages, title, page] : banner) {
    const auto info = read(kEditor, languages);
    EXPECT_EQ(info->localizedTitle(), title);
    const auto html = info->localizedHtmlString().value_or("");
    EXPECT_THAT(html, StartsWith("<!DOCTYPE html>"));
    EXPECT_THAT(html, HasSubstr(page));
    for (const auto* part : {"?ls=1\"", "?zamopenout=1\"", "class=\"zamopeniap\"",
                             "id=\"cocoa_close_web\"", "function cocoa_obtain_promo_app_ids()",
                             "function cocoa_post_promo_app_info(host, ids, flags)"}) {
      EXPECT_THAT(html, HasSubstr(part));
    }
  }
  EXPECT_EQ(read("com.example.viewer", {"de"})->localizedTitle(), "Der Umwandler");
  EXPECT_THAT(log_->lines(), IsEmpty());
}

TEST_F(GuideExampleTest, itIsOffWhereAllThatItPromotesIsInstalled) {
  installPackages({"Example Converter.app"});
  EXPECT_TRUE(read(kEditor)->enable());
  EXPECT_FALSE(read("com.example.viewer")->enable());
  installPackages({"Example Converter.app", "Example Viewer.desktop"});
  EXPECT_FALSE(read(kEditor)->enable());
}

}  // namespace
}  // namespace qorix::test
