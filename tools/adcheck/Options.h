#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <qorix/platform/Geometry.h>

namespace qorix::tools::adcheck {

/// What is printed.
enum class Format {
  text,   // for people
  json,   // the record and the decision
  sarif,  // refusals and warnings, for the review pages of code hosts
};

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
  Format format = Format::text;
  std::vector<std::string> publicKeys;  // of those whose signature the hosts ask for
  bool isStrict = false;                // warnings change the exit status
};

/// Reads the command line. Ends the process as CommandLine does.
Options parseOptions(int argc, char** argv);

}  // namespace qorix::tools::adcheck
