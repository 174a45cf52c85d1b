#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qorix::tools::adcheck {

/// One member of a JSON object; offsets are bytes of the text.
struct JsonMember {
  std::string name;
  std::size_t nameOffset = 0;
  std::size_t valueOffset = 0;
};

/// The members of the object that begins at `offset` of a sound JSON text, in their order, also
/// those that a later one of the same name overrides; none when no object begins there.
std::vector<JsonMember> membersAt(std::string_view json, std::size_t offset);

/// The byte at which the first value of a JSON text begins.
std::size_t firstValueOf(std::string_view json);

}  // namespace qorix::tools::adcheck
