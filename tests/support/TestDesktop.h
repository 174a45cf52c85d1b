#pragma once

#include <memory>
#include <string>

#include "support/Picture.h"

namespace qorix::test {

/// A desktop without hardware, with the hands and eyes of a user. The variable QORIX_TEST_DESKTOP
/// names the one that a test runs on:
///
///   x11       an X server (VirtualDisplay); the one without the variable
///   x11-x2    the same with two pixels a point (GDK_SCALE)
///   weston    a Wayland compositor that leaves all decorations to its clients
///   sway      a Wayland compositor that draws title bars and borders around its clients
///   sway-x2   the same with two pixels a point
///   sway-two  the same with two outputs side by side, the second with two pixels a point
///
///     QORIX_TEST_DESKTOP=sway build/bin/qorix-gtk-tests --gtest_filter=PlacementTest.topBanner*
///
/// A test calls `start` and `useInThisProcess` before `gtk_init`. Coordinates are points with y
/// downwards; pictures have `scale` pixels a point. Where a window is, on Wayland only a picture
/// says. All processes end with the object, and at the latest with the thread that started it.
class TestDesktop {
 public:
  /// Starts the desktop that the environment names. Null, after a line on standard error, when it
  /// cannot be started.
  static std::unique_ptr<TestDesktop> start();
  /// Starts the Wayland desktop of that name.
  static std::unique_ptr<TestDesktop> startOnWayland(const std::string& name);

  TestDesktop() = default;
  virtual ~TestDesktop() = default;
  TestDesktop(const TestDesktop&) = delete;
  TestDesktop& operator=(const TestDesktop&) = delete;

  /// Makes this process, and those that it starts from now on, use the desktop.
  virtual void useInThisProcess() const = 0;
  /// What all of the desktop shows; null when no picture can be taken.
  virtual std::unique_ptr<Picture> picture() const = 0;
  /// Moves the pointer to that point and clicks. Returns false if that fails.
  virtual bool click(int x, int y, int button) const;

  virtual int scale() const { return 1; }
  /// Whether a program learns and sets the places of its windows.
  virtual bool tellsPlaces() const { return false; }
};

}  // namespace qorix::test
