#include "tools/preview/Handover.h"

#include <glib.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string_view>

namespace {

constexpr const char* kVariable = "QORIX_PREVIEW_HANDOVER";

bool writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = write(descriptor, text.data(), text.size());
    if (count < 0 && errno != EINTR) {
      return false;
    }
    text.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
  }
  return lseek(descriptor, 0, SEEK_SET) == 0;
}

std::string readAll(int descriptor) {
  std::string text;
  std::array<char, 65536> bytes{};
  for (ssize_t count = 0; (count = read(descriptor, bytes.data(), bytes.size())) > 0;) {
    text.append(bytes.data(), static_cast<std::size_t>(count));
  }
  return text;
}

// The engine's processes of the run before end by themselves; somebody has to take notice.
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
  if (descriptor < 0 || !writeAll(descriptor, handover.text)) {
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
  handover.text = readAll(descriptor);
  close(descriptor);
  awaitInheritedChildren();
  return handover;
}
