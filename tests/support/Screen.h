#pragma once

#include <memory>

#include "support/Picture.h"
#include "support/VirtualDisplay.h"

namespace qorix::test {

/// Starts the display of this test process. Returns false if that fails.
bool startScreen();
/// Ends it.
void endScreen();

/// For as long as it lives, programs are started on a display of their own that has no window
/// manager: openbox can lose a client that is killed while its window is being mapped, and with it
/// every later window of the same id, which the server gives to the next client.
class BareScreen {
 public:
  BareScreen();
  ~BareScreen();
  BareScreen(const BareScreen&) = delete;
  BareScreen& operator=(const BareScreen&) = delete;

  /// False when the display could not be started.
  bool isUp() const { return display_ != nullptr; }

 private:
  std::unique_ptr<VirtualDisplay> display_;
};

int screenWidth();
int screenHeight();

/// Waits until the pixels of `color` on the screen span that width and height, in points. Returns
/// what they span at the end, in points.
PixelBox waitForColor(const Pixel& color, int width, int height);

/// Moves the pointer to that point and clicks with the first button, as a user does.
void clickAt(int x, int y);

}  // namespace qorix::test
