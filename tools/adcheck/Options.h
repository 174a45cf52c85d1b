#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <qorix/platform/Geometry.h>

namespace qorix::tools::adcheck {

/// What the command line asks for.
struct Options {
  std::string file;  // "-" is standard input
  std::optional<std::string> app;
  std::vector<std::string> languages;       // empty: no preference
  std::optional<std::string> applications;  // a folder
  std::optional<std::string> storedVersion;
  std::optional<std::int64_t> storedCount;
  Size viewSize = {800, 600};
  bool allHosts = false;
  bool json = false;
};

/// Reads the command line. Ends the process as CommandLine does.
Options parseOptions(int argc, char** argv);

}  // namespace qorix::tools::adcheck
