#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qorix::test {

/// One pixel, red, green and blue.
struct Pixel {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  bool operator==(const Pixel&) const = default;
};

/// A rectangle of pixels. The origin is the upper left corner.
struct PixelBox {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  bool operator==(const PixelBox&) const = default;
};

/// What a display shows or a file holds. The origin is the upper left corner.
class Picture {
 public:
  Picture() = default;
  /// `pixels` are 0xRRGGBB, row by row.
  Picture(int width, int height, std::vector<std::uint32_t> pixels);

  int width() const { return width_; }
  int height() const { return height_; }
  Pixel at(int x, int y) const;

  /// The smallest rectangle around the pixels of that colour; without size when there are none.
  PixelBox boxOf(const Pixel& color) const;
  /// How many pixels have that colour.
  std::size_t countOf(const Pixel& color) const;

 private:
  int width_ = 0;
  int height_ = 0;
  std::vector<std::uint32_t> pixels_;
};

/// The picture in a PNG file; null when it cannot be read.
std::unique_ptr<Picture> readPicture(const std::filesystem::path& file);

/// Takes a picture of the X display `name` (":7"), whole or of a part of it. Null when it cannot be
/// taken.
std::unique_ptr<Picture> takePicture(const std::string& name,
                                     const std::optional<PixelBox>& part = std::nullopt);

}  // namespace qorix::test
