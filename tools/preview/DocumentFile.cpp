#include "tools/preview/DocumentFile.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "tools/common/Streams.h"

namespace qorix::tools::preview {

namespace {

constexpr guint kCalm = 150;  // milliseconds without a change

}  // namespace

std::optional<std::string> readDocument(const std::string& file, std::string& why) {
  auto text = readFile(file);
  if (!text) {
    why = file + ": " + std::strerror(errno);
  }
  return text;
}

DocumentWatch::DocumentWatch(std::string file, std::string known, Handlers handlers)
    : file_(std::move(file)), known_(std::move(known)), handlers_(std::move(handlers)) {
  watch(file_);
  // If it is a link, the file itself changes somewhere else.
  std::error_code error;
  const auto real = std::filesystem::canonical(file_, error);
  if (!error && real != std::filesystem::absolute(file_, error)) {
    watch(real);
  }
  lookSoon();  // it may have changed before it was watched
}

DocumentWatch::~DocumentWatch() {
  for (GFileMonitor* monitor : monitors_) {
    g_signal_handlers_disconnect_by_data(monitor, this);
    g_object_unref(monitor);
  }
  if (timer_ != 0) {
    g_source_remove(timer_);
  }
}

void DocumentWatch::watch(const std::string& file) {
  GFile* place = g_file_new_for_path(file.c_str());
  GFileMonitor* monitor = g_file_monitor_file(place, G_FILE_MONITOR_WATCH_MOVES, nullptr, nullptr);
  g_object_unref(place);
  if (monitor == nullptr) {
    return;
  }
  g_file_monitor_set_rate_limit(monitor, static_cast<gint>(kCalm));
  g_signal_connect_swapped(monitor, "changed",
                           G_CALLBACK(+[](DocumentWatch* self) { self->lookSoon(); }), this);
  monitors_.push_back(monitor);
}

void DocumentWatch::lookSoon() {
  if (timer_ != 0) {
    g_source_remove(timer_);
  }
  timer_ = g_timeout_add(
      kCalm,
      [](gpointer self) -> gboolean {
        static_cast<DocumentWatch*>(self)->timer_ = 0;
        static_cast<DocumentWatch*>(self)->look();
        return G_SOURCE_REMOVE;
      },
      this);
}

void DocumentWatch::look() {
  std::string why;
  auto text = readDocument(file_, why);
  if (text == known_) {
    return;
  }
  known_ = std::move(text);
  if (known_) {
    handlers_.changed(*known_);
  } else {
    handlers_.unreadable(why);
  }
}

}  // namespace qorix::tools::preview
