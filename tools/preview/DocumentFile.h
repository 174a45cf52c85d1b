#pragma once

#include <gio/gio.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace qorix::tools::preview {

/// Returns the file's contents. If it cannot be read, returns nullopt and the system's message in
/// `why`.
std::optional<std::string> readDocument(const std::string& file, std::string& why);

/// Watches a file for as long as it lives, whether it is written in place or replaced. Needs the
/// main loop.
class DocumentWatch {
 public:
  struct Handlers {
    std::function<void(const std::string& text)> changed;
    std::function<void(const std::string& why)> unreadable;
  };

  /// `known` is the text that was read before. A handler is called if the file holds another one,
  /// now or later: once per change, after a moment without a further one.
  DocumentWatch(std::string file, std::string known, Handlers handlers);
  ~DocumentWatch();
  DocumentWatch(const DocumentWatch&) = delete;
  DocumentWatch& operator=(const DocumentWatch&) = delete;

 private:
  void watch(const std::string& file);
  void lookSoon();
  void look();

  std::string file_;
  std::optional<std::string> known_;  // nullopt: it could not be read
  Handlers handlers_;
  std::vector<GFileMonitor*> monitors_;
  guint timer_ = 0;
};

}  // namespace qorix::tools::preview
