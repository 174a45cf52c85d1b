#include <qorix/MyPushAdManager.h>
#include <qorix/MyPushAdUtil.h>
#include <qorix/platform/Log.h>
#include <qorix/platform/Platform.h>

#include "platform/Guarded.h"

namespace qorix {

namespace {

constexpr const char* kCachedAdContentsKey = "ZAMPushAdCachedAdContentsKey";

}  // namespace

void MyPushAdManager::saveAsCachedPushAdWith(const std::optional<std::string>& text) {
  if (!text || text->empty()) {
    return;
  }
  callGuarded([&text] {
    UserDefaults& defaults = *platform().standardUserDefaults;
    defaults.setString(*text, kCachedAdContentsKey);
    defaults.synchronize();
    logLine("ZAM dadstring is saved.");
  });
}

// Parsed anew each time, so that a newer parser's rules hold for an older text, too.
std::shared_ptr<const MyPushAdInfo> MyPushAdManager::fetchCachedPushAdInfo() {
  std::shared_ptr<const MyPushAdInfo> info;
  callGuarded([&info] {
    const auto text = platform().standardUserDefaults->stringForKey(kCachedAdContentsKey);
    if (!text || text->empty() || !isSignedAsAsked(*text)) {
      return;
    }
    info = MyPushAdUtil::parseXMLWithString(text);
    if (info == nullptr) {
      logCheck("-[MyPushAdManager fetchCachedPushAdInfo]", 304, kVerifyFailed);
    }
  });
  return info;
}

void MyPushAdManager::clearCachedAdContents() {
  callGuarded([] {
    UserDefaults& defaults = *platform().standardUserDefaults;
    defaults.removeObjectForKey(kCachedAdContentsKey);
    defaults.synchronize();
  });
}

}  // namespace qorix
