#pragma once

#include <optional>
#include <string>

#include <qorix/platform/Value.h>

namespace qorix {

/// Reads a JSON text as `parseJson` promises to: straight from the grammar of RFC 8259, as
/// libraries differ in what they make of large numbers and halves of surrogate pairs.
std::optional<Value> readJsonAgain(const std::string& text);

}  // namespace qorix
