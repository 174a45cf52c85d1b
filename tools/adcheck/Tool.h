#pragma once

namespace qorix::tools::adcheck {

/// The exit status of the program.
enum ExitStatus : int {
  kRecord = 0,
  kRefused = 1,
  kTrouble = 2,   // wrong usage, or something that cannot be read or written
  kWarnings = 3,  // a record, but warnings, which were to count
};

/// The whole program.
int runTool(int argc, char** argv);

}  // namespace qorix::tools::adcheck
