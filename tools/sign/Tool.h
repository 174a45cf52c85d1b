#pragma once

namespace qorix::tools::sign {

/// The exit status of the program.
enum ExitStatus : int {
  kDone = 0,
  kNotSigned = 1,
  kTrouble = 2,  // wrong usage, or something that cannot be read or written
};

/// The whole program.
int runTool(int argc, char** argv);

}  // namespace qorix::tools::sign
