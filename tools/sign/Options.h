#pragma once

#include <optional>
#include <string>
#include <vector>

namespace qorix::tools::sign {

/// What the command line asks for.
struct Options {
  std::string command;
  std::string file;
  std::string keyFile;
  std::string output;  // empty: the document's own file
  std::vector<std::string> publicKeys;
};

/// Reads the command line. Ends the process as CommandLine does.
Options parseOptions(int argc, char** argv);

/// What is wrong with the options of this command; nullopt if nothing is.
std::optional<std::string> usageFault(const Options& options);

}  // namespace qorix::tools::sign
