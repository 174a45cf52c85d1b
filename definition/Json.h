#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include <qorix/platform/Value.h>

namespace qorix {

/// Why a text was not read, and the byte at which that was noticed (the text's length: at its end).
struct JsonDefect {
  std::string message;
  std::size_t offset = 0;
};

/// Reads a JSON text, strictly: UTF-8, one object or array, nothing after it, at most 512 levels
/// deep. Of members with one name the last counts. Integers keep their 64 bits. Numbers beyond the
/// range of a double become very large ones, so that `Value::integerValue` gives the nearest bound.
///
/// Returns nullopt for any other text; `defect`, unless null, then says why. No text makes it
/// throw.
std::optional<Value> parseJson(std::string_view text, JsonDefect* defect = nullptr);

}  // namespace qorix
