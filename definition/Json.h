#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include <qorix/platform/Value.h>

namespace qorix {

/// Why a text was not read, and the byte at which that was noticed (its length: behind the end).
struct JsonDefect {
  std::string message;
  std::size_t offset = 0;
};

/// Reads a JSON text, strictly: UTF-8, one object or array, nothing after it, nested 512 deep at
/// most. Of members of one name the last wins. Integers keep their 64 bits; numbers beyond the
/// range of a double become very large ones, so that `Value::integerValue` gives the nearest bound.
/// Nothing when the text is anything else, which `defect`, unless null, then explains. Never
/// throws.
std::optional<Value> parseJson(std::string_view text, JsonDefect* defect = nullptr);

}  // namespace qorix
