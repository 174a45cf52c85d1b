#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <qorix/platform/Log.h>
#include <qorix/platform/UserDefaults.h>

#include "platform/linux/SettingsFile.h"

namespace qorix {

/// The settings file of the application `bundleIdentifier`:
/// $XDG_CONFIG_HOME/qorix/<identifier>.sqlite, or below ~/.config if that variable is not an
/// absolute path. The identifier makes one path component, whatever it contains.
std::string defaultSettingsPath(const std::string& bundleIdentifier);

/// Settings in one SQLite file, which several processes may use at once.
///
/// Reads are served from memory, which is renewed after another process has committed. They never
/// wait; while the file cannot be read they return what it held last. Changes are pending, and seen
/// by reads, until `synchronize` writes all of them in one durable commit; while the file cannot be
/// written they stay pending. Opening the file, each commit and the begin of a decision wait at
/// most a quarter of a second for another process. Of several processes that decide at once, one
/// decides after the other.
///
/// A value that was set before the file could be read at all assumes that the file is empty: it is
/// dropped if the file turns out to hold one for its key. Every other change stands.
///
/// A damaged file is kept as "<file>.damaged-<n>" and a new one begun. That is logged with one
/// line, and so is a file that cannot be used.
///
/// The languages under `kAppleLanguagesKey` are the environment's unless a list has been stored.
class SqliteUserDefaults : public UserDefaults {
 public:
  /// Opens or creates the file at `path` and the folders that lead to it, for this user only.
  /// Faults go to `log`; if it is null, to the installed platform's log.
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
  void beginDecision() override;
  void endDecision() override;

 private:
  using Result = SettingsFile::Result;

  template <class T>
  std::optional<T> valueForKey(const std::string& key);
  void set(Setting setting, const std::string& key);
  void reserve();
  void look(int patience);
  Result read(SettingsFile& file);
  void giveWay();
  Result commit(SettingsFile& file);
  bool perform(int patience, const std::function<Result(SettingsFile&)>& operation);
  bool performOnFile(int patience, const std::function<Result(SettingsFile&)>& operation);
  Result open(int patience);
  void close();
  void setAside(const std::string& why);
  void reportTrouble(const std::string& text);
  void report(const std::string& text);

  std::string path_;
  std::shared_ptr<Log> log_;
  std::unique_ptr<SettingsFile> file_;
  std::optional<Settings> held_;  // by the file when it was last read; absent: never read
  SettingChanges pending_;
  std::set<std::string> blind_;  // keys of pending values that were set before any look
  bool hasGivenWay_ = false;     // a value was dropped for the file's, since the last `synchronize`
  int decisions_ = 0;            // begun and not ended
  bool isInTrouble_ = false;     // the file could not be used last time, which has been logged
};

}  // namespace qorix
