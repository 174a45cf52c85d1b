#include "tools/preview/Handover.h"

#include <glib.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "tools/common/Streams.h"

namespace qorix::tools::preview {

namespace {

constexpr const char* kVariable = "QORIX_PREVIEW_HANDOVER";

// The engine's processes of the run before end by themselves; their exit status must be read.
void awaitInheritedChildren() {
  std::ifstream children("/proc/thread-self/children");
  for (GPid child = 0; children >> child;) {
    g_child_watch_add(
        child, [](GPid /*child*/, gint /*status*/, gpointer /*data*/) {}, nullptr);
  }
}

}  // namespace

int startAnew(char** argv, const Handover& handover) {
  const int descriptor = memfd_create("document", 0);
  if (descriptor < 0 || !writeAll(descriptor, handover.text) ||
      lseek(descriptor, 0, SEEK_SET) != 0) {
    const int error = errno;
    close(descriptor);
    return error;
  }
  std::ostringstream values;
  values << descriptor << ' ' << handover.x << ' ' << handover.y << ' ' << handover.width << ' '
         << handover.height << ' ' << handover.quitAt;
  setenv(kVariable, values.str().c_str(), 1);
  execv("/proc/self/exe", argv);
  const int error = errno;
  unsetenv(kVariable);
  close(descriptor);
  return error;
}

std::optional<Handover> takeHandover() {
  const char* variable = std::getenv(kVariable);
  if (variable == nullptr) {
    return std::nullopt;
  }
  std::istringstream values(variable);
  Handover handover;
  int descriptor = -1;
  values >> descriptor >> handover.x >> handover.y >> handover.width >> handover.height >>
      handover.quitAt;
  unsetenv(kVariable);  // it is for this run alone
  if (values.fail() || descriptor <= STDERR_FILENO) {
    return std::nullopt;
  }
  handover.text = readAll(descriptor).value_or("");
  close(descriptor);
  awaitInheritedChildren();
  return handover;
}

}  // namespace qorix::tools::preview
