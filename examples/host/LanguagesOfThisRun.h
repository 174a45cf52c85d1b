#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <qorix/platform/UserDefaults.h>

/// The host's settings, but with other languages for the user. These are not stored.
class LanguagesOfThisRun : public qorix::UserDefaults {
 public:
  LanguagesOfThisRun(std::shared_ptr<qorix::UserDefaults> stored,
                     std::vector<std::string> languages)
      : stored_(std::move(stored)), languages_(std::move(languages)) {}

  std::optional<std::vector<std::string>> stringArrayForKey(const std::string& key) override {
    return key == qorix::kAppleLanguagesKey ? languages_ : stored_->stringArrayForKey(key);
  }
  std::optional<std::string> stringForKey(const std::string& key) override {
    return stored_->stringForKey(key);
  }
  std::int64_t integerForKey(const std::string& key) override {
    return stored_->integerForKey(key);
  }
  void setString(const std::string& value, const std::string& key) override {
    stored_->setString(value, key);
  }
  void setStringArray(const std::vector<std::string>& value, const std::string& key) override {
    stored_->setStringArray(value, key);
  }
  void setInteger(std::int64_t value, const std::string& key) override {
    stored_->setInteger(value, key);
  }
  void removeObjectForKey(const std::string& key) override { stored_->removeObjectForKey(key); }
  bool synchronize() override { return stored_->synchronize(); }
  void beginDecision() override { stored_->beginDecision(); }
  void endDecision() override { stored_->endDecision(); }

 private:
  std::shared_ptr<qorix::UserDefaults> stored_;
  std::vector<std::string> languages_;
};
