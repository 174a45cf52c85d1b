#include "platform/linux/SettingsFile.h"

#include <errno.h>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <utility>

#include "platform/linux/SettingColumns.h"

namespace qorix {

namespace {

constexpr char kCreateTable[] =
    "BEGIN IMMEDIATE;"
    "CREATE TABLE IF NOT EXISTS settings (key TEXT PRIMARY KEY NOT NULL, value NOT NULL);"
    "COMMIT";

/// Our statements are right for our own files, so a plain SQLITE_ERROR means that the file has
/// other tables. A busy file or a full disk is no damage.
SettingsFile::Result resultOf(int code) {
  switch (code & 0xFF) {
    case SQLITE_OK:
      return SettingsFile::Result::done;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_ERROR:
    case SQLITE_CONSTRAINT:
    case SQLITE_MISMATCH:
      return SettingsFile::Result::damaged;
    default:
      return SettingsFile::Result::unusable;
  }
}

/// Ends a statement's run, and with it the transaction that it may have begun by itself.
class StatementRun {
 public:
  explicit StatementRun(sqlite3_stmt* statement) : statement_(statement) {}
  StatementRun(const StatementRun&) = delete;
  StatementRun& operator=(const StatementRun&) = delete;
  ~StatementRun() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
  }

 private:
  sqlite3_stmt* statement_;
};

}  // namespace

void SettingsFile::Close::operator()(sqlite3* database) const { sqlite3_close(database); }
void SettingsFile::Close::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }

SettingsFile::Result SettingsFile::open(const std::string& path, int patience) {
  int code = create(path);
  if (code == SQLITE_OK) {
    code = connect(path, patience);
  }
  const Result result = resultOf(code == SQLITE_OK ? openTable() : code);
  if (result == Result::unusable) {
    disconnect();  // its locks must be in nobody's way
  }
  return result;
}

void SettingsFile::setPatience(int milliseconds) {
  sqlite3_busy_timeout(database_.get(), milliseconds);
}

bool SettingsFile::isAt(const std::string& path) const {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && status.st_ino == inode_ && status.st_dev == device_;
}

SettingsFile::Result SettingsFile::read(std::optional<Settings>& settings) {
  int version = 0;
  int code = readVersion(version);
  if (code != SQLITE_OK || version == lastVersion_) {
    return resultOf(code);
  }
  Settings all;
  code = readAll(all);
  if (code == SQLITE_OK) {
    // What was committed between the two statements is read once more by the next call.
    lastVersion_ = version;
    settings = std::move(all);
  }
  forgetPages();
  return resultOf(code);
}

std::optional<Settings> SettingsFile::contentsAt(const std::string& path) {
  SettingsFile file;
  std::optional<Settings> settings;
  int code = file.connect(path, 0);
  file.leaveAsIs();
  if (code == SQLITE_OK) {
    code = file.execute("PRAGMA locking_mode = EXCLUSIVE");
  }
  if (code == SQLITE_OK) {
    code = file.checkContents();
  }
  if (code == SQLITE_OK && file.prepareStatements() == SQLITE_OK) {
    file.read(settings);
  }
  return settings;
}

