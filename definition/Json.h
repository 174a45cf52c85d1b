#pragma once

#include <optional>
#include <string_view>

#include "platform/Value.h"

namespace qorix {

/// Reads a JSON text, strictly: UTF-8, one object or array, nothing after it, nested 512 deep at
/// most. Of members of one name the last wins. Integers keep their 64 bits; numbers beyond the
/// range of a double become very large ones, so that `Value::integerValue` gives the nearest bound.
/// Nothing when the text is anything else. Never throws.
std::optional<Value> parseJson(std::string_view text);

}  // namespace qorix
