#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

namespace qorix {

/// Undoes the content encoding of one response body, piece by piece.
class ContentDecoder {
 public:
  enum class Result {
    ok,
    damaged,   // the bytes do not follow the encoding
    tooLarge,  // they decode to more than is allowed
    unwanted,  // the output returned false
  };

  /// Takes decoded bytes. Returns false to end the decoding.
  using Output = std::function<bool(std::string_view)>;

  /// What a request's Accept-Encoding asks for.
  static constexpr const char* kAcceptedEncodings = "gzip, deflate";

  ~ContentDecoder();

  /// A decoder for the encodings that a response names, separated by commas, in the order in which
  /// they were applied and in any letter case. A name that stands for no compression has no effect.
  /// Returns null if one of them cannot be undone, or if there are more than five.
  static std::unique_ptr<ContentDecoder> create(std::string_view encodings, std::size_t mostBytes);

  /// Decodes the next bytes. After any result but `ok` the decoder is of no further use.
  Result decode(std::string_view bytes, const Output& output);

  /// Whether the body may end here; a body without any bytes may.
  bool isComplete() const;

 private:
  class Inflater;

  ContentDecoder();
  Result decodeFrom(std::size_t layer, std::string_view bytes, const Output& output);

  std::vector<std::unique_ptr<Inflater>> layers_;  // the one that was applied last is first
};

}  // namespace qorix
