#include "support/Screen.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "support/ChildProcess.h"
#include "support/Wait.h"

namespace qorix::test {

namespace {

std::unique_ptr<VirtualDisplay>& display() {
  static std::unique_ptr<VirtualDisplay> theDisplay;
  return theDisplay;
}

std::unique_ptr<Picture> picture() { return takePicture(display()->name()); }

}  // namespace

bool startScreen() {
  display() = VirtualDisplay::start();
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
    box = picture()->boxOf(color);
    return box.width == width && box.height == height;
  };
  waitUntil(isThere, kPatience);
  return box;
}

void clickAt(int x, int y) {
  const std::string command =
      "xdotool mousemove " + std::to_string(x) + ' ' + std::to_string(y) + " click 1";
  EXPECT_EQ(std::system(command.c_str()), 0) << command;
}

}  // namespace qorix::test
