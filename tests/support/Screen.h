#pragma once

#include "support/Picture.h"

namespace qorix::test {

/// Starts the display of this test process.
bool startScreen();
/// Ends it.
void endScreen();

int screenWidth();
int screenHeight();

/// Waits until what the screen shows in `color` spans that width and height; answers what it spans
/// when the time is over.
PixelBox waitForColor(const Pixel& color, int width, int height);

/// Moves the pointer to that pixel and clicks with the first button, as a user.
void clickAt(int x, int y);

}  // namespace qorix::test
