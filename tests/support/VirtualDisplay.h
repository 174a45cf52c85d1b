#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tools/preview/PrivateDisplay.h"

namespace qorix::test {

/// One pixel, red, green and blue.
struct Pixel {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  bool operator==(const Pixel&) const = default;
};

/// What a display shows. The origin is the upper left corner.
class Picture {
 public:
  Picture(int width, int height, std::vector<std::uint8_t> rgb);

  int width() const { return width_; }
  int height() const { return height_; }
  Pixel at(int x, int y) const;

  /// False when the file cannot be written.
  bool writePng(const std::filesystem::path& file) const;

 private:
  int width_;
  int height_;
  std::vector<std::uint8_t> rgb_;
};

/// A rectangle of pixels.
struct PixelBox {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
};

/// The smallest rectangle around the pixels of that colour; without size when there are none.
PixelBox boxOfColor(const Picture& picture, const Pixel& color);

/// The picture in a PNG file; null when it cannot be read.
std::unique_ptr<Picture> readPicture(const std::filesystem::path& file);

/// Takes a picture of the whole X display `name` (":7"). Null when it cannot be reached.
std::unique_ptr<Picture> takePicture(const std::string& name);

struct VirtualDisplayOptions {
  int width = 1280;
  int height = 1024;
  /// Monitors of equal size, side by side.
  int monitors = 1;
};

/// An X server without hardware of our own, with a window manager on it, and private folders for
/// whatever is run on it. Its processes end with it, and at the latest with the thread that started
/// it.
class VirtualDisplay {
 public:
  /// Returns when windows can be managed on it. Null, after a line on standard error, when it
  /// cannot be started.
  static std::unique_ptr<VirtualDisplay> start(const VirtualDisplayOptions& options = {});
  ~VirtualDisplay();
  VirtualDisplay(const VirtualDisplay&) = delete;
  VirtualDisplay& operator=(const VirtualDisplay&) = delete;

  /// The display's name, ":7".
  const std::string& name() const;

  /// The folder below which programs find their private XDG folders; removed in the end.
  const std::filesystem::path& folder() const { return folder_; }

  /// Makes this process, and those that it starts from now on, use the display and the folders.
  void useInThisProcess() const;

 private:
  VirtualDisplay() = default;
  bool divideIntoMonitors(const VirtualDisplayOptions& options) const;

  std::filesystem::path folder_;
  std::unique_ptr<PrivateDisplay> server_;
};

}  // namespace qorix::test
