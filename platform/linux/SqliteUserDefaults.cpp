#include "platform/linux/SqliteUserDefaults.h"

#include <errno.h>
#include <glib.h>

#include <cstring>
#include <filesystem>
#include <utility>

#include "platform/Guarded.h"
#include "platform/linux/DamagedSettings.h"
#include "platform/linux/Hexadecimal.h"
#include "platform/linux/PreferredLanguages.h"
#include "platform/linux/UserFolders.h"

namespace qorix {

namespace {

constexpr int kSettingsPatience = 250;  // milliseconds to wait for another process

}  // namespace

std::string defaultSettingsPath(const std::string& bundleIdentifier) {
  std::string name;
  for (const char c : bundleIdentifier) {
    const bool isHiding = c == '.' && name.empty();
    if (c == '/' || c == '%' || c == '\0' || isHiding) {
      name += '%';
      appendHexadecimal(name, c);
    } else {
      name += c;
    }
  }
  return userConfigurationFolder() + "/qorix/" + name + ".sqlite";
}

SqliteUserDefaults::SqliteUserDefaults(std::string path, std::shared_ptr<Log> log)
    : path_(std::move(path)), log_(std::move(log)) {
  look(kSettingsPatience);
}

SqliteUserDefaults::~SqliteUserDefaults() {
  synchronize();
  close();
}

template <class T>
std::optional<T> SqliteUserDefaults::valueForKey(const std::string& key) {
  look(0);
  const Setting* setting = nullptr;
  if (const auto change = pending_.find(key); change != pending_.end()) {
    setting = change->second ? &*change->second : nullptr;
  } else if (held_) {
    const auto entry = held_->find(key);
    setting = entry == held_->end() ? nullptr : &entry->second;
  }
  const T* value = setting == nullptr ? nullptr : std::get_if<T>(setting);
  return value == nullptr ? std::nullopt : std::optional(*value);
}

std::optional<std::string> SqliteUserDefaults::stringForKey(const std::string& key) {
  return valueForKey<std::string>(key);
}

std::optional<std::vector<std::string>> SqliteUserDefaults::stringArrayForKey(
    const std::string& key) {
  auto list = valueForKey<std::vector<std::string>>(key);
  return list || key != kAppleLanguagesKey ? list : preferredLanguagesFromEnvironment();
}

std::int64_t SqliteUserDefaults::integerForKey(const std::string& key) {
  return valueForKey<std::int64_t>(key).value_or(0);
}

void SqliteUserDefaults::setString(const std::string& value, const std::string& key) {
  set(value, key);
}

void SqliteUserDefaults::setStringArray(const std::vector<std::string>& value,
                                        const std::string& key) {
  set(value, key);
}

void SqliteUserDefaults::setInteger(std::int64_t value, const std::string& key) { set(value, key); }

void SqliteUserDefaults::set(Setting setting, const std::string& key) {
  if (!held_) {
    look(0);
  }
  // A key that we have changed before is not set blindly.
  if (!held_ && !pending_.contains(key)) {
    blind_.insert(key);
  }
  pending_.insert_or_assign(key, std::move(setting));
}

// A removal assumes nothing about what the file holds, so the file need not be read first.
void SqliteUserDefaults::removeObjectForKey(const std::string& key) {
  blind_.erase(key);
  pending_.insert_or_assign(key, std::nullopt);
}

bool SqliteUserDefaults::synchronize() {
  if (!pending_.empty() &&
      !perform(kSettingsPatience, [this](SettingsFile& file) { return commit(file); })) {
    return false;
  }
  if (decisions_ > 0) {
    reserve();  // the commit has let the others in
  }
  return !std::exchange(hasGivenWay_, false);
}

void SqliteUserDefaults::beginDecision() {
  if (decisions_ == 0) {
    reserve();
  }
  ++decisions_;
}

void SqliteUserDefaults::endDecision() {
  --decisions_;
  if (decisions_ == 0 && file_ != nullptr) {
    file_->release();
  }
}

/// Two processes that decide at once would count one showing for both. A file that cannot be had in
/// time is decided upon all the same.
void SqliteUserDefaults::reserve() {
  perform(isInTrouble_ ? 0 : kSettingsPatience, [this](SettingsFile& file) {
    file.reserve();
    return read(file);
  });
}

void SqliteUserDefaults::look(int patience) {
  if (decisions_ == 0) {
    perform(patience, [this](SettingsFile& file) { return read(file); });
  }
}

SqliteUserDefaults::Result SqliteUserDefaults::read(SettingsFile& file) {
  const Result result = file.read(held_);
  if (result == Result::done) {
    giveWay();
  }
  return result;
}

/// What was set blindly gives way to what the file turns out to hold.
void SqliteUserDefaults::giveWay() {
  for (const std::string& key : std::exchange(blind_, {})) {
    if (held_->contains(key)) {
      pending_.erase(key);
      hasGivenWay_ = true;
    }
  }
}

SqliteUserDefaults::Result SqliteUserDefaults::commit(SettingsFile& file) {
  Result result = read(file);
  Settings written;  // made before the commit: after it, nothing may fail
  for (const auto& [key, setting] : pending_) {
    if (setting) {
      written.emplace(key, *setting);
    }
  }
  if (result == Result::done && !pending_.empty()) {
    result = file.write(pending_);
  }
  if (result == Result::done) {
    for (const auto& [key, setting] : pending_) {
      held_->erase(key);
    }
    held_->merge(written);
    pending_.clear();
  }
  return result;
}

/// What throws, for want of memory, leaves the file in an unknown state: it is opened and read
/// anew.
bool SqliteUserDefaults::perform(int patience,
                                 const std::function<Result(SettingsFile&)>& operation) {
  try {
    return performOnFile(patience, operation);
  } catch (...) {
    logStoppedException();
    close();
    return false;
  }
}

/// Runs `operation` on the open file, or on a new one if that file turns out to be damaged.
bool SqliteUserDefaults::performOnFile(int patience,
                                       const std::function<Result(SettingsFile&)>& operation) {
  for (int attempt = 0; attempt < 2; ++attempt) {
    const Result opening = open(patience);
    const Result result = opening == Result::done ? operation(*file_) : opening;
    if (result == Result::done) {
      isInTrouble_ =
          isInTrouble_ && !pending_.empty();  // a file that can be read may still be locked
      return true;
    }
    const std::string why = file_->lastFault();
    if (result == Result::damaged) {
      setAside(why);
      continue;
    }
    if (opening != Result::done) {
      file_.reset();
    }
    reportTrouble("Settings file " + path_ + " cannot be used (" + why +
                  "); settings are kept in memory for now.");
    return false;
  }
  return false;
}

/// Opens the file unless the open one is still the one at the path.
SqliteUserDefaults::Result SqliteUserDefaults::open(int patience) {
  if (file_ != nullptr && file_->isAt(path_)) {
    file_->setPatience(patience);
    return Result::done;
  }
  if (file_ != nullptr) {
    file_->leaveAsIs();
  }
  file_ = std::make_unique<SettingsFile>();
  g_mkdir_with_parents(std::filesystem::path(path_).parent_path().c_str(), 0700);
  // SQLite waits for nobody while it gives a new file its form.
  const SettingsFolderLock lock(path_, patience);
  const Result result = file_->open(path_, patience);
  if (result == Result::unusable && !held_ && lock.isHeld()) {
    held_ = SettingsFile::contentsAt(path_);
    if (held_) {
      giveWay();
    }
  }
  return result;
}

void SqliteUserDefaults::close() {
  if (file_ != nullptr && !file_->isAt(path_)) {
    file_->leaveAsIs();
  }
  file_.reset();
}

void SqliteUserDefaults::setAside(const std::string& why) {
  // Waits only once for a folder that stays locked.
  const SettingsFolderLock lock(path_, isInTrouble_ ? 0 : kSettingsPatience);
  file_->leaveAsIs();
  const bool isOurs = file_->isAt(path_);  // else another process was faster
  file_.reset();
  if (!isOurs) {
    return;
  }
  const std::string damage = "Settings file " + path_ + " is damaged (" + why + ")";
  if (!lock.isHeld()) {
    reportTrouble(damage + " and its folder is locked; settings are kept in memory for now.");
  } else if (const auto name = keepDamagedSettings(path_)) {
    report(damage + "; it is kept as " + *name + " and a new one begun.");
  } else {
    reportTrouble(damage + " and cannot be moved (" + std::strerror(errno) +
                  "); settings are kept in memory for now.");
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
