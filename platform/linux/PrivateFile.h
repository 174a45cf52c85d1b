#pragma once

#include <optional>
#include <string_view>

#include <qorix/platform/Url.h>

namespace qorix {

/// A file without a name, which nobody else can find. Its bytes go with the object, however the
/// process ends. For one thread at a time.
class PrivateFile {
 public:
  /// A new, empty file in the folder for temporary files (TMPDIR, else /tmp); nothing, with the
  /// reason in errno, when none can be made.
  static std::optional<PrivateFile> create();

  PrivateFile(PrivateFile&& other) noexcept;
  PrivateFile& operator=(PrivateFile&& other) noexcept;
  ~PrivateFile();

  /// False, with the reason in errno, when not all of the bytes could be written.
  bool append(std::string_view bytes);

  /// A file URL that opens this file, in this process and as long as the object lives.
  Url url() const;

 private:
  explicit PrivateFile(int descriptor) : descriptor_(descriptor) {}

  int descriptor_;  // below 0 once moved from
};

}  // namespace qorix
