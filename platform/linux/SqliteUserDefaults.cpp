#include "platform/linux/SqliteUserDefaults.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <cstring>
#include <iterator>
#include <string_view>
#include <utility>

#include "platform/linux/PreferredLanguages.h"
#include "platform/linux/UserFolders.h"

namespace qorix {

namespace {

constexpr int kPatience = 250;  // milliseconds to wait for another process

// A value is an integer, a text or, for a list, a blob; its storage class tells which.
constexpr char kCreateTable[] =
    "BEGIN IMMEDIATE;"
    "CREATE TABLE IF NOT EXISTS settings (key TEXT PRIMARY KEY NOT NULL, value NOT NULL);"
    "COMMIT";

/// A list as one blob: each text as its length, ":", its bytes, ",". Texts may hold any byte.
std::string encodeList(const std::vector<std::string>& list) {
  std::string blob;
  for (const std::string& text : list) {
    blob += std::to_string(text.size()) + ':' + text + ',';
  }
  return blob;
}

std::optional<std::vector<std::string>> decodeList(std::string_view blob) {
  std::vector<std::string> list;
  while (!blob.empty()) {
    std::size_t size = 0;
    const auto [end, error] = std::from_chars(blob.data(), blob.data() + blob.size(), size);
    blob.remove_prefix(static_cast<std::size_t>(end - blob.data()));
    if (error != std::errc() || blob.size() < 2 || size > blob.size() - 2 || blob.front() != ':' ||
        blob[size + 1] != ',') {
      return std::nullopt;
    }
    list.emplace_back(blob.substr(1, size));
    blob.remove_prefix(size + 2);
  }
  return list;
}

/// Whether the fault lies in what the file holds. Our statements are right for our own files, so a
/// plain SQLITE_ERROR means that the file has tables of its own; a busy file or a full disk passes.
bool isDamage(int code) {
  switch (code & 0xFF) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_ERROR:
    case SQLITE_CONSTRAINT:
    case SQLITE_MISMATCH:
      return true;
    default:
      return false;
  }
}

/// Creates the folders above `path` that do not exist yet.
void createParents(const std::string& path) {
  for (auto slash = path.find('/', 1); slash != std::string::npos;
       slash = path.find('/', slash + 1)) {
    ::mkdir(path.substr(0, slash).c_str(), 0700);
  }
}

std::string folderOf(const std::string& path) {
  const auto slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

bool exists(const std::string& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0;
}

/// Keeps other processes of ours from moving settings of the same folder meanwhile.
class FolderLock {
 public:
  explicit FolderLock(const std::string& path)
      : descriptor_(::open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    // Another process needs a moment to move a file; nobody waits longer for it than for a lock.
    for (int left = kPatience; left > 0 && !isHeld_; left -= kPause) {
      isHeld_ = descriptor_ >= 0 && ::flock(descriptor_, LOCK_EX | LOCK_NB) == 0;
      if (!isHeld_) {
        ::poll(nullptr, 0, kPause);
      }
    }
  }
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;
  ~FolderLock() {
    if (descriptor_ >= 0) {
      ::close(descriptor_);
    }
  }

  bool isHeld() const { return isHeld_; }

 private:
  static constexpr int kPause = 5;  // milliseconds between two looks

  int descriptor_;
  bool isHeld_ = false;
};

std::string unusedName(const std::string& path) {
  for (int number = 1;; ++number) {
    std::string name = path + ".damaged-" + std::to_string(number);
    if (!exists(name) && !exists(name + "-wal") && !exists(name + "-shm")) {
      return name;
    }
  }
}

/// The companions first: a process that is killed in between leaves a damaged file, to be found
/// again, and never a new file beside the companions of the old one.
bool renameWithCompanions(const std::string& path, const std::string& name) {
  for (const char* companion : {"-wal", "-shm"}) {
    ::rename((path + companion).c_str(), (name + companion).c_str());
  }
  return ::rename(path.c_str(), name.c_str()) == 0;
}

void appendPercentEscape(std::string& text, char c) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  text += '%';
  text += kDigits[byte >> 4];
  text += kDigits[byte & 15];
}

}  // namespace

std::string defaultSettingsPath(const std::string& bundleIdentifier) {
  std::string name;
  for (const char c : bundleIdentifier) {
    const bool isHiding = c == '.' && name.empty();
    if (c == '/' || c == '%' || c == '\0' || isHiding) {
      appendPercentEscape(name, c);
    } else {
      name += c;
    }
  }
  return userConfigurationFolder() + "/qorix/" + name + ".sqlite";
}

