#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qorix::tools {

/// All that can be read from the descriptor. None, with errno set, if that fails or is more than
/// 256 MB.
std::optional<std::string> readAll(int descriptor);

/// The same of a file.
std::optional<std::string> readFile(const std::string& name);

/// Writes the whole text; false, with errno set, if that fails.
bool writeAll(int descriptor, std::string_view text);

/// The same to standard output.
bool writeOutput(std::string_view text);

}  // namespace qorix::tools
