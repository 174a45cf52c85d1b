#include "platform/linux/ContentDecoder.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <limits>
#include <new>
#include <string>

#include "text/AsciiCase.h"

namespace qorix {

namespace {

constexpr std::size_t kMostLayers = 5;
constexpr std::string_view kGzipMark = "\x1F\x8B";

bool isAnyOf(const std::string& name, std::initializer_list<const char*> others) {
  return std::ranges::any_of(others,
                             [&](const char* other) { return equalIgnoringCase(name, other); });
}

std::string withoutBlanks(std::string_view text) {
  constexpr const char* kSeparators = " \t";
  const auto begin = text.find_first_not_of(kSeparators);
  return begin == text.npos
             ? ""
             : std::string(text.substr(begin, text.find_last_not_of(kSeparators) + 1 - begin));
}

}  // namespace

/// Undoes gzip, which may be several streams one after the other, or deflate, with zlib's frame or,
/// as many servers send it, without. Bytes after the last stream are ignored.
class ContentDecoder::Inflater {
 public:
  Inflater(bool mayLackFrame, std::size_t mostBytes)
      : mayLackFrame_(mayLackFrame), mostBytes_(mostBytes) {}
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;
  ~Inflater() { inflateEnd(&stream_); }

  template <class Take>  // takes decoded bytes and returns a Result
  Result decode(std::string_view bytes, const Take& take) {
    while (!bytes.empty() && state_ != State::over) {
      if (state_ == State::beginning) {
        beginning_ += bytes.front();
        bytes.remove_prefix(1);
        if (beginning_.size() == kGzipMark.size()) {
          std::string_view beginning = beginning_;
          const Result result = begin() ? inflateSome(beginning, take) : Result::damaged;
          if (result != Result::ok) {
            return result;
          }
        }
        continue;
      }
      const Result result = inflateSome(bytes, take);
      if (result != Result::ok) {
        return result;
      }
    }
    return Result::ok;
  }

  bool isComplete() const {
    return state_ == State::over ||
           (state_ == State::beginning && (isAfterStream_ || beginning_.empty()));
  }

 private:
  enum class State { beginning, inside, over };

  /// Looks at the first two bytes of what may be a stream. Returns false if it must be one and is
  /// not.
  bool begin() {
    constexpr int kGzipOrZlib = MAX_WBITS + 32;
    constexpr int kNoFrame = -MAX_WBITS;
    const bool isGzip = beginning_ == kGzipMark;
    if (isAfterStream_) {
      state_ = isGzip ? State::inside : State::over;
      return !isGzip || inflateReset(&stream_) == Z_OK;
    }
    if (!isGzip && !beginsZlib() && !mayLackFrame_) {
      return false;
    }
    state_ = State::inside;
    isGzip_ = isGzip;
    if (inflateInit2(&stream_, isGzip || beginsZlib() ? kGzipOrZlib : kNoFrame) != Z_OK) {
      throw std::bad_alloc();
    }
    return true;
  }

  bool beginsZlib() const {
    const int first = static_cast<unsigned char>(beginning_[0]);
    const int second = static_cast<unsigned char>(beginning_[1]);
    return (first & 15) == Z_DEFLATED && (first * 256 + second) % 31 == 0;
  }

  /// Decodes the beginning of `bytes` that belongs to the stream, and removes it.
  template <class Take>
  Result inflateSome(std::string_view& bytes, const Take& take) {
    while (state_ == State::inside) {
      const auto piece = bytes.substr(0, std::numeric_limits<uInt>::max());
      // zlib does not write to its input, but its interface lacks the const.
      stream_.next_in = const_cast<Bytef*>(reinterpret_cast<const Bytef*>(piece.data()));
      stream_.avail_in = static_cast<uInt>(piece.size());
      stream_.next_out = reinterpret_cast<Bytef*>(buffer_.data());
      stream_.avail_out = static_cast<uInt>(buffer_.size());
      const int code = ::inflate(&stream_, Z_NO_FLUSH);
      if (code == Z_MEM_ERROR) {
        throw std::bad_alloc();
      }
      if (code != Z_OK && code != Z_STREAM_END && code != Z_BUF_ERROR) {
        return Result::damaged;
      }
      bytes.remove_prefix(piece.size() - stream_.avail_in);
      const std::size_t size = buffer_.size() - stream_.avail_out;
      if (size > mostBytes_ - decodedBytes_) {
        return Result::tooLarge;
      }
      decodedBytes_ += size;
      const Result result = size == 0 ? Result::ok : take(std::string_view(buffer_.data(), size));
      if (result != Result::ok) {
        return result;
      }
      if (code == Z_STREAM_END) {
        isAfterStream_ = true;
        beginning_.clear();
        state_ = isGzip_ ? State::beginning : State::over;
      } else if (bytes.empty() && stream_.avail_out > 0) {
        break;  // after a full buffer there may be more output, even if the input is used up
      }
    }
    return Result::ok;
  }

  const bool mayLackFrame_;
  const std::size_t mostBytes_;
  State state_ = State::beginning;
  std::string beginning_;
  bool isAfterStream_ = false;
  bool isGzip_ = false;
  z_stream stream_{};
  std::size_t decodedBytes_ = 0;
  std::array<char, 65536> buffer_;
};

ContentDecoder::ContentDecoder() = default;
ContentDecoder::~ContentDecoder() = default;

std::unique_ptr<ContentDecoder> ContentDecoder::create(std::string_view encodings,
                                                       std::size_t mostBytes) {
  std::unique_ptr<ContentDecoder> decoder(new ContentDecoder);
  auto& layers = decoder->layers_;
  while (!encodings.empty()) {
    const auto end = std::min(encodings.find(','), encodings.size());
    const std::string name = withoutBlanks(encodings.substr(0, end));
    encodings.remove_prefix(std::min(end + 1, encodings.size()));
    const bool isDeflate = equalIgnoringCase(name, "deflate");
    if (isDeflate || isAnyOf(name, {"gzip", "x-gzip"})) {
      layers.insert(layers.begin(), std::make_unique<Inflater>(isDeflate, mostBytes));
    }
    if (isAnyOf(name, {"br", "zstd", "compress", "x-compress"}) || layers.size() > kMostLayers) {
      return nullptr;
    }
  }
  return decoder;
}

ContentDecoder::Result ContentDecoder::decode(std::string_view bytes, const Output& output) {
  return decodeFrom(0, bytes, output);
}

ContentDecoder::Result ContentDecoder::decodeFrom(std::size_t layer, std::string_view bytes,
                                                  const Output& output) {
  if (layer == layers_.size()) {
    return output(bytes) ? Result::ok : Result::unwanted;
  }
  return layers_[layer]->decode(
      bytes, [&](std::string_view piece) { return decodeFrom(layer + 1, piece, output); });
}

bool ContentDecoder::isComplete() const {
  return std::ranges::all_of(layers_, [](const auto& layer) { return layer->isComplete(); });
}

}  // namespace qorix
