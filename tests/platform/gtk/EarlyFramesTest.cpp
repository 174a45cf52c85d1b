#include <gtest/gtest.h>

#include "platform/gtk/EarlyFrames.h"

namespace qorix::test {

using gtk::Decorations;
using gtk::EarlyFrames;

namespace {

constexpr Decorations kAround{.left = 1, .right = 3, .top = 20, .bottom = 4};
constexpr Rect kContent{{100, 200}, {480, 320}};

}  // namespace

TEST(EarlyFramesTest, whatNobodyAskedForStays) {
  EXPECT_EQ(EarlyFrames().contentWithin(kAround), std::nullopt);
}

TEST(EarlyFramesTest, aContentOfItsOwnSizeStays) {
  EarlyFrames frames;
  frames.noteTold({300, 200});
  frames.noteMadeFor(kContent);
  frames.noteSet(kContent);
  EXPECT_EQ(frames.contentWithin(kAround), std::nullopt);
}

TEST(EarlyFramesTest, aContentOfAFramesSizeGrowsAboutItsMiddle) {
  EarlyFrames frames;
  frames.noteTold(kContent.size);
  frames.noteMadeFor(kContent);
  frames.noteSet(kContent);
  EXPECT_EQ(frames.contentWithin(kAround), (Rect{{98, 188}, {484, 344}}));
  frames.noteMadeFor(kContent);  // it was told that size once only
  frames.noteSet(kContent);
  EXPECT_EQ(frames.contentWithin(kAround), std::nullopt);
}

TEST(EarlyFramesTest, aFrameGetsItsContentInside) {
  EarlyFrames frames;
  frames.noteMadeFor({{0, 0}, {10, 10}});
  frames.noteSet(kContent);
  EXPECT_EQ(frames.contentWithin(kAround), (Rect{{101, 204}, {476, 296}}));
}

TEST(EarlyFramesTest, aCenteredFrameStaysInTheMiddle) {
  EarlyFrames frames;
  frames.noteCentered(kContent);
  EXPECT_EQ(frames.contentWithin(kAround), (Rect{{99, 192}, {480, 320}}));
}

}  // namespace qorix::test
