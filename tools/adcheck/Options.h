#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include <qorix/platform/Geometry.h>

namespace qorix::adcheck {

/// What the command line asks for.
struct Options {
  std::string file;  // "-" is standard input
  std::optional<std::string> app;
  std::optional<std::vector<std::string>> languages;
  std::optional<std::string> applications;  // a folder
  std::optional<std::string> storedVersion;
  std::optional<std::int64_t> storedCount;
  Size viewSize = {800, 600};
  bool allHosts = false;
  bool json = false;
  bool help = false;
  bool version = false;
};

/// What is wrong with a command line, in one line.
struct UsageError {
  std::string message;
};

std::variant<Options, UsageError> parseOptions(int argc, char** argv);

/// The text of --help.
const char* usageText();

}  // namespace qorix::adcheck
