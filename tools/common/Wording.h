#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace qorix::tools {

/// A text of the document for people: in quotes, with a blank for each hidden character and U+FFFD
/// for each byte that is not UTF-8, cut if it is long.
std::string inQuotes(std::string_view text);

/// The same without quotes.
std::string printable(std::string_view text);

/// The number of characters of a UTF-8 text.
std::size_t lengthOf(std::string_view text);

/// Without white space at its ends.
std::string_view trimmed(std::string_view text);

/// "width x height", without needless decimals.
std::string sizeText(double width, double height);
std::string numberText(double number);

}  // namespace qorix::tools