SettingsFile::Result SettingsFile::write(const SettingChanges& changes) {
  int code = isReserved() ? SQLITE_OK : execute("BEGIN IMMEDIATE");
  if (code != SQLITE_OK) {
    return resultOf(code);
  }
  code = writeAll(changes);
  if (code == SQLITE_OK) {
    code = execute("COMMIT");
  } else {
    sqlite3_exec(database_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
  }
  forgetPages();
  return resultOf(code);
}

void SettingsFile::reserve() {
  sqlite3_exec(database_.get(), "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
}

void SettingsFile::release() {
  if (isReserved()) {
    sqlite3_exec(database_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
  }
}

bool SettingsFile::isReserved() const { return sqlite3_get_autocommit(database_.get()) == 0; }

/// The caller keeps what was read, so one copy is enough. Also, damage then shows at the next read.
void SettingsFile::forgetPages() { sqlite3_db_release_memory(database_.get()); }

void SettingsFile::leaveAsIs() {
  if (database_ != nullptr) {
    sqlite3_db_config(database_.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  }
}

void SettingsFile::disconnect() {
  for (Statement* each : {&version_, &readAll_, &write_, &remove_}) {
    each->reset();
  }
  database_.reset();
}

int SettingsFile::create(const std::string& path) {
  // Only a new file is opened here: closing any descriptor of a file drops all locks that this
  // process has on it.
  const int descriptor = ::open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
  if (descriptor < 0) {
    return errno == EEXIST ? SQLITE_OK : systemFault(SQLITE_CANTOPEN);
  }
  ::close(descriptor);
  return SQLITE_OK;
}

int SettingsFile::connect(const std::string& path, int patience) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    return systemFault(SQLITE_CANTOPEN);
  }
  if (!S_ISREG(status.st_mode)) {
    lastFault_ = "not a regular file";
    return SQLITE_CANTOPEN;
  }
  device_ = status.st_dev;
  inode_ = status.st_ino;
  constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
  sqlite3* database = nullptr;
  const int code = sqlite3_open_v2(path.c_str(), &database, kFlags, nullptr);
  database_.reset(database);
  if (code == SQLITE_OK) {
    setPatience(patience);
  }
  return checked(code);
}

/// Writes nothing before it is certain that the file is new or ours.
int SettingsFile::openTable() {
  bool isNew = false;
  int code = checkContents();
  if (code == SQLITE_OK) {
    code = checkForTables(isNew);
  }
  if (code == SQLITE_OK && !isNew) {
    code = prepareStatements();
  }
  if (code == SQLITE_OK) {
    code = execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL");
  }
  if (code == SQLITE_OK && isNew) {
    code = execute(kCreateTable);
  }
  return code == SQLITE_OK && isNew ? prepareStatements() : code;
}

int SettingsFile::checkForTables(bool& isNew) {
  Statement statement;
  int code = prepare("SELECT count(*) FROM sqlite_schema", statement);
  if (code == SQLITE_OK) {
    code = checked(sqlite3_step(statement.get()));
  }
  isNew = code == SQLITE_ROW && sqlite3_column_int(statement.get(), 0) == 0;
  return code == SQLITE_ROW ? SQLITE_OK : code;
}

/// A damaged index would take a change for a new row, which the next look would not find.
int SettingsFile::checkContents() {
  Statement statement;
  int code = prepare("PRAGMA integrity_check(1)", statement);
  if (code == SQLITE_OK) {
    code = checked(sqlite3_step(statement.get()));
  }
  if (code != SQLITE_ROW) {
    return code;
  }
  const std::string verdict = columnBytes(statement.get(), 0);
  if (verdict == "ok") {
    return SQLITE_OK;
  }
  lastFault_ = verdict;
  // "unable to get the page. error code=7": without memory, or from a disk that fails, a file
  // cannot be judged.
  return verdict.find("error code=") == verdict.npos ? SQLITE_CORRUPT : SQLITE_IOERR;
}

int SettingsFile::prepareStatements() {
  int code = prepare("PRAGMA data_version", version_);
  if (code == SQLITE_OK) {
    code = prepare("SELECT key, value FROM settings", readAll_);
  }
  if (code == SQLITE_OK) {
    code = prepare(
        "INSERT INTO settings (key, value) VALUES (?1, ?2)"
        " ON CONFLICT (key) DO UPDATE SET value = excluded.value",
        write_);
  }
  return code == SQLITE_OK ? prepare("DELETE FROM settings WHERE key = ?1", remove_) : code;
}

int SettingsFile::prepare(const char* text, Statement& statement) {
  sqlite3_stmt* prepared = nullptr;
  const int code = checked(
      sqlite3_prepare_v3(database_.get(), text, -1, SQLITE_PREPARE_PERSISTENT, &prepared, nullptr));
  statement.reset(prepared);
  return code;
}

int SettingsFile::execute(const char* text) {
  const int code = checked(sqlite3_exec(database_.get(), text, nullptr, nullptr, nullptr));
  if (code != SQLITE_OK) {
    release();
  }
  return code;
}

/// Reads the number that changes with each commit of any other connection.
int SettingsFile::readVersion(int& version) {
  const StatementRun run(version_.get());
  const int code = checked(sqlite3_step(version_.get()));
  version = code == SQLITE_ROW ? sqlite3_column_int(version_.get(), 0) : 0;
  return code == SQLITE_ROW ? SQLITE_OK : code;
}

int SettingsFile::readAll(Settings& settings) {
  const StatementRun run(readAll_.get());
  int code = SQLITE_OK;
  while ((code = checked(sqlite3_step(readAll_.get()))) == SQLITE_ROW) {
    if (auto setting = columnSetting(readAll_.get(), 1)) {
      settings.emplace(columnBytes(readAll_.get(), 0), std::move(*setting));
    }
  }
  return code == SQLITE_DONE ? SQLITE_OK : code;
}

int SettingsFile::writeAll(const SettingChanges& changes) {
  for (const auto& [key, setting] : changes) {
    if (const int code = writeOne(key, setting); code != SQLITE_OK) {
      return code;
    }
  }
  return SQLITE_OK;
}

int SettingsFile::writeOne(const std::string& key, const std::optional<Setting>& setting) {
  sqlite3_stmt* statement = setting.has_value() ? write_.get() : remove_.get();
  const StatementRun run(statement);
  int code = bindText(statement, 1, key);
  if (setting.has_value()) {
    code |= bindSetting(statement, 2, *setting);
  }
  code = checked(code == SQLITE_OK ? sqlite3_step(statement) : SQLITE_TOOBIG);
  return code == SQLITE_DONE ? SQLITE_OK : code;
}

int SettingsFile::checked(int code) {
  if (code == SQLITE_IOERR_SHMSIZE) {
    lastFault_ = "no room for its shared memory";  // SQLite calls a full disk an error of it here
  } else if (code != SQLITE_OK && code != SQLITE_ROW && code != SQLITE_DONE) {
    lastFault_ = database_ == nullptr ? sqlite3_errstr(code) : sqlite3_errmsg(database_.get());
  }
  return code;
}

int SettingsFile::systemFault(int code) {
  lastFault_ = std::strerror(errno);
  return code;
}

}  // namespace qorix
