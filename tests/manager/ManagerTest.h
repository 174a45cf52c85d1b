#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <string>

#include <qorix/MyPushAdManager.h>

#include "fakes/FakePlatform.h"
#include "support/CheckLines.h"

namespace qorix {

inline constexpr const char* kAddress = "https://ads.example.com/commonad.xml";
inline constexpr const char* kCacheKey = "ZAMPushAdCachedAdContentsKey";
inline constexpr const char* kNoBundleMessage =
    "ZAM Warning: You dont configure app bundle identifier...";
inline constexpr const char* kAllocMessage =
    "***Error***: alloc another object!!! This MACRO only supports really singlton class.";

inline std::string managerCheck(const std::string& method, int line, const std::string& message) {
  return checkLine("-[MyPushAdManager " + method + "]", line, message);
}

inline std::string prepareCheck(int line, const std::string& message) {
  return managerCheck("prepareAndShowAdWithHostView:fileHostMode:address:", line, message);
}

class ManagerTest : public ::testing::Test {
 protected:
  ManagerTest() {
    installPlatform(fakes_.services());
    hostView_->setFrame({{0, 0}, {500, 300}});
  }

  /// The shared manager, configured as a host does.
  MyPushAdManager& manager() {
    const auto shared = MyPushAdManager::sharedPushAdManager();
    shared->configureWithAppBundle(platform().mainBundle);
    return *shared;
  }

  void show(const std::shared_ptr<View>& view) {
    manager().prepareAndShowAdWithHostView(view, MyPushAdFileHostModeWebServer, kAddress);
  }

  FakeUrlSession& session() { return *fakes_.urlSessions->sessions.at(0); }

  /// The running download brings `text`.
  void land(const std::string& text) {
    session().deliver(text);
    session().complete();
    fakes_.runLoop->runUntilIdle();
  }

  void storeInCache(const std::string& text) { fakes_.userDefaults->setString(text, kCacheKey); }
  std::optional<std::string> cached() { return fakes_.userDefaults->stringForKey(kCacheKey); }

  FakePlatform fakes_;
  std::shared_ptr<FakeView> hostView_ = std::make_shared<FakeView>();
};

}  // namespace qorix
