#pragma once

#include <string>
#include <string_view>

namespace qorix {

/// Appends the inside of a CDATA section to `text`, as a parser reports it: with each line break as
/// one LF. False if it holds what XML does not allow; what was appended until then stays.
bool appendSection(std::string& text, std::string_view section);

}  // namespace qorix
