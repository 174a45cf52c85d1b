#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <qorix/MyPushAdNotifications.h>
#include <qorix/MyPushAdOperator.h>

#include "fakes/FakePlatform.h"
#include "support/CheckLines.h"
#include "support/Records.h"

namespace qorix {

inline constexpr const char* kVersionKey = "ZAMMyPushAdVersionKey";
inline constexpr const char* kCountKey = "ZAMMyPushAdCountKey";

inline std::string operatorCheck(const std::string& method, int line, const std::string& message) {
  return checkLine("-[MyPushAdOperator " + method + "]", line, message);
}

/// Settings that record the calls to them, in order.
struct RecordingDefaults : MemoryUserDefaults {
  std::optional<std::string> stringForKey(const std::string& key) override {
    if (key != kAppleLanguagesKey) {
      calls.push_back("read " + key);
    }
    return MemoryUserDefaults::stringForKey(key);
  }
  std::int64_t integerForKey(const std::string& key) override {
    calls.push_back("read " + key);
    return MemoryUserDefaults::integerForKey(key);
  }
  void setString(const std::string& value, const std::string& key) override {
    calls.push_back(key + "=" + value);
    MemoryUserDefaults::setString(value, key);
  }
  void setInteger(std::int64_t value, const std::string& key) override {
    calls.push_back(key + "=" + std::to_string(value));
    MemoryUserDefaults::setInteger(value, key);
  }
  bool synchronize() override {
    calls.emplace_back("synchronize");
    return true;
  }

  std::vector<std::string> calls;
};

/// A run loop that reports each notification just before it is posted.
struct WatchedRunLoop : FakeRunLoop {
  void dispatchAsync(std::function<void()> task) override {
    ++dispatches;
    if (onDispatch) {
      onDispatch();
    }
    FakeRunLoop::dispatchAsync(std::move(task));
  }

  std::function<void()> onDispatch;
  int dispatches = 0;
};

class OperatorTest : public ::testing::Test {
 protected:
  OperatorTest() {
    fakes_.userDefaults = defaults_;
    fakes_.runLoop = runLoop_;
    installPlatform(fakes_.services());
    hostView_->setFrame({{0, 0}, {500, 300}});
    for (const char* name :
         {kPushAdWillShowNotification, kPushAdDidCloseNotification, kPushAdOpenIAPNotification}) {
      fakes_.notificationCenter
          ->addObserver(name,
                        [this](const Notification& each) {
                          events_.push_back(each.name());
                          notifications_.push_back(std::make_shared<Notification>(
                              each.name(), each.object(), each.userInfo()));
                        })
          .keep();
    }
  }

  std::shared_ptr<MyPushAdOperator> makeOperator() {
    return MyPushAdOperator::createInstanceWithHostView(std::shared_ptr<View>(hostView_));
  }

  /// One launch of the host: a new operator decides and, when due, shows.
  bool isShownInOneLaunch(const std::shared_ptr<MyPushAdInfo>& record) {
    const auto presenter = makeOperator();
    presenter->processShowAdIfNeededWithPushAdInfo(record);
    fakes_.runLoop->runUntilIdle();
    const bool shown = !hostView_->children.empty();
    hostView_->children.clear();
    return shown;
  }

  void store(const std::string& version, std::int64_t count) {
    defaults_->setString(version, kVersionKey);
    defaults_->setInteger(count, kCountKey);
    defaults_->calls.clear();
  }

  std::int64_t storedCount() { return defaults_->MemoryUserDefaults::integerForKey(kCountKey); }
  std::optional<std::string> storedVersion() {
    return defaults_->MemoryUserDefaults::stringForKey(kVersionKey);
  }

  std::shared_ptr<FakeWebView> webView(std::size_t index = 0) {
    return fakes_.interfaceLoader->webViews.at(index).lock();
  }
  FakeWindow& popupWindow() { return *fakes_.windows->windows.at(0); }

  FakePlatform fakes_;
  std::shared_ptr<RecordingDefaults> defaults_ = std::make_shared<RecordingDefaults>();
  std::shared_ptr<WatchedRunLoop> runLoop_ = std::make_shared<WatchedRunLoop>();
  std::shared_ptr<FakeView> hostView_ = std::make_shared<FakeView>();
  std::vector<std::string> events_;
  std::vector<std::shared_ptr<Notification>> notifications_;
};

}  // namespace qorix
