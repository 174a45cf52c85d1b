#include "tools/adcheck/ProgramRun.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <stdexcept>

namespace qorix::test {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds kPatience(60);

struct Pipe {
  int read = -1;
  int write = -1;
};

Pipe makePipe() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw std::runtime_error("no pipe can be made");
  }
  return {ends[0], ends[1]};
}

/// What the child writes to, and what this process reads of it (-1: nothing).
Pipe outputFor(Output output) {
  if (output == Output::fullDevice) {
    return {-1, ::open("/dev/full", O_WRONLY | O_CLOEXEC)};
  }
  if (output == Output::terminal) {
    Pipe ends;
    if (::openpty(&ends.read, &ends.write, nullptr, nullptr, nullptr) != 0) {
      throw std::runtime_error("no terminal can be made");
    }
    ::fcntl(ends.read, F_SETFD, FD_CLOEXEC);
    return ends;
  }
  Pipe ends = makePipe();
  if (output == Output::goneReader) {
    ::close(ends.read);
    ends.read = -1;
  }
  return ends;
}

void closeIfOpen(int& descriptor) {
  if (descriptor >= 0) {
    ::close(descriptor);
    descriptor = -1;
  }
}

/// Takes what is there; closes the descriptor at its end (a terminal's end is an error).
void readSome(int& descriptor, std::string& text) {
  std::array<char, 65536> bytes{};
  const ssize_t count = ::read(descriptor, bytes.data(), bytes.size());
  if (count > 0) {
    text.append(bytes.data(), static_cast<std::size_t>(count));
  } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
    closeIfOpen(descriptor);
  }
}

void writeSome(int& descriptor, std::string_view& text) {
  const ssize_t count = ::write(descriptor, text.data(), text.size());
  if (count > 0) {
    text.remove_prefix(static_cast<std::size_t>(count));
  }
  if (text.empty() || (count < 0 && errno != EAGAIN && errno != EINTR)) {
    closeIfOpen(descriptor);
  }
}

pid_t start(const std::string& program, const std::vector<std::string>& arguments,
            const ProgramSetup& setup, int input, int output, int errors) {
  std::vector<char*> argv{const_cast<char*>(program.c_str())};
  for (const auto& argument : arguments) {
    argv.push_back(const_cast<char*>(argument.c_str()));
  }
  argv.push_back(nullptr);
  const pid_t process = ::fork();
  if (process == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (const auto& [name, value] : setup.environment) {
      ::setenv(name.c_str(), value.c_str(), 1);
    }
    ::dup2(input, STDIN_FILENO);
    ::dup2(output, STDOUT_FILENO);
    ::dup2(errors, STDERR_FILENO);
    ::execv(argv[0], argv.data());
    ::_exit(127);
  }
  return process;
}

}  // namespace

ProgramRun runProgram(const std::string& program, const std::vector<std::string>& arguments,
                      const ProgramSetup& setup) {
  std::signal(SIGPIPE, SIG_IGN);  // a program that reads no input
  Pipe input = makePipe();
  Pipe output = outputFor(setup.output);
  Pipe errors = makePipe();
  const pid_t process = start(program, arguments, setup, input.read, output.write, errors.write);
  closeIfOpen(input.read);
  closeIfOpen(output.write);
  closeIfOpen(errors.write);
  ::fcntl(input.write, F_SETFL, O_NONBLOCK);

  ProgramRun run;
  std::string_view rest = setup.input;
  if (rest.empty()) {
    closeIfOpen(input.write);
  }
  const auto deadline = Clock::now() + kPatience;
  while (output.read >= 0 || errors.read >= 0) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    if (left.count() <= 0) {
      ::kill(process, SIGKILL);
      break;
    }
    std::array<pollfd, 3> files{pollfd{output.read, POLLIN, 0}, pollfd{errors.read, POLLIN, 0},
                                pollfd{input.write, POLLOUT, 0}};
    ::poll(files.data(), files.size(), static_cast<int>(left.count()));
    if (files[0].revents != 0) {
      readSome(output.read, run.output);
    }
    if (files[1].revents != 0) {
      readSome(errors.read, run.errors);
    }
    if (files[2].revents != 0) {
      writeSome(input.write, rest);
    }
  }
  closeIfOpen(input.write);
  closeIfOpen(output.read);
  closeIfOpen(errors.read);
  int status = 0;
  while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
}

std::vector<std::string> linesOf(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const auto end = std::min(text.find('\n'), text.size());
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

}  // namespace qorix::test
