#pragma once

#include <optional>
#include <string_view>

#include <qorix/platform/Url.h>

namespace qorix {

/// A file without a name that nobody else can find. Its bytes are gone with the object, however
/// the process ends. For one thread at a time.
///
/// GLib's g_file_open_tmp would make it, but leaves the file open in programs that the host starts,
/// and keeps the folder of its first call.
class PrivateFile {
 public:
  /// A new, empty file in the folder for temporary files (TMPDIR, else /tmp). Returns nullopt, with
  /// the reason in errno, if none can be made.
  static std::optional<PrivateFile> create();

  PrivateFile(PrivateFile&& other) noexcept;
  PrivateFile& operator=(PrivateFile&& other) noexcept;
  ~PrivateFile();

  /// Returns false, with the reason in errno, if not all of the bytes could be written.
  bool append(std::string_view bytes);

  /// A file URL that opens this file in this process, as long as the object lives.
  Url url() const;

 private:
  explicit PrivateFile(int descriptor) : descriptor_(descriptor) {}

  int descriptor_;  // negative once moved from
};

}  // namespace qorix
