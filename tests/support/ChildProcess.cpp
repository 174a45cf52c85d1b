#include "support/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <utility>

namespace qorix::test {

namespace {

using Clock = std::chrono::steady_clock;

// "2026-01-31 12:00:00.000 name[1] message": the message is what counts.
std::string messageOf(const std::string& line) {
  const auto end = line.find("] ");
  return end == std::string::npos ? line : line.substr(end + 2);
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command) {
  std::array<int, 2> output{};
  std::array<int, 2> errors{};
  if (pipe2(output.data(), O_CLOEXEC) != 0 || pipe2(errors.data(), O_CLOEXEC) != 0) {
    std::abort();
  }
  std::vector<char*> argv;
  argv.reserve(command.size() + 1);
  for (const auto& argument : command) {
    argv.push_back(const_cast<char*>(argument.c_str()));
  }
  argv.push_back(nullptr);
  process_ = fork();
  if (process_ == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(output[1], STDOUT_FILENO);
    dup2(errors[1], STDERR_FILENO);
    execv(argv[0], argv.data());
    _exit(127);
  }
  close(output[1]);
  close(errors[1]);
  fcntl(output[0], F_SETFL, O_NONBLOCK);
  fcntl(errors[0], F_SETFL, O_NONBLOCK);
  output_.descriptor = output[0];
  errors_.descriptor = errors[0];
  // The pipes may outlive the program: the engine's processes hold them, too.
  end_ = static_cast<int>(syscall(SYS_pidfd_open, process_, 0));
}

ChildProcess::~ChildProcess() {
  if (!status_) {
    kill(process_, SIGKILL);
    status();
  }
  for (const int descriptor : {output_.descriptor, errors_.descriptor, end_}) {
    close(descriptor);
  }
}

void ChildProcess::sendSignal(int signal) const { kill(process_, signal); }

int ChildProcess::status() {
  if (!status_) {
    int status = 0;
    while (waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    status_ = status;
  }
  return *status_;
}

bool ChildProcess::waitForLog(std::string_view ending, double seconds) {
  return waitFor(
      [&] {
        return std::ranges::any_of(
            log_, [ending](const std::string& line) { return line.ends_with(ending); });
      },
      seconds);
}

bool ChildProcess::waitForEnd(double seconds) {
  return waitFor([this] { return hasEnded_; }, seconds);
}

int ChildProcess::countLog(std::string_view part) const {
  return static_cast<int>(std::ranges::count_if(
      log_, [part](const std::string& line) { return line.find(part) != std::string::npos; }));
}

bool ChildProcess::waitFor(const std::function<bool()>& condition, double seconds) {
  const auto deadline = Clock::now() + std::chrono::duration<double>(seconds);
  while (!condition()) {
    const double left = std::chrono::duration<double>(deadline - Clock::now()).count();
    if (left <= 0 || hasEnded_) {
      return false;
    }
    readSome(left);
  }
  return true;
}

void ChildProcess::readSome(double seconds) {
  std::array<pollfd, 3> files{pollfd{output_.descriptor, POLLIN, 0},
                              pollfd{errors_.descriptor, POLLIN, 0}, pollfd{end_, POLLIN, 0}};
  poll(files.data(), files.size(), static_cast<int>(seconds * 1000) + 1);
  hasEnded_ = files[2].revents != 0;
  takeLines(output_, [this](const std::string& line) { takeLine(line); });
  takeLines(errors_, [this](const std::string& line) { log_.push_back(messageOf(line)); });
}

// Takes all that can be read without waiting.
void ChildProcess::takeLines(Pipe& pipe, const std::function<void(const std::string&)>& take) {
  std::array<char, 4096> bytes{};
  for (auto count = read(pipe.descriptor, bytes.data(), bytes.size()); count > 0;
       count = read(pipe.descriptor, bytes.data(), bytes.size())) {
    pipe.partialLine.append(bytes.data(), static_cast<std::size_t>(count));
  }
  for (auto end = pipe.partialLine.find('\n'); end != std::string::npos;
       end = pipe.partialLine.find('\n')) {
    take(pipe.partialLine.substr(0, end));
    pipe.partialLine.erase(0, end + 1);
  }
}

}  // namespace qorix::test
