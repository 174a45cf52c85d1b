#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qorix::tools::adcheck {

// What is odd about a value of the record, or nullopt.

/// A number under that name: embed, width, height, count, delay or adid.
std::optional<std::string> oddNumber(std::string_view name, std::int64_t value);

std::optional<std::string> oddVersion(std::string_view version);

/// A host's or an application's identifier: the page's script gets it between single quotes,
/// unescaped.
std::optional<std::string> oddIdentifier(std::string_view identifier);

}  // namespace qorix::tools::adcheck
