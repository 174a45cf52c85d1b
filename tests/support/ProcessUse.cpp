#include "support/ProcessUse.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

namespace qorix::test {

namespace {

namespace fs = std::filesystem;

long countEntries(const fs::path& folder) {
  return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

/// The number behind `label` in a file of /proc; 0 if there is none, as the process may have ended.
long numberIn(const fs::path& file, const std::string& label) {
  std::ifstream lines(file);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(label)) {
      return std::atol(line.c_str() + label.size());
    }
  }
  return 0;
}

long kilobytesOf(const fs::path& process) {
  return numberIn(process / "smaps_rollup", "Private_Dirty:");
}

std::string nameOf(const fs::path& process) {
  std::string name;
  std::getline(std::ifstream(process / "comm"), name);
  return name;
}

bool isProcess(const fs::path& entry) {
  return std::ranges::all_of(entry.filename().string(),
                             [](char c) { return c >= '0' && c <= '9'; });
}

/// Whether a process has been started by this one, or by one that has.
bool isDescendant(long process, const std::map<long, long>& parents) {
  for (auto entry = parents.find(process); entry != parents.end();
       entry = parents.find(entry->second)) {
    if (entry->second == getpid()) {
      return true;
    }
  }
  return false;
}

}  // namespace

ProcessUse ProcessUse::now() {
  ProcessUse use;
  use.kilobytes = kilobytesOf("/proc/self");
  use.descriptors = countEntries("/proc/self/fd");
  use.threads = countEntries("/proc/self/task");
  std::map<long, long> parents;
  for (const auto& entry : fs::directory_iterator("/proc")) {
    if (isProcess(entry.path())) {
      parents[std::stol(entry.path().filename())] = numberIn(entry.path() / "status", "PPid:");
    }
  }
  for (const auto& [process, parent] : parents) {
    const fs::path folder = "/proc/" + std::to_string(process);
    // The kernel cuts names to 15 characters.
    if (const std::string name = nameOf(folder);
        name.starts_with("WebKit") && isDescendant(process, parents)) {
      use.webProcesses += name == "WebKitWebProces" ? 1 : 0;
      use.webKilobytes += kilobytesOf(folder);
    }
  }
  return use;
}

std::ostream& operator<<(std::ostream& out, const ProcessUse& use) {
  return out << use.kilobytes << " kB, " << use.descriptors << " descriptors, " << use.threads
             << " threads, " << use.webProcesses << " web processes, engine " << use.webKilobytes
             << " kB";
}

}  // namespace qorix::test
