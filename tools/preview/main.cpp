// qorix-preview: shows authors of advertisements their advertisement as a host would.

#include <gtk/gtk.h>
#include <sys/prctl.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "tools/common/display/PrivateDisplay.h"
#include "tools/preview/Preview.h"

namespace qorix::tools::preview {

namespace {

bool isSet(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

/// The display for a picture that is taken where there is none.
std::unique_ptr<PrivateDisplay> displayForPicture(const Options& options) {
  if (isSet("DISPLAY") || isSet("WAYLAND_DISPLAY") || !options.screenshot) {
    return nullptr;
  }
  auto display = PrivateDisplay::start(std::max(1920, options.viewWidth + 200),
                                       std::max(1200, options.viewHeight + 200));
  if (display == nullptr) {
    std::fputs("qorix-preview: Xvfb cannot be started\n", stderr);
    return nullptr;
  }
  display->startWindowManager();  // windows come up without one, too
  display->useInThisProcess();
  return display;
}

}  // namespace

int runPreview(int argc, char** argv) {
  const Options options = parseOptions(argc, argv);
  g_set_prgname("qorix-preview");
  prctl(PR_SET_NAME, "qorix-preview");  // started anew, it would be called "exe"
  auto past = takeHandover();
  std::string why;
  const auto text = past ? past->text : readDocument(options.file, why);
  if (!text) {
    std::fprintf(stderr, "qorix-preview: %s\n", why.c_str());
    return 2;
  }
  const auto display = displayForPicture(options);
  if (!gtk_init_check(nullptr, nullptr)) {
    std::fputs("qorix-preview: there is no display\n", stderr);
    return 1;
  }
  return Preview(options, *text, std::move(past), argv).run();
}

}  // namespace qorix::tools::preview

int main(int argc, char** argv) {
  try {
    return qorix::tools::preview::runPreview(argc, argv);
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "qorix-preview: %s\n", exception.what());
    return 1;
  }
}
