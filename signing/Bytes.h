#pragma once

#include <string_view>

namespace qorix {

/// As OpenSSL wants them.
inline const unsigned char* asBytes(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

}  // namespace qorix
