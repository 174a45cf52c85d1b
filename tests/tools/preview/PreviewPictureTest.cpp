#include <algorithm>
#include <csignal>
#include <filesystem>
#include <memory>

#include "tools/preview/PreviewFixture.h"

namespace qorix::test {
namespace {

using ::testing::ElementsAre;
using ::testing::StartsWith;

class PreviewPictureTest : public PreviewFixture {
 protected:
  std::unique_ptr<Picture> pictureOf(const std::string& text, std::vector<std::string> options,
                                     const std::vector<std::string>& environment) {
    write(text);
    const std::string file = folder_ / "picture.png";
    std::filesystem::remove(file);
    options.insert(options.end(), {"--screenshot", file});
    PreviewProcess preview(arguments(options), environment);
    EXPECT_EQ(preview.exitStatus(), 0);
    EXPECT_THAT(preview.texts("screenshot"), ElementsAre(file));
    auto picture = readPicture(file);
    EXPECT_NE(picture, nullptr);
    return picture == nullptr ? std::make_unique<Picture>() : std::move(picture);
  }

  const std::vector<std::string> noDisplay_{"-u", "DISPLAY", "-u", "WAYLAND_DISPLAY"};
};

TEST_F(PreviewPictureTest, showsTheBannerInItsWindowWithAndWithoutADisplay) {
  const std::string banner = document({.height = "60"});
  for (const auto& environment : {std::vector<std::string>(), noDisplay_}) {
    for (const auto& options :
         {std::vector<std::string>(), std::vector<std::string>{"--quit-after", "1"}}) {
      const auto picture = pictureOf(banner, options, environment);
      EXPECT_EQ(picture->width(), 800);
      const PixelBox ad = picture->boxOf(kPink);
      EXPECT_EQ(text(ad), "300x60+500+" + std::to_string(picture->height() - 600));
    }
  }
}

TEST_F(PreviewPictureTest, showsThePopupAlone) {
  const auto picture = pictureOf(document({.embed = "0", .width = "400", .height = "300"}),
                                 {"--quit-after", "0"}, noDisplay_);
  EXPECT_EQ(text(picture->boxOf(kPink)), "400x300+0+0");
  EXPECT_EQ(picture->width(), 400);
}

TEST_F(PreviewPictureTest, waitsForThePageToBePainted) {
  // Ready only some time after the time to quit.
  const auto picture =
      pictureOf(document({.height = "60", .delay = "2"},
                         "<body style='margin:0'><script>const until = Date.now() + 1500;"
                         "while (Date.now() < until) {} document.body.style.background = '#ff00aa';"
                         "</script>"),
                {"--quit-after", "0"}, {});
  EXPECT_EQ(picture->boxOf(kPink).width, 300);
}

TEST_F(PreviewPictureTest, failsWhenThereIsNothingToShow) {
  for (const auto& bad : {std::string("<rootcfg>"), document({.enable = "0"}),
                          document({.embed = "-1"}), document({.height = "0"})}) {
    write(bad);
    const std::string file = folder_ / "picture.png";
    PreviewProcess preview(arguments({"--quit-after", "0", "--screenshot", file}), noDisplay_);
    EXPECT_EQ(preview.exitStatus(), 1);
    EXPECT_THAT(preview.texts("screenshot"), ElementsAre("none: nothing is shown"));
    EXPECT_FALSE(std::filesystem::exists(file));
  }
}

TEST_F(PreviewPictureTest, failsWhenItCannotBeSaved) {
  write(document({.height = "60"}));
  PreviewProcess preview(arguments({"--screenshot", folder_ / "no/such/folder.png"}));
  EXPECT_EQ(preview.exitStatus(), 1);
  ASSERT_EQ(preview.texts("screenshot").size(), 1U);
  EXPECT_THAT(preview.texts("screenshot")[0], StartsWith("none: "));
}

TEST_F(PreviewPictureTest, leavesNoDisplayBehind) {
  write(document({.height = "60"}));
  PreviewProcess preview(arguments({"--quit-after", "600", "--screenshot", folder_ / "a.png"}),
                         noDisplay_);
  EXPECT_TRUE(preview.waitForLine("page"));
  replace(document({.height = "60"}, kBluePage));  // the display is inherited
  EXPECT_TRUE(preview.waitForLine("page", 2));
  const auto children = childrenOf(preview.process());
  const auto server = std::ranges::find(children, "Xvfb", nameOf);
  ASSERT_NE(server, children.end());
  preview.sendSignal(SIGKILL);
  EXPECT_TRUE(preview.waitForEnd());
  EXPECT_TRUE(eventually([&] { return hasEnded(*server); }));
}

}  // namespace
}  // namespace qorix::test