/// One open connection to one file. Every method answers an SQLite result code.
class SqliteUserDefaults::File {
 public:
  File() = default;
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  ~File() {
    for (sqlite3_stmt* statement : {read_, write_, remove_}) {
      sqlite3_finalize(statement);
    }
    sqlite3_close(database_);
  }

  int open(const std::string& path, int patience);
  int read(const std::string& key, std::optional<Setting>& setting);
  int commit(const Changes& changes);

  /// Whether `path` still leads to this file: another process may have moved it aside.
  bool isAt(const std::string& path) const {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && status.st_ino == inode_ &&
           status.st_dev == device_;
  }

  /// How many milliseconds a call waits for another process.
  void setPatience(int milliseconds) { sqlite3_busy_timeout(database_, milliseconds); }

  /// Closing then neither writes to the file nor removes its log, which may be another's by now.
  void leaveAsIs() { sqlite3_db_config(database_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr); }

  const std::string& lastFault() const { return lastFault_; }

 private:
  int create(const std::string& path);
  int openTable();
  int checkForTables(bool& isNew);
  int prepareStatements();
  int prepare(const char* text, sqlite3_stmt*& statement);
  int execute(const char* text);
  int applyChange(const std::string& key, const std::optional<Setting>& setting);
  int run(sqlite3_stmt* statement);
  int checked(int code);
  int systemFault(int code);

  sqlite3* database_ = nullptr;
  sqlite3_stmt* read_ = nullptr;
  sqlite3_stmt* write_ = nullptr;
  sqlite3_stmt* remove_ = nullptr;
  dev_t device_ = 0;
  ino_t inode_ = 0;
  std::string lastFault_;
};

namespace {

int bindText(sqlite3_stmt* statement, int index, const std::string& text) {
  return sqlite3_bind_text64(statement, index, text.data(), text.size(), SQLITE_STATIC,
                             SQLITE_UTF8);
}

std::string columnBytes(sqlite3_stmt* statement, int index) {
  const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement, index));
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, index));
  return bytes == nullptr ? std::string() : std::string(bytes, size);
}

}  // namespace

int SqliteUserDefaults::File::checked(int code) {
  if (code != SQLITE_OK && code != SQLITE_ROW && code != SQLITE_DONE) {
    lastFault_ = database_ == nullptr ? sqlite3_errstr(code) : sqlite3_errmsg(database_);
  }
  return code;
}

int SqliteUserDefaults::File::systemFault(int code) {
  lastFault_ = std::strerror(errno);
  return code;
}

int SqliteUserDefaults::File::create(const std::string& path) {
  createParents(path);
  // Only ever opened here when it is new: closing a descriptor of a file drops all locks that this
  // process holds on it.
  const int descriptor = ::open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
  if (descriptor < 0) {
    return errno == EEXIST ? SQLITE_OK : systemFault(SQLITE_CANTOPEN);
  }
  ::close(descriptor);
  return SQLITE_OK;
}

int SqliteUserDefaults::File::open(const std::string& path, int patience) {
  if (const int code = create(path); code != SQLITE_OK) {
    return code;
  }
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
  int code = checked(sqlite3_open_v2(path.c_str(), &database_, kFlags, nullptr));
  setPatience(patience);
  return code == SQLITE_OK ? openTable() : code;
}

