// The libraries: what they weigh when stripped, and how long loading them takes in a process that
// has the engine loaded, beside loading the engine. Each run is a process of its own.

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "support/Measuring.h"
#include "support/TemporaryFolder.h"

namespace qorix::bench {
namespace {

void load(const char* library) {
  if (dlopen(library, RTLD_NOW | RTLD_GLOBAL) == nullptr) {
    std::fprintf(stderr, "%s\n", dlerror());
    std::exit(EXIT_FAILURE);
  }
}

/// One run: the milliseconds of the engine, and of the libraries behind it.
void measure() {
  const double engine = microsecondsOf([] { load("libwebkit2gtk-4.1.so.0"); });
  // What the libraries need besides.
  for (const char* library :
       {"libcurl.so.4", "libsqlite3.so.0", "libexpat.so.1", "liburiparser.so.1"}) {
    load(library);
  }
  const double own = microsecondsOf([] { load(QORIX_GTK3_LIBRARY); });
  printNumbers({own / 1000, engine / 1000});
}

double strippedKilobytes(const std::string& library) {
  const TemporaryFolder folder;
  const std::string stripped = folder / "stripped.so";
  if (std::system(("strip -o '" + stripped + "' '" + library + "'").c_str()) != 0) {
    std::exit(EXIT_FAILURE);
  }
  return static_cast<double>(std::filesystem::file_size(stripped)) / 1024;
}

void compare() {
  const auto found = runsInTurns(rounds(31), {{"--once"}}).front();
  printHeading("Loading the libraries, with all relocations and constructors", "ms");
  printRow({"libqorix-gtk3 and libqorix", found[0], "WebKitGTK and what it needs", found[1]});
  printLimitsHeading("Size of the stripped libraries", "KB");
  printLimit("libqorix.so", strippedKilobytes(QORIX_LIBRARY));
  printLimit("libqorix-gtk3.so", strippedKilobytes(QORIX_GTK3_LIBRARY));
}

}  // namespace
}  // namespace qorix::bench

int main(int argc, char** /*argv*/) {
  if (argc == 2) {
    qorix::bench::measure();
  } else {
    qorix::bench::compare();
  }
}
