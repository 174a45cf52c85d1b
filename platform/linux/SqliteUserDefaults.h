#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "platform/Log.h"
#include "platform/UserDefaults.h"

namespace qorix {

/// The settings file of the application `bundleIdentifier`:
/// $XDG_CONFIG_HOME/qorix/<identifier>.sqlite, below ~/.config when that variable holds no absolute
/// path. The identifier is one path component, whatever is in it.
std::string defaultSettingsPath(const std::string& bundleIdentifier);

/// Settings in one SQLite file, which several processes may use at once.
///
/// Changes are pending, and seen by reads, until `synchronize` writes all of them with one durable
/// commit. A damaged file is kept aside as "<file>.damaged-<n>" and a new one begun; a file that
/// cannot be used leaves the changes pending in memory until it can be; those made without a look
/// at what the file holds then give way to it. Either is logged with one line. No look at the file
/// waits longer than a quarter of a second for another process.
///
/// The languages under `kAppleLanguagesKey` are the environment's unless a list has been stored.
class SqliteUserDefaults : public UserDefaults {
 public:
  /// Opens or creates the file at `path` and the folders that lead to it, for this user only.
  /// `log` hears of faults; without it they go to the installed platform's log.
  explicit SqliteUserDefaults(std::string path, std::shared_ptr<Log> log = nullptr);

  /// Writes what is pending.
  ~SqliteUserDefaults() override;

  std::optional<std::string> stringForKey(const std::string& key) override;
  std::optional<std::vector<std::string>> stringArrayForKey(const std::string& key) override;
  std::int64_t integerForKey(const std::string& key) override;
  void setString(const std::string& value, const std::string& key) override;
  void setStringArray(const std::vector<std::string>& value, const std::string& key) override;
  void setInteger(std::int64_t value, const std::string& key) override;
  void removeObjectForKey(const std::string& key) override;
  bool synchronize() override;

 private:
  class File;
  using Setting = std::variant<std::int64_t, std::string, std::vector<std::string>>;
  using Changes = std::map<std::string, std::optional<Setting>>;  // nothing: removed

  std::optional<Setting> settingForKey(const std::string& key);
  int commit(File& file);
  bool perform(int patience, const std::function<int(File&)>& operation);
  int open(int patience);
  void setAside(const std::string& why);
  void reportTrouble(const std::string& text);
  void report(const std::string& text);

  std::string path_;
  std::shared_ptr<Log> log_;
  std::unique_ptr<File> file_;
  Changes pending_;
  bool hasAnsweredBlindly_ = false;  // since the last commit: a read found the file unusable
  bool isInTrouble_ = false;  // the file could not be used last time, and that has been logged
};

}  // namespace qorix
