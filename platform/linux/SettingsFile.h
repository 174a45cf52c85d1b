#pragma once

#include <sys/types.h>

#include <memory>
#include <optional>
#include <string>

#include "platform/linux/Setting.h"

struct sqlite3;
struct sqlite3_stmt;

namespace qorix {

/// One connection to one SQLite file of settings. For one thread.
class SettingsFile {
 public:
  enum class Result {
    done,
    unusable,  // locked, full, cannot be opened: may work another time
    damaged,   // the file's contents are at fault
  };

  SettingsFile() = default;
  SettingsFile(const SettingsFile&) = delete;
  SettingsFile& operator=(const SettingsFile&) = delete;

  /// Opens or creates the file at `path`, for this user only. Called once, before anything else.
  Result open(const std::string& path, int patience);

  /// How many milliseconds a call waits for another process.
  void setPatience(int milliseconds);

  /// Whether this file is still the one at `path`: another process may have moved it aside.
  bool isAt(const std::string& path) const;

  /// Sets `settings` to all that the file holds. Leaves it as it is on failure, and if nobody else
  /// has changed the file since the last call.
  Result read(std::optional<Settings>& settings);

  /// All that the file at `path` holds, read without the shared memory that `open` needs beside it,
  /// for which a full disk has no room. Absent if it cannot be read, is damaged, or another process
  /// has it open. May leave an empty log beside the file. To be called in the locked folder.
  static std::optional<Settings> contentsAt(const std::string& path);

  /// Makes the changes durable, all of them or none. Ends what `reserve` has begun.
  Result write(const SettingChanges& changes);

  /// From here to `write` or `release` nobody else writes, so what is written can rest on what is
  /// read. Has no effect if the file cannot be had in time.
  /// @{
  void reserve();
  void release();
  /// @}

  /// From now on closing neither writes to the file nor removes its log, which by now may belong to
  /// another file.
  void leaveAsIs();

  /// Why the last call did not return `done`.
  const std::string& lastFault() const { return lastFault_; }

 private:
  struct Close {
    void operator()(sqlite3* database) const;
    void operator()(sqlite3_stmt* statement) const;
  };
  using Statement = std::unique_ptr<sqlite3_stmt, Close>;

  void disconnect();

  // These return an SQLite result code.
  int create(const std::string& path);
  int connect(const std::string& path, int patience);
  int openTable();
  int checkForTables(bool& isNew);
  int checkContents();
  int prepareStatements();
  int prepare(const char* text, Statement& statement);
  int execute(const char* text);
  bool isReserved() const;
  int readVersion(int& version);
  int readAll(Settings& settings);
  int writeAll(const SettingChanges& changes);
  int writeOne(const std::string& key, const std::optional<Setting>& setting);
  void forgetPages();
  int checked(int code);
  int systemFault(int code);

  std::unique_ptr<sqlite3, Close> database_;
  Statement version_;
  Statement readAll_;
  Statement write_;
  Statement remove_;
  std::optional<int> lastVersion_;  // of what has been read
  dev_t device_ = 0;
  ino_t inode_ = 0;
  std::string lastFault_;
};

}  // namespace qorix
