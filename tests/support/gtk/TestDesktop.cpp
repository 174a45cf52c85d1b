#include "support/TestDesktop.h"

#include <cstdlib>
#include <string>

#include "support/VirtualDisplay.h"

namespace qorix::test {

namespace {

class X11Desktop : public TestDesktop {
 public:
  X11Desktop(std::unique_ptr<VirtualDisplay> display, int scale)
      : display_(std::move(display)), scale_(scale) {}

  void useInThisProcess() const override {
    display_->useInThisProcess();
    setenv("GDK_SCALE", std::to_string(scale_).c_str(), 1);
  }
  std::unique_ptr<Picture> picture() const override { return takePicture(display_->name()); }
  bool click(int x, int y, int button) const override {
    return TestDesktop::click(x * scale_, y * scale_, button);
  }
  int scale() const override { return scale_; }
  bool tellsPlaces() const override { return scale_ == 1; }

 private:
  const std::unique_ptr<VirtualDisplay> display_;
  const int scale_;
};

}  // namespace

bool TestDesktop::click(int x, int y, int button) const {
  const std::string command = "xdotool mousemove " + std::to_string(x) + ' ' + std::to_string(y) +
                              " click " + std::to_string(button);
  return std::system(command.c_str()) == 0;
}

std::unique_ptr<TestDesktop> TestDesktop::start() {
  const char* variable = std::getenv("QORIX_TEST_DESKTOP");
  const std::string name = variable == nullptr ? "x11" : variable;
  if (!name.starts_with("x11")) {
    return startOnWayland(name);
  }
  const int scale = name == "x11-x2" ? 2 : 1;
  auto display =
      scale == 1 ? VirtualDisplay::start() : VirtualDisplay::start({.width = 2000, .height = 1600});
  return display == nullptr ? nullptr : std::make_unique<X11Desktop>(std::move(display), scale);
}

}  // namespace qorix::test
