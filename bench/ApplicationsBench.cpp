// Which applications are installed: a folder of 2,000 items beside a bare walk through it, and the
// desktop entries of 100 bundle identifiers beside reading 2,000 entries once.

#include <dirent.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <qorix/MyPushAdUtil.h>
#include <qorix/platform/Platform.h>

#include "platform/linux/DesktopEntryRegistry.h"
#include "platform/linux/LinuxApplicationsFolder.h"
#include "support/Measuring.h"
#include "support/TemporaryFolder.h"

namespace qorix::bench {
namespace {

constexpr int kEntries = 2'000;

std::string identifier(int index) { return "com.example.viewer" + std::to_string(index); }

void makeEntries(const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder);
  for (int index = 0; index < kEntries; ++index) {
    std::ofstream(folder / (identifier(index) + ".desktop"))
        << "[Desktop Entry]\nType=Application\nName=Viewer " << index << "\nExec=viewer %U\n";
  }
}

/// The kernel's own answer, unread.
void walk(const std::filesystem::path& folder) {
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  static char entries[32'768];
  while (::syscall(SYS_getdents64, descriptor, entries, sizeof entries) > 0) {
  }
  ::close(descriptor);
}

void readAll(const std::filesystem::path& folder) {
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    std::ifstream file(entry.path());
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    if (text.empty()) {
      std::fprintf(stderr, "an entry is empty\n");
      std::exit(EXIT_FAILURE);
    }
  }
}

void compare() {
  const TemporaryFolder home;
  const std::filesystem::path folder = home.path() / "applications";
  makeEntries(folder);
  ::setenv("XDG_DATA_HOME", home.path().c_str(), 1);
  Platform services;
  services.applicationsFolder = std::make_shared<LinuxApplicationsFolder>(folder);
  installPlatform(services);
  DesktopEntryRegistry registry;
  const auto times =
      inTurns(rounds(101),
              {[&] { MyPushAdUtil::fetchUserInstalledAppNamesSet(); }, [&] { walk(folder); },
               [&] {
                 for (int index = 0; index < 100; ++index) {
                   registry.applicationUrlsForBundleIdentifier(identifier(index * kEntries / 100));
                 }
               },
               [&] { readAll(folder); }});
  printHeading("Installed applications, 2,000 of them", "us");
  printRow({"the names of all", times[0], "getdents", times[1], 2});
  printRow({"100 bundle identifiers", times[2], "reading each entry once", times[3], 1});
}

}  // namespace
}  // namespace qorix::bench

int main() { return qorix::bench::report(qorix::bench::compare); }
