#pragma once

#include <functional>
#include <string>
#include <vector>

#include <qorix/platform/Url.h>

using WebKitUserContentFilter = struct _WebKitUserContentFilter;

namespace qorix::gtk {

/// The rules of the FileFilter for `base`, in the engine's JSON.
std::string fileRules(const Url& base);

/// Keeps pages away from the user's files: of all file addresses, only those of files directly in
/// the folder of `base` can be loaded, by whatever means a page loads. The engine needs a few
/// milliseconds to make the filter. Main thread only.
class FileFilter {
 public:
  /// The one for pages of the library. Made by the first call, never destroyed.
  static FileFilter& ofLibrary();

  explicit FileFilter(const Url& base);
  FileFilter(const FileFilter&) = delete;
  FileFilter& operator=(const FileFilter&) = delete;

  /// Runs `task` with the filter when it has been made, at once if it has been already. With null,
  /// after one log line, if it cannot be made.
  void whenMade(std::function<void(WebKitUserContentFilter*)> task);

 private:
  void made(WebKitUserContentFilter* filter);

  bool isMade_ = false;
  WebKitUserContentFilter* filter_ = nullptr;
  std::vector<std::function<void(WebKitUserContentFilter*)>> waiting_;
};

}  // namespace qorix::gtk
