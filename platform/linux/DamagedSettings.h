#pragma once

#include <optional>
#include <string>

namespace qorix {

/// As long as it is held, no other process that uses this library opens or moves settings of the
/// same folder.
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

/// Moves the settings file at `path` and what SQLite keeps beside it to "<path>.damaged-<n>", with
/// the first n that is not taken, and returns that name. Returns nullopt, with the reason in errno,
/// if the file cannot be moved. Overwrites nothing. The caller holds the folder's lock.
std::optional<std::string> keepDamagedSettings(const std::string& path);

}  // namespace qorix
