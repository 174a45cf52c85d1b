#pragma once

#include <string>
#include <string_view>

namespace qorix {

// Most of a document is pages, whose text need not pass through the parser byte by byte: the check
// here takes a fraction of its time. Both append what a parser would report, with each line break
// as one LF. False if they cannot; what was appended until then stays.

/// Appends the inside of a CDATA section to `text`. False if it holds what XML does not allow.
bool appendSection(std::string& text, std::string_view section);

/// Appends text that stands between two tags. False if it holds what XML does not allow, or what
/// is left to the parser: references other than the five that every document knows.
bool appendBetweenTags(std::string& text, std::string_view between);

}  // namespace qorix
