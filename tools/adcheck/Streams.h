#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qorix::adcheck {

/// All of the file, or of standard input for "-". Nothing, with errno set, when that cannot be
/// read or is larger than 256 MB.
std::optional<std::string> readFile(const std::string& name);

/// Writes the whole text to standard output; false, with errno set, when that fails.
bool writeOutput(std::string_view text);

}  // namespace qorix::adcheck
