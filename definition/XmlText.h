#pragma once

#include <string>
#include <string_view>

namespace qorix {

// Most of a document is pages, whose text need not pass through the parser byte by byte: the check
// here takes a fraction of its time. Both append what a parser would report, with each line break
// as one LF. False if they cannot; what was appended until then stays.

/// Appends characters without markup to `text`, as in a CDATA section. False if XML does not allow
/// one of them.
bool appendCharacters(std::string& text, std::string_view characters);

/// Appends text that stands between two tags. False if it holds what XML does not allow, or what
/// is left to the parser: references to what the document declares, or to rare characters.
bool appendBetweenTags(std::string& text, std::string_view between);

}  // namespace qorix
