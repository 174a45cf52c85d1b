#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "platform/gtk/Coordinates.h"

namespace qorix::test {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

testing::AssertionResult isRectangle(const GdkRectangle& actual, const GdkRectangle& expected) {
  if (gdk_rectangle_equal(&actual, &expected) != FALSE) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure()
         << actual.x << ", " << actual.y << ", " << actual.width << " x " << actual.height;
}

}  // namespace

TEST(CoordinatesTest, areRoundedAndNeverOverflow) {
  EXPECT_EQ(gtk::wholeCoordinate(2.5), 3);
  EXPECT_EQ(gtk::wholeCoordinate(-2.5), -2);
  EXPECT_EQ(gtk::wholeCoordinate(20'000), 20'000);
  EXPECT_EQ(gtk::wholeCoordinate(1e300), 1'000'000);
  EXPECT_EQ(gtk::wholeCoordinate(-kInfinity), -1'000'000);
  EXPECT_EQ(gtk::wholeCoordinate(std::nan("")), 0);
}

TEST(CoordinatesTest, aRectangleKeepsItsSizeHoweverFarItReaches) {
  EXPECT_TRUE(
      isRectangle(gtk::flipped(Rect{{-16'300, 0}, {16'384, 50}}, 300), {-16'300, 250, 16'384, 50}));
  EXPECT_TRUE(isRectangle(gtk::flipped(Rect{{5e6, -5e6}, {300, 50}}, 300),
                          {1'000'000, 1'000'000, 300, 50}));
  EXPECT_TRUE(isRectangle(gtk::flipped(Rect{{0.5, 0}, {10, 20}}, 300), {1, 280, 10, 20}));
}

TEST(CoordinatesTest, aSideIsCutOffAtTheLongestAndNeverNegative) {
  EXPECT_TRUE(
      isRectangle(gtk::flipped(Rect{{10, 0}, {50'000, -7}}, 300), {10, 307, gtk::kLongestSide, 0}));
  EXPECT_TRUE(isRectangle(gtk::flipped(Rect{{0, 0}, {kInfinity, std::nan("")}}, 300),
                          {0, 0, gtk::kLongestSide, 0}));
}

TEST(CoordinatesTest, aWindowHasAPlaceThatItsCoordinatesReach) {
  EXPECT_TRUE(isRectangle(gtk::placeable({5, 6, 0, 0}), {5, 6, 1, 1}));
  EXPECT_TRUE(isRectangle(gtk::placeable({-20'000, 90'000, 30'000, 7}),
                          {-16'000, 16'000, gtk::kLongestSide, 7}));
}

TEST(CoordinatesTest, aRectangleIsMovedNoFartherThanIntoItsArea) {
  const Rect area{{100, 50}, {1000, 800}};
  EXPECT_EQ(gtk::movedInto({{200, 60}, {300, 200}}, area), (Rect{{200, 60}, {300, 200}}));
  EXPECT_EQ(gtk::movedInto({{900, -497}, {300, 750}}, area), (Rect{{800, 50}, {300, 750}}));
  EXPECT_EQ(gtk::movedInto({{900, 700}, {1200, 900}}, area), (Rect{{100, 50}, {1200, 900}}));
}

TEST(CoordinatesTest, aDesktopReachesToItsLowestMonitor) {
  EXPECT_EQ(gtk::lowestEdge({}), 0);
  EXPECT_EQ(gtk::lowestEdge({{0, 100, 800, 600}, {800, 0, 1920, 1080}, {0, 700, 800, 600}}), 1300);
}

TEST(CoordinatesTest, aWindowIsOnTheMonitorWithItsLargestPart) {
  const std::vector<GdkRectangle> monitors = {{0, 0, 800, 900}, {800, 0, 800, 900}};
  EXPECT_EQ(gtk::monitorOf({700, 100, 300, 200}, monitors), 1);
  EXPECT_EQ(gtk::monitorOf({600, 100, 300, 200}, monitors), 0);
  EXPECT_EQ(gtk::monitorOf({5000, 100, 300, 200}, monitors), -1);
  EXPECT_EQ(gtk::monitorOf({900, 100, 0, 0}, monitors), 1) << "an empty one lies there, too";
}

}  // namespace qorix::test
