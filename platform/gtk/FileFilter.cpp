#include "platform/gtk/FileFilter.h"

#include <webkit2/webkit2.h>

#include <filesystem>
#include <memory>
#include <string_view>
#include <utility>

#include <qorix/platform/Log.h>
#include <qorix/platform/Platform.h>

#include "platform/Guarded.h"
#include "platform/gtk/Unref.h"

namespace qorix::gtk {

namespace {

constexpr const char* kFilterName = "files";

std::string rule(const std::string& pattern, const char* action) {
  return R"({"trigger":{"url-filter":")" + pattern + R"("},"action":{"type":")" + action + R"("}})";
}

// As a pattern in a JSON text: special characters are escaped for both.
std::string asPattern(std::string_view text) {
  std::string pattern;
  for (const char c : text) {
    if (std::string_view(R"(\.+*?^$|()[]{}")").find(c) != std::string_view::npos) {
      pattern += R"(\\)";
    }
    pattern += c;
  }
  return pattern;
}

/// What is passed along while the engine makes a filter.
struct Making {
  FileFilter& filter;
  std::filesystem::path folder;
};

/// A private folder to which the engine writes the filter before it uses it. The filter stays when
/// the folder is gone.
std::filesystem::path newPrivateFolder(GError** error) {
  const std::unique_ptr<char, decltype(&g_free)> folder(g_dir_make_tmp("qorix-XXXXXX", error),
                                                        &g_free);
  return folder == nullptr ? std::filesystem::path() : std::filesystem::path(folder.get());
}

std::string takeMessage(GError* error) {
  std::string message = error == nullptr ? "unknown reason" : error->message;
  g_clear_error(&error);
  return message;
}

void logFailure(const std::string& reason) {
  logLine("ZAM Ad pages are shown without local files: " + reason);
}

}  // namespace

// Later rules override earlier ones. An escaped slash would lead out of the folder. The engine
// resolves the dots of an address before it applies the rules.
std::string fileRules(const Url& base) {
  const std::filesystem::path file(base.filePath().value_or("/"));
  const Url address = Url::fileUrl(file.lexically_normal().string());
  const std::string folder =
      address.absoluteString().substr(0, address.absoluteString().rfind('/') + 1);
  return "[" + rule("^file:", "block") + "," +
         rule("^" + asPattern(folder) + "[^/]+$", "ignore-previous-rules") + "," +
         rule("^file:.*%2f", "block") + "]";
}

FileFilter& FileFilter::ofLibrary() {
  static FileFilter& filter = *new FileFilter(platform().libraryBundle->executableUrl());
  return filter;
}

FileFilter::FileFilter(const Url& base) {
  GError* error = nullptr;
  auto making = std::make_unique<Making>(Making{*this, newPrivateFolder(&error)});
  if (making->folder.empty()) {
    logFailure(takeMessage(error));
    made(nullptr);
    return;
  }
  const std::string rules = fileRules(base);
  GBytes* source = g_bytes_new(rules.data(), rules.size());
  const std::unique_ptr<WebKitUserContentFilterStore, Unref> store(
      webkit_user_content_filter_store_new(making->folder.c_str()));
  const auto finish = [](GObject* object, GAsyncResult* result, gpointer data) {
    callGuarded([&] {
      const std::unique_ptr<Making> asked(static_cast<Making*>(data));
      GError* failure = nullptr;
      WebKitUserContentFilter* filter = webkit_user_content_filter_store_save_finish(
          WEBKIT_USER_CONTENT_FILTER_STORE(object), result, &failure);
      std::error_code ignored;
      std::filesystem::remove_all(asked->folder, ignored);
      if (filter == nullptr) {
        logFailure(takeMessage(failure));
      }
      asked->filter.made(filter);
    });
  };
  webkit_user_content_filter_store_save(store.get(), kFilterName, source, nullptr, finish,
                                        making.release());
  g_bytes_unref(source);
}

void FileFilter::whenMade(std::function<void(WebKitUserContentFilter*)> task) {
  if (isMade_) {
    task(filter_);
  } else {
    waiting_.push_back(std::move(task));
  }
}

void FileFilter::made(WebKitUserContentFilter* filter) {
  isMade_ = true;
  filter_ = filter;
  for (const auto& task : std::exchange(waiting_, {})) {
    task(filter_);
  }
}

}  // namespace qorix::gtk
