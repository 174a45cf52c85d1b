#pragma once

#include <optional>
#include <string>
#include <vector>

/// What the command line asks for.
struct Options {
  std::string bundleId = "com.example.editor";
  std::optional<std::string> url;
  std::optional<std::string> cloudContainer;
  std::optional<std::string> cloudBase;
  std::optional<std::string> cloudEnvironment;
  std::optional<std::string> cloudToken;
  int hostViews = 1;
  int viewWidth = 800;
  int viewHeight = 500;
  std::string defaults;
  std::string applications = "/usr/share/applications";
  std::vector<std::string> languages;
  std::optional<double> quitAfter;
  std::optional<std::string> screenshot;
};

/// Reads the command line. Ends the process after --help, and with status 2 after a message if
/// the command line makes no sense.
Options parseOptions(int argc, char** argv);
