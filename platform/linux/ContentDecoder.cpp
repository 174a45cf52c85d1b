#include "platform/linux/ContentDecoder.h"

#include <strings.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <limits>
#include <string>

namespace qorix {

namespace {

class IdentityDecoder : public ContentDecoder {
 public:
  bool decode(std::string_view bytes, const Output& output) override { return output(bytes); }
  bool isComplete() const override { return true; }
};

/// gzip and zlib streams; gzip may be several streams one after the other.
class ZlibDecoder : public ContentDecoder {
 public:
  ZlibDecoder() {
    constexpr int kEitherFormat = 32;
    isUsable_ = inflateInit2(&stream_, MAX_WBITS + kEitherFormat) == Z_OK;
  }
  ZlibDecoder(const ZlibDecoder&) = delete;
  ZlibDecoder& operator=(const ZlibDecoder&) = delete;
  ~ZlibDecoder() override { inflateEnd(&stream_); }

  bool decode(std::string_view bytes, const Output& output) override {
    constexpr std::size_t kMost = std::numeric_limits<uInt>::max();
    while (!bytes.empty()) {
      const auto piece = bytes.substr(0, kMost);
      if (!decodePiece(piece, output)) {
        return false;
      }
      bytes.remove_prefix(piece.size());
    }
    return true;
  }

  bool isComplete() const override { return isAtEnd_; }

 private:
  bool decodePiece(std::string_view bytes, const Output& output) {
    // zlib does not write to its input; its interface is older than const.
    stream_.next_in = const_cast<Bytef*>(reinterpret_cast<const Bytef*>(bytes.data()));
    stream_.avail_in = static_cast<uInt>(bytes.size());
    bool hasMore = true;
    while (isUsable_ && hasMore) {
      if (isAtEnd_ && inflateReset(&stream_) != Z_OK) {
        return false;
      }
      stream_.next_out = reinterpret_cast<Bytef*>(buffer_.data());
      stream_.avail_out = static_cast<uInt>(buffer_.size());
      const int code = inflate(&stream_, Z_NO_FLUSH);
      if (code != Z_OK && code != Z_STREAM_END && code != Z_BUF_ERROR) {
        return false;
      }
      isAtEnd_ = code == Z_STREAM_END;
      const std::size_t size = buffer_.size() - stream_.avail_out;
      if (size > 0 && !output({buffer_.data(), size})) {
        return false;
      }
      // A full buffer may leave bytes inside the stream even when the input is used up.
      hasMore = stream_.avail_in > 0 || (!isAtEnd_ && stream_.avail_out == 0);
    }
    return isUsable_;
  }

  z_stream stream_{};
  std::array<char, 65536> buffer_;
  bool isUsable_ = false;
  bool isAtEnd_ = true;
};

}  // namespace

std::unique_ptr<ContentDecoder> ContentDecoder::create(std::string_view encoding) {
  const std::string name(encoding);
  const auto is = [&](const char* other) { return ::strcasecmp(name.c_str(), other) == 0; };
  if (is("") || is("identity")) {
    return std::make_unique<IdentityDecoder>();
  }
  if (is("gzip") || is("x-gzip") || is("deflate")) {
    return std::make_unique<ZlibDecoder>();
  }
  return nullptr;
}

}  // namespace qorix
