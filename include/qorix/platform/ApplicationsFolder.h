#pragma once

// Platform: values and ports.

#include <optional>
#include <string>
#include <vector>

#include <qorix/Export.h>

namespace qorix {

/// The system-wide folder of installed applications. Any thread.
class QORIX_EXPORT ApplicationsFolder {
 public:
  /// One item of the folder.
  struct Item {
    /// Whether the platform presents the item as one application package. Absent when that could
    /// not be read.
    std::optional<bool> isPackage;
    /// The file name. Absent when it could not be read.
    std::optional<std::string> name;
  };

  virtual ~ApplicationsFolder() = default;

  /// The folders, most important first; empty when the system has none. No folder is
  /// opened.
  virtual std::vector<std::string> directories() = 0;

  /// Every item below `directory` at any depth, without hidden items (names that begin with a dot)
  /// and what lies in them, and without what lies inside packages. Read afresh on every call.
  /// Absent when the directory itself cannot be opened; folders below it that cannot be are passed
  /// over.
  virtual std::optional<std::vector<Item>> items(const std::string& directory) = 0;
};

}  // namespace qorix
