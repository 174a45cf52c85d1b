#pragma once

#include <optional>
#include <string>

namespace qorix::tools::sign {

/// Puts `text` in the place of a file, whole or not at all: who reads it meanwhile gets the old
/// one. A file that is there keeps its mode, a link to it stays. Returns the fault, if any.
std::optional<std::string> replaceFile(const std::string& name, const std::string& text);

}  // namespace qorix::tools::sign