/// Nothing is written before it is sure that the file is new or ours.
int SqliteUserDefaults::File::openTable() {
  bool isNew = false;
  int code = checkForTables(isNew);
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

int SqliteUserDefaults::File::checkForTables(bool& isNew) {
  sqlite3_stmt* statement = nullptr;
  int code = prepare("SELECT count(*) FROM sqlite_schema", statement);
  if (code == SQLITE_OK) {
    code = checked(sqlite3_step(statement));
  }
  isNew = code == SQLITE_ROW && sqlite3_column_int(statement, 0) == 0;
  sqlite3_finalize(statement);
  return code == SQLITE_ROW ? SQLITE_OK : code;
}

int SqliteUserDefaults::File::prepareStatements() {
  int code = prepare("SELECT value FROM settings WHERE key = ?1", read_);
  if (code == SQLITE_OK) {
    code = prepare(
        "INSERT INTO settings (key, value) VALUES (?1, ?2)"
        " ON CONFLICT (key) DO UPDATE SET value = excluded.value",
        write_);
  }
  return code == SQLITE_OK ? prepare("DELETE FROM settings WHERE key = ?1", remove_) : code;
}

int SqliteUserDefaults::File::prepare(const char* text, sqlite3_stmt*& statement) {
  return checked(
      sqlite3_prepare_v3(database_, text, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr));
}

int SqliteUserDefaults::File::execute(const char* text) {
  const int code = checked(sqlite3_exec(database_, text, nullptr, nullptr, nullptr));
  if (code != SQLITE_OK && sqlite3_get_autocommit(database_) == 0) {
    sqlite3_exec(database_, "ROLLBACK", nullptr, nullptr, nullptr);
  }
  return code;
}

int SqliteUserDefaults::File::read(const std::string& key, std::optional<Setting>& setting) {
  bindText(read_, 1, key);
  const int code = checked(sqlite3_step(read_));
  if (code == SQLITE_ROW) {
    switch (sqlite3_column_type(read_, 0)) {
      case SQLITE_INTEGER:
        setting = sqlite3_column_int64(read_, 0);
        break;
      case SQLITE_TEXT:
        setting = columnBytes(read_, 0);
        break;
      case SQLITE_BLOB:
        setting = decodeList(columnBytes(read_, 0));
        break;
      default:
        break;
    }
  }
  sqlite3_reset(read_);  // ends the read transaction: the next one sees what others write
  sqlite3_clear_bindings(read_);
  return code == SQLITE_ROW || code == SQLITE_DONE ? SQLITE_OK : code;
}

int SqliteUserDefaults::File::run(sqlite3_stmt* statement) {
  const int code = checked(sqlite3_step(statement));
  sqlite3_reset(statement);
  sqlite3_clear_bindings(statement);
  return code == SQLITE_DONE ? SQLITE_OK : code;
}

int SqliteUserDefaults::File::applyChange(const std::string& key,
                                          const std::optional<Setting>& setting) {
  sqlite3_stmt* statement = setting.has_value() ? write_ : remove_;
  int code = bindText(statement, 1, key);
  std::string blob;
  if (setting.has_value()) {
    if (const auto* integer = std::get_if<std::int64_t>(&*setting)) {
      code |= sqlite3_bind_int64(statement, 2, *integer);
    } else if (const auto* text = std::get_if<std::string>(&*setting)) {
      code |= bindText(statement, 2, *text);
    } else {
      blob = encodeList(std::get<std::vector<std::string>>(*setting));
      code |= sqlite3_bind_blob64(statement, 2, blob.data(), blob.size(), SQLITE_STATIC);
    }
  }
  return code == SQLITE_OK ? run(statement) : checked(SQLITE_TOOBIG);
}

int SqliteUserDefaults::File::commit(const Changes& changes) {
  int code = execute("BEGIN IMMEDIATE");
  if (code != SQLITE_OK) {
    return code;
  }
  for (const auto& [key, setting] : changes) {
    code = applyChange(key, setting);
    if (code != SQLITE_OK) {
      sqlite3_exec(database_, "ROLLBACK", nullptr, nullptr, nullptr);
      return code;
    }
  }
  return execute("COMMIT");
}

SqliteUserDefaults::SqliteUserDefaults(std::string path, std::shared_ptr<Log> log)
    : path_(std::move(path)), log_(std::move(log)) {
  perform(kPatience, [](File&) { return SQLITE_OK; });
}

SqliteUserDefaults::~SqliteUserDefaults() {
  synchronize();
  if (file_ != nullptr && !file_->isAt(path_)) {
    file_->leaveAsIs();
  }
}

std::optional<SqliteUserDefaults::Setting> SqliteUserDefaults::settingForKey(
    const std::string& key) {
  if (const auto change = pending_.find(key); change != pending_.end()) {
    return change->second;
  }
  std::optional<Setting> setting;
  // Many reads of a file that stays locked must not add up.
  const int patience = isInTrouble_ ? 0 : kPatience;
  if (!perform(patience, [&](File& file) { return file.read(key, setting); })) {
    hasAnsweredBlindly_ = true;
  }
  return setting;
}

std::optional<std::string> SqliteUserDefaults::stringForKey(const std::string& key) {
  auto setting = settingForKey(key);
  auto* text = setting ? std::get_if<std::string>(&*setting) : nullptr;
  return text == nullptr ? std::nullopt : std::optional(std::move(*text));
}

std::optional<std::vector<std::string>> SqliteUserDefaults::stringArrayForKey(
    const std::string& key) {
  auto setting = settingForKey(key);
  if (auto* list = setting ? std::get_if<std::vector<std::string>>(&*setting) : nullptr) {
    return std::move(*list);
  }
  return key == kAppleLanguagesKey ? preferredLanguagesFromEnvironment() : std::nullopt;
}

std::int64_t SqliteUserDefaults::integerForKey(const std::string& key) {
  const auto setting = settingForKey(key);
  const auto* integer = setting ? std::get_if<std::int64_t>(&*setting) : nullptr;
  return integer == nullptr ? 0 : *integer;
}

void SqliteUserDefaults::setString(const std::string& value, const std::string& key) {
  pending_.insert_or_assign(key, value);
}

void SqliteUserDefaults::setStringArray(const std::vector<std::string>& value,
                                        const std::string& key) {
  pending_.insert_or_assign(key, value);
}

void SqliteUserDefaults::setInteger(std::int64_t value, const std::string& key) {
  pending_.insert_or_assign(key, value);
}

void SqliteUserDefaults::removeObjectForKey(const std::string& key) {
  pending_.insert_or_assign(key, std::nullopt);
}

bool SqliteUserDefaults::synchronize() {
  if (pending_.empty()) {
    return true;
  }
  if (!perform(kPatience, [this](File& file) { return commit(file); })) {
    return false;
  }
  hasAnsweredBlindly_ = false;
  pending_.clear();
  return true;
}

int SqliteUserDefaults::commit(File& file) {
  // What was set while the file could not be read rests on its being empty. It is not: what it
  // holds stays.
  for (auto change = pending_.begin(); hasAnsweredBlindly_ && change != pending_.end();) {
    std::optional<Setting> held;
    if (const int code = file.read(change->first, held); code != SQLITE_OK) {
      return code;
    }
    change = held.has_value() ? pending_.erase(change) : std::next(change);
  }
  return pending_.empty() ? SQLITE_OK : file.commit(pending_);
}

/// Runs `operation` on the open file; on a new one when it turns out to be damaged.
bool SqliteUserDefaults::perform(int patience, const std::function<int(File&)>& operation) {
  for (int attempt = 0; attempt < 2; ++attempt) {
    const int opening = open(patience);
    const int code = opening == SQLITE_OK ? operation(*file_) : opening;
    if (code == SQLITE_OK) {
      isInTrouble_ = false;
      return true;
    }
    const std::string why = file_->lastFault();
    if (isDamage(code)) {
      setAside(why);
      continue;
    }
    if (opening != SQLITE_OK) {
      file_.reset();
    }
    reportTrouble("Settings file " + path_ + " cannot be used (" + why +
                  "); settings are kept in memory for now.");
    return false;
  }
  return false;
}

/// Opens the file, unless the one that is open is still the one at the path.
int SqliteUserDefaults::open(int patience) {
  if (file_ != nullptr && file_->isAt(path_)) {
    file_->setPatience(patience);
    return SQLITE_OK;
  }
  if (file_ != nullptr) {
    file_->leaveAsIs();
  }
  file_ = std::make_unique<File>();
  return file_->open(path_, patience);
}

void SqliteUserDefaults::setAside(const std::string& why) {
  const FolderLock lock(path_);
  file_->leaveAsIs();
  const bool isOurs = file_->isAt(path_);  // else another process has been faster
  file_.reset();
  if (!isOurs) {
    return;
  }
  if (!lock.isHeld()) {
    reportTrouble("Settings file " + path_ + " is damaged (" + why +
                  ") and its folder is locked; settings are kept in memory for now.");
    return;
  }
  const std::string name = unusedName(path_);
  if (renameWithCompanions(path_, name)) {
    report("Settings file " + path_ + " is damaged (" + why + "); it is kept as " + name +
           " and a new one begun.");
  } else {
    reportTrouble("Settings file " + path_ + " is damaged (" + why + ") and cannot be moved (" +
                  std::strerror(errno) + "); settings are kept in memory for now.");
  }
}

void SqliteUserDefaults::reportTrouble(const std::string& text) {
  if (!isInTrouble_) {
    report(text);
  }
  isInTrouble_ = true;
}

void SqliteUserDefaults::report(const std::string& text) {
  if (log_ != nullptr) {
    log_->write(text);
  } else {
    logLine(text);
  }
}

}  // namespace qorix
