#pragma once

#include <optional>
#include <string>
#include <vector>

namespace qorix::tools::preview {

/// The host that no line of a host table names.
inline constexpr const char* kAnyHost = "qorix.preview";

/// What the command line asks for.
struct Options {
  std::string file;
  std::string app = kAnyHost;
  std::vector<std::string> languages;       // empty: the user's own
  std::optional<std::string> applications;  // nullopt: none is installed
  int viewWidth = 800;
  int viewHeight = 600;
  bool anyway = false;
  bool open = false;
  std::optional<std::string> screenshot;
  std::optional<double> quitAfter;  // seconds
};

/// Reads the command line. Ends the process as CommandLine does.
Options parseOptions(int argc, char** argv);

}  // namespace qorix::tools::preview
