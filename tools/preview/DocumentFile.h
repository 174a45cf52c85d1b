#pragma once

#include <gio/gio.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace qorix::tools::preview {

/// The file's contents. Nothing, with the system's words for it in `why`, when it cannot be read.
std::optional<std::string> readDocument(const std::string& file, std::string& why);

/// Watches a file for as long as it lives, whether it is written in place or replaced. Needs the
/// main loop.
class DocumentWatch {
 public:
  struct Handlers {
    std::function<void(const std::string& text)> changed;
    std::function<void(const std::string& why)> unreadable;
  };

  /// `known` is what is already known of the file: a handler is called when it holds something
  /// else, now or later. Each change is told once, when the file has been left alone for a moment.
  DocumentWatch(std::string file, std::string known, Handlers handlers);
  ~DocumentWatch();
  DocumentWatch(const DocumentWatch&) = delete;
  DocumentWatch& operator=(const DocumentWatch&) = delete;

 private:
  void watch(const std::string& file);
  void lookSoon();
  void look();

  std::string file_;
  std::optional<std::string> known_;  // nothing: it could not be read
  Handlers handlers_;
  std::vector<GFileMonitor*> monitors_;
  guint timer_ = 0;
};

}  // namespace qorix::tools::preview
