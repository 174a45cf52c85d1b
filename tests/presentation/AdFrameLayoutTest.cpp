#include <gtest/gtest.h>

#include "presentation/AdFrameLayout.h"

namespace qorix {
namespace {

constexpr Size kHost{500, 300};

Rect place(const Size& host, std::int64_t embed, const Size& size, double ox = 0, double oy = 0) {
  return bannerFrame(host, {embed, size, ox, oy});
}

TEST(AdFrameLayoutTest, passesTheLeftEdgeOfAHostThatIsTooNarrow) {
  EXPECT_EQ(place({200, 100}, 1, {300, 50}), (Rect{{-100, 50}, {300, 50}}));
}

TEST(AdFrameLayoutTest, offsetsPushABannerAtTheBottomLeftwardsAndUp) {
  EXPECT_EQ(place(kHost, 4, {300, 50}, 10, 5), (Rect{{90, 5}, {300, 50}}));
}

TEST(AdFrameLayoutTest, aPositiveOffsetMovesAVerticallyCentredBannerDown) {
  EXPECT_EQ(place(kHost, 6, {100, 100}, 0, 20), (Rect{{0, 80}, {100, 100}}));
}

TEST(AdFrameLayoutTest, aBannerAtTheRightIsPushedLeftwards) {
  EXPECT_EQ(place(kHost, 2, {100, 60}, 8, 0), (Rect{{392, 120}, {100, 60}}));
}

TEST(AdFrameLayoutTest, otherAnchorsLieAtTheLowerLeftCornerWithoutOffsets) {
  EXPECT_EQ(place(kHost, 9, {30, 20}, 7, 8), (Rect{{0, 0}, {30, 20}}));
  EXPECT_EQ(place(kHost, 100, {30, 20}, 7, 8), (Rect{{0, 0}, {30, 20}}));
}

TEST(AdFrameLayoutTest, followsTheHostsSizeAtTheTopRight) {
  EXPECT_EQ(place({500, 300}, 1, {300, 50}), (Rect{{200, 250}, {300, 50}}));
  EXPECT_EQ(place({800, 600}, 1, {300, 50}), (Rect{{500, 550}, {300, 50}}));
}

TEST(AdFrameLayoutTest, anchorsRunClockwiseFromTheTopRight) {
  const Size ad{100, 50};
  EXPECT_EQ(place(kHost, 1, ad, 3, 4).origin, (Point{397, 246}));
  EXPECT_EQ(place(kHost, 2, ad, 3, 4).origin, (Point{397, 121}));
  EXPECT_EQ(place(kHost, 3, ad, 3, 4).origin, (Point{397, 4}));
  EXPECT_EQ(place(kHost, 4, ad, 3, 4).origin, (Point{197, 4}));
  EXPECT_EQ(place(kHost, 5, ad, 3, 4).origin, (Point{3, 4}));
  EXPECT_EQ(place(kHost, 6, ad, 3, 4).origin, (Point{3, 121}));
  EXPECT_EQ(place(kHost, 7, ad, 3, 4).origin, (Point{3, 246}));
  EXPECT_EQ(place(kHost, 8, ad, 3, 4).origin, (Point{197, 246}));
}

TEST(AdFrameLayoutTest, theRightAndTheLeftAnchorCentreWithDifferentExpressions) {
  // H - (0.5 h + 0.5 H) and 0.5 H - 0.5 h round differently here.
  const Size host{0, 0.3};
  const Size ad{0, 0.1};
  EXPECT_EQ(place(host, 2, ad).origin.y, 0.3 - (0.5 * 0.1 + 0.5 * 0.3));
  EXPECT_EQ(place(host, 6, ad).origin.y, 0.5 * 0.3 - 0.5 * 0.1);
  EXPECT_NE(place(host, 2, ad).origin.y, place(host, 6, ad).origin.y);
}

TEST(AdFrameLayoutTest, sizesOfZeroAndBelowAreAppliedAsTheyAre) {
  EXPECT_EQ(place(kHost, 1, {-10, 0}), (Rect{{510, 300}, {-10, 0}}));
}

TEST(AdFrameLayoutTest, liesInTheMiddleOfTheVisibleFrame) {
  EXPECT_EQ(centeredContentRect({400, 300}, {{0, 23}, {1440, 877}}),
            (Rect{{520, 311.5}, {400, 300}}));
}

TEST(AdFrameLayoutTest, theOriginHasSinglePrecisionOnly) {
  const Rect rect = centeredContentRect({1, 1}, {{0.1, 16777217}, {1, 1}});
  EXPECT_EQ(rect.origin.x, static_cast<double>(0.1F));
  EXPECT_EQ(rect.origin.y, 16777216);
  EXPECT_EQ(rect.size, (Size{1, 1}));
}

}  // namespace
}  // namespace qorix
