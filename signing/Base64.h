#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qorix {

/// The usual alphabet, padded, without line breaks.
std::string base64(std::string_view bytes);

/// The bytes, if `text` is exactly what `base64` makes of them.
std::optional<std::string> bytesOfBase64(std::string_view text);

}  // namespace qorix
