#pragma once

#include <optional>
#include <string>

namespace qorix {

/// Keeps other processes of ours from moving settings of the same folder, as long as it lives.
class SettingsFolderLock {
 public:
  /// Waits at most `patience` milliseconds for another process.
  SettingsFolderLock(const std::string& path, int patience);
  SettingsFolderLock(const SettingsFolderLock&) = delete;
  SettingsFolderLock& operator=(const SettingsFolderLock&) = delete;
  ~SettingsFolderLock();

  bool isHeld() const { return isHeld_; }

 private:
  int descriptor_;
  bool isHeld_ = false;
};

/// Moves the settings file at `path` and what SQLite keeps beside it to "<path>.damaged-<n>", the
/// first that is not taken, and answers that name; nothing, with the reason in errno, when it
/// cannot be moved. Nothing that has been kept is overwritten. The caller holds the folder's lock.
std::optional<std::string> keepDamagedSettings(const std::string& path);

}  // namespace qorix
