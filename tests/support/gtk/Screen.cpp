#include "support/Screen.h"

#include <gtest/gtest.h>

#include <memory>

#include "support/ChildProcess.h"
#include "support/TestDesktop.h"
#include "support/Wait.h"

namespace qorix::test {

namespace {

std::unique_ptr<TestDesktop>& display() {
  static std::unique_ptr<TestDesktop> theDisplay;
  return theDisplay;
}

std::unique_ptr<Picture> picture() { return display()->picture(); }

}  // namespace

bool startScreen() {
  display() = TestDesktop::start();
  if (display() == nullptr) {
    return false;
  }
  display()->useInThisProcess();
  return true;
}

void endScreen() { display().reset(); }

BareScreen::BareScreen() : display_(VirtualDisplay::start({.hasWindowManager = false})) {
  if (isUp()) {
    display_->useInThisProcess();
  }
}

BareScreen::~BareScreen() { display()->useInThisProcess(); }

int screenWidth() { return picture()->width(); }
int screenHeight() { return picture()->height(); }

PixelBox waitForColor(const Pixel& color, int width, int height) {
  PixelBox box;
  const auto isThere = [&] {
    const PixelBox pixels = picture()->boxOf(color);
    const int scale = display()->scale();
    box = {pixels.x / scale, pixels.y / scale, pixels.width / scale, pixels.height / scale};
    return box.width == width && box.height == height;
  };
  waitUntil(isThere, kPatience);
  return box;
}

void clickAt(int x, int y) { EXPECT_TRUE(display()->click(x, y, 1)) << "at " << x << ", " << y; }

}  // namespace qorix::test
