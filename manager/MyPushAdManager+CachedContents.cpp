#include <qorix/MyPushAdManager.h>
#include <qorix/MyPushAdUtil.h>
#include <qorix/platform/Log.h>
#include <qorix/platform/Platform.h>

namespace qorix {

namespace {

constexpr const char* kCachedAdContentsKey = "ZAMPushAdCachedAdContentsKey";

}  // namespace

void MyPushAdManager::saveAsCachedPushAdWith(const std::optional<std::string>& text) {
  if (!text || text->empty()) {
    return;
  }
  UserDefaults& defaults = *platform().standardUserDefaults;
  defaults.setString(*text, kCachedAdContentsKey);
  defaults.synchronize();
  logLine("ZAM dadstring is saved.");
}

// Parsed anew each time, so that a newer parser's rules hold for an older text, too.
std::shared_ptr<const MyPushAdInfo> MyPushAdManager::fetchCachedPushAdInfo() {
  const auto text = platform().standardUserDefaults->stringForKey(kCachedAdContentsKey);
  if (!text || text->empty() || !isSignedAsAsked(*text)) {
    return nullptr;
  }
  auto info = MyPushAdUtil::parseXMLWithString(text);
  if (info == nullptr) {
    logCheck("-[MyPushAdManager fetchCachedPushAdInfo]", 304, kVerifyFailed);
  }
  return info;
}

void MyPushAdManager::clearCachedAdContents() {
  UserDefaults& defaults = *platform().standardUserDefaults;
  defaults.removeObjectForKey(kCachedAdContentsKey);
  defaults.synchronize();
}

}  // namespace qorix
