#pragma once

#include <string_view>

namespace qorix {

/// Whether two versions of an advertisement count as one. A version is a text, optionally followed
/// by "a" and a number ("2.1a3"): the texts are compared letter by letter, the numbers by value;
/// what follows a second "a" counts only as being there or not.
bool isSameAdVersion(std::string_view a, std::string_view b);

}  // namespace qorix
