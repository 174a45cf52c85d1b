#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace qorix::test {

/// Where a program's standard output goes.
enum class Output {
  pipe,        // kept
  terminal,    // kept; a terminal ends lines with CR LF
  fullDevice,  // nothing can be written
  goneReader,  // a pipe that nobody reads any more
};

struct ProgramRun {
  int status = -1;  // the exit status; -1 when a signal ended the program
  std::string output;
  std::string errors;
};

struct ProgramSetup {
  std::string input = {};
  Output output = Output::pipe;
  std::map<std::string, std::string> environment = {};  // added to this process's own
};

/// Runs a program to its end, as its user would. It is killed after a minute.
ProgramRun runProgram(const std::string& program, const std::vector<std::string>& arguments,
                      const ProgramSetup& setup = {});

/// The lines of a text, each without its end.
std::vector<std::string> linesOf(std::string_view text);

}  // namespace qorix::test
