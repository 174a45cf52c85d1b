#pragma once

#include <functional>
#include <string>
#include <vector>

#include <qorix/platform/Url.h>

using WebKitUserContentFilter = struct _WebKitUserContentFilter;

namespace qorix::gtk {

/// The rules of a FileFilter, as the engine reads them.
std::string fileRules(const Url& base);

/// Keeps pages away from the user's files: of all file addresses those of files directly in the
/// folder of `base` can be loaded, and no other, by whatever a page loads with. The engine makes
/// the filter a few milliseconds after it was asked for. Main thread only.
class FileFilter {
 public:
  /// The one for pages of the library, made when it is first asked for. Never destroyed.
  static FileFilter& ofLibrary();

  explicit FileFilter(const Url& base);
  FileFilter(const FileFilter&) = delete;
  FileFilter& operator=(const FileFilter&) = delete;

  /// Runs `task` when the filter is there, at once when it is; with null, after one log line, when
  /// it cannot be made.
  void whenMade(std::function<void(WebKitUserContentFilter*)> task);

 private:
  void made(WebKitUserContentFilter* filter);

  bool isMade_ = false;
  WebKitUserContentFilter* filter_ = nullptr;
  std::vector<std::function<void(WebKitUserContentFilter*)>> waiting_;
};

}  // namespace qorix::gtk
