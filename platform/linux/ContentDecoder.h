#pragma once

#include <functional>
#include <memory>
#include <string_view>

namespace qorix {

/// Undoes the content encoding of one response body, piece by piece.
class ContentDecoder {
 public:
  /// Takes decoded bytes; false to end the decoding.
  using Output = std::function<bool(std::string_view)>;

  /// What `ContentDecoder::create` can read, for a request's Accept-Encoding.
  static constexpr const char* kAcceptedEncodings = "gzip, deflate";

  virtual ~ContentDecoder() = default;

  /// A decoder for the encoding that a response names, in any case of letters; an empty name stands
  /// for none. Null for an encoding that nobody asked for.
  static std::unique_ptr<ContentDecoder> create(std::string_view encoding);

  /// False when the bytes are not what the encoding promises, or `output` has answered false.
  virtual bool decode(std::string_view bytes, const Output& output) = 0;

  /// Whether the body may end here; a body without any bytes may.
  virtual bool isComplete() const = 0;
};

}  // namespace qorix
