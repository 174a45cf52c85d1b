#pragma once

#include <string_view>

namespace qorix::tools::preview {

/// Prints "HH:MM:SS.mmm KIND: TEXT" on a line of its own of standard output, at once. Whatever
/// texts of a page are quoted in it, it stays one line.
void printLine(std::string_view kind, std::string_view text);

}  // namespace qorix::tools::preview
