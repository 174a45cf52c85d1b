#include "tools/common/display/PrivateDisplay.h"

#include <X11/Xatom.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <utility>

#include "tools/common/display/XConnection.h"

namespace qorix::tools {

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto kStartTimeLimit = std::chrono::seconds(30);
constexpr int kPauseBetweenLooks = 50;  // milliseconds: the window manager's end sends no event

int millisecondsUntil(Clock::time_point deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
  return left.count() > 0 ? static_cast<int>(left.count()) : 0;
}

// Starts a program that ends with this thread and is silent.
pid_t startProgram(const std::vector<std::string>& command,
                   const std::vector<std::pair<std::string, std::string>>& environment) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const auto& each : command) {
    arguments.push_back(const_cast<char*>(each.c_str()));
  }
  arguments.push_back(nullptr);
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child != 0) {
    return child;
  }
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  setpgid(0, 0);  // an interrupt from the terminal is for the parent alone
  if (getppid() != parent) {
    _exit(127);
  }
  for (const auto& [name, value] : environment) {
    setenv(name.c_str(), value.c_str(), 1);
  }
  const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
  dup2(nowhere, STDIN_FILENO);
  dup2(nowhere, STDOUT_FILENO);
  dup2(nowhere, STDERR_FILENO);
  execvp(arguments[0], arguments.data());
  _exit(127);
}

// Returns the line that the other end of the pipe writes, without its end; empty if none comes in
// time.
std::string readLine(int pipe, Clock::time_point deadline) {
  std::string line;
  pollfd readable = {pipe, POLLIN, 0};
  char next = 0;
  while (poll(&readable, 1, millisecondsUntil(deadline)) > 0 && read(pipe, &next, 1) == 1) {
    if (next == '\n') {
      return line;
    }
    line += next;
  }
  return {};
}

bool isManaged(Display* display) {
  Atom type = None;
  int format = 0;
  unsigned long count = 0;
  unsigned long rest = 0;
  unsigned char* data = nullptr;
  XGetWindowProperty(display, DefaultRootWindow(display),
                     XInternAtom(display, "_NET_SUPPORTING_WM_CHECK", False), 0, 1, False,
                     XA_WINDOW, &type, &format, &count, &rest, &data);
  if (data != nullptr) {
    XFree(data);
  }
  return count == 1;
}

// Whether `child` has ended. Leaves its exit status for waitpid.
bool hasEnded(pid_t child) {
  siginfo_t info{};
  return waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOHANG | WNOWAIT) != 0 ||
         info.si_pid == child;
}

}  // namespace

std::unique_ptr<PrivateDisplay> PrivateDisplay::start(int width, int height) {
  std::unique_ptr<PrivateDisplay> display(new PrivateDisplay);
  return display->startServer(width, height) ? std::move(display) : nullptr;
}

PrivateDisplay::~PrivateDisplay() {
  std::reverse(children_.begin(), children_.end());
  for (const pid_t child : children_) {
    kill(child, SIGTERM);
    waitpid(child, nullptr, 0);
  }
}

bool PrivateDisplay::startServer(int width, int height) {
  int ends[2];
  if (pipe(ends) != 0) {
    return false;
  }
  fcntl(ends[0], F_SETFD, FD_CLOEXEC);
  const std::string size = std::to_string(width) + "x" + std::to_string(height) + "x24";
  children_.push_back(startProgram({"Xvfb", "-displayfd", std::to_string(ends[1]), "-screen", "0",
                                    size, "-nolisten", "tcp", "-noreset"},
                                   {}));
  ::close(ends[1]);
  const std::string number = readLine(ends[0], Clock::now() + kStartTimeLimit);
  ::close(ends[0]);
  name_ = ":" + number;
  return !number.empty();
}

bool PrivateDisplay::startWindowManager(const std::string& home) {
  const XConnection display(XOpenDisplay(name_.c_str()));
  if (display == nullptr) {
    return false;
  }
  XSelectInput(display.get(), DefaultRootWindow(display.get()), PropertyChangeMask);
  const pid_t manager = startProgram({"openbox", "--sm-disable"}, {{"DISPLAY", name_},
                                                                   {"HOME", home},
                                                                   {"XDG_CONFIG_HOME", home},
                                                                   {"XDG_CACHE_HOME", home},
                                                                   {"XDG_DATA_HOME", home}});
  children_.push_back(manager);
  const auto deadline = Clock::now() + kStartTimeLimit;
  while (!isManaged(display.get())) {
    if (hasEnded(manager) || Clock::now() > deadline) {
      return false;
    }
    if (XPending(display.get()) == 0) {
      pollfd connection = {ConnectionNumber(display.get()), POLLIN, 0};
      poll(&connection, 1, std::min(millisecondsUntil(deadline), kPauseBetweenLooks));
    }
    while (XPending(display.get()) > 0) {
      XEvent event;
      XNextEvent(display.get(), &event);
    }
  }
  return true;
}

void PrivateDisplay::useInThisProcess() const {
  setenv("DISPLAY", name_.c_str(), 1);
  setenv("GDK_BACKEND", "x11", 1);
  setenv("NO_AT_BRIDGE", "1", 1);
  setenv("GSETTINGS_BACKEND", "memory", 1);
  setenv("GTK_THEME", "Adwaita", 1);
  setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
  unsetenv("WAYLAND_DISPLAY");
}

}  // namespace qorix::tools
