#include "support/Picture.h"

#include <X11/Xutil.h>
#include <gdk-pixbuf/gdk-pixbuf.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "tools/common/display/XConnection.h"

namespace qorix::test {

namespace {

struct DestroyImage {
  void operator()(XImage* image) const { XDestroyImage(image); }
};

std::uint32_t codeOf(const Pixel& color) {
  return std::uint32_t{color.red} << 16 | std::uint32_t{color.green} << 8 | color.blue;
}

}  // namespace

Picture::Picture(int width, int height, std::vector<std::uint32_t> pixels)
    : width_(width), height_(height), pixels_(std::move(pixels)) {}

Pixel Picture::at(int x, int y) const {
  const std::uint32_t code = pixels_.at(
      static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(x));
  return {static_cast<std::uint8_t>(code >> 16), static_cast<std::uint8_t>(code >> 8),
          static_cast<std::uint8_t>(code)};
}

PixelBox Picture::boxOf(const Pixel& color) const {
  const std::uint32_t code = codeOf(color);
  int left = width_;
  int right = -1;
  int top = height_;
  int bottom = -1;
  const std::uint32_t* pixel = pixels_.data();
  for (int y = 0; y < height_; ++y) {
    for (int x = 0; x < width_; ++x, ++pixel) {
      if (*pixel == code) {
        left = std::min(left, x);
        right = std::max(right, x);
        top = std::min(top, y);
        bottom = y;
      }
    }
  }
  return right < 0 ? PixelBox() : PixelBox{left, top, right - left + 1, bottom - top + 1};
}

std::size_t Picture::countOf(const Pixel& color) const {
  return static_cast<std::size_t>(std::count(pixels_.begin(), pixels_.end(), codeOf(color)));
}

std::unique_ptr<Picture> readPicture(const std::filesystem::path& file) {
  GdkPixbuf* pixbuf = gdk_pixbuf_new_from_file(file.c_str(), nullptr);
  if (pixbuf == nullptr) {
    return nullptr;
  }
  const int width = gdk_pixbuf_get_width(pixbuf);
  const int height = gdk_pixbuf_get_height(pixbuf);
  const int channels = gdk_pixbuf_get_n_channels(pixbuf);
  const guint8* bytes = gdk_pixbuf_read_pixels(pixbuf);
  std::vector<std::uint32_t> pixels;
  pixels.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
  for (int y = 0; y < height; ++y) {
    const guint8* row = bytes + static_cast<std::ptrdiff_t>(y) * gdk_pixbuf_get_rowstride(pixbuf);
    for (int x = 0; x < width; ++x, row += channels) {
      pixels.push_back(codeOf({row[0], row[1], row[2]}));
    }
  }
  g_object_unref(pixbuf);
  return std::make_unique<Picture>(width, height, std::move(pixels));
}

std::unique_ptr<Picture> takePicture(const std::string& name, const std::optional<PixelBox>& part) {
  const tools::XConnection display(XOpenDisplay(name.c_str()));
  if (display == nullptr) {
    return nullptr;
  }
  const int screen = DefaultScreen(display.get());
  const PixelBox box = part.value_or(
      PixelBox{0, 0, DisplayWidth(display.get(), screen), DisplayHeight(display.get(), screen)});
  const std::unique_ptr<XImage, DestroyImage> image(XGetImage(
      display.get(), DefaultRootWindow(display.get()), box.x, box.y,
      static_cast<unsigned>(box.width), static_cast<unsigned>(box.height), 0xFFFFFF, ZPixmap));
  if (image == nullptr || image->bits_per_pixel != 32) {
    return nullptr;
  }
  const auto width = static_cast<std::size_t>(box.width);
  const auto height = static_cast<std::size_t>(box.height);
  std::vector<std::uint32_t> pixels(width * height);
  for (std::size_t y = 0; y < height; ++y) {
    std::memcpy(&pixels[y * width],
                image->data + y * static_cast<std::size_t>(image->bytes_per_line), width * 4);
  }
  return std::make_unique<Picture>(box.width, box.height, std::move(pixels));
}

}  // namespace qorix::test
