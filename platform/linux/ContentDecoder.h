#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qorix {

/// Undoes the content encoding of one response body, piece by piece.
class ContentDecoder {
 public:
  enum class Result {
    ok,
    damaged,   // the bytes are not what the encoding promises
    tooLarge,  // they decode to more than was allowed
    unwanted,  // the output has answered false
  };

  /// Takes decoded bytes; false to end the decoding.
  using Output = std::function<bool(std::string_view)>;

  /// What a request's Accept-Encoding asks for.
  static constexpr const char* kAcceptedEncodings = "gzip, deflate";

  ~ContentDecoder();

  /// A decoder for the encodings that a response names, separated by commas, in the order in which
  /// they were applied and in any case of letters. A name that stands for no compression changes
  /// nothing. Null when there is a compression that cannot be undone, or a heap of them.
  static std::unique_ptr<ContentDecoder> create(std::string_view encodings, std::size_t mostBytes);

  /// Anything but `ok` is the end.
  Result decode(std::string_view bytes, const Output& output);

  /// Whether the body may end here; a body without any bytes may.
  bool isComplete() const;

 private:
  class Inflater;

  ContentDecoder();
  Result decodeFrom(std::size_t layer, std::string_view bytes, const Output& output);

  std::vector<std::unique_ptr<Inflater>> layers_;  // the one that was applied last comes first
};

}  // namespace qorix
