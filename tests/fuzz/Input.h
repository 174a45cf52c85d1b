#pragma once

#include <cstddef>
#include <string_view>

namespace qorix::fuzz {

/// Takes the first byte from `bytes`; 0 if there is none.
inline unsigned char takeByte(std::string_view& bytes) {
  if (bytes.empty()) {
    return 0;
  }
  const auto byte = static_cast<unsigned char>(bytes.front());
  bytes.remove_prefix(1);
  return byte;
}

/// Takes what comes before the first `end`, and `end` itself; everything if there is none.
inline std::string_view takeUntil(std::string_view& bytes, char end) {
  const std::size_t at = bytes.find(end);
  const std::string_view taken = bytes.substr(0, at);
  bytes.remove_prefix(at == bytes.npos ? bytes.size() : at + 1);
  return taken;
}

}  // namespace qorix::fuzz
