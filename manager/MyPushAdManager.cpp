#include <exception>
#include <new>

#include <qorix/MyPushAdCloudManager.h>
#include <qorix/MyPushAdManager.h>
#include <qorix/MyPushAdUtil.h>
#include <qorix/MyPushAdWebServerManager.h>
#include <qorix/platform/Bundle.h>
#include <qorix/platform/Log.h>
#include <qorix/platform/Platform.h>

#include "platform/Guarded.h"
#include "text/Excerpt.h"
#include "webview/HostIdentifier.h"

namespace qorix {

namespace {

constexpr double kRetryDelaySeconds = 60;
constexpr Rect kStubWindowContentRect{{-9000, -9000}, {100, 100}};  // off every screen

constexpr const char* kPrepareMethod =
    "-[MyPushAdManager prepareAndShowAdWithHostView:fileHostMode:address:]";

// Recursive: making the shared manager allocates it under the same lock.
std::recursive_mutex& classLock() {
  static auto& lock = *new std::recursive_mutex();
  return lock;
}

/// The address that the host has installed under `name`; absent, after a log line, when it has
/// none.
std::optional<std::string> installedAddress(const std::string& address, const char* name) {
  if (address.empty()) {
    logLine(std::string("ZAM No address of the ad document: the platform has no ") + name);
    return std::nullopt;
  }
  return address;
}

// The start of the source, or a retry, has failed: the next request starts it, also if there is a
// record already.
bool isSourceToBeStarted = false;

bool alreadyAllocatedOneInstanceOfMyPushAdManager = false;

/// While the one manager is made: what throws meanwhile gives the claim back.
class ClaimedAllocation {
 public:
  ClaimedAllocation() = default;
  ClaimedAllocation(const ClaimedAllocation&) = delete;
  ClaimedAllocation& operator=(const ClaimedAllocation&) = delete;
  ~ClaimedAllocation() {
    if (std::uncaught_exceptions() > exceptions_) {
      const std::lock_guard lock(classLock());
      alreadyAllocatedOneInstanceOfMyPushAdManager = false;
    }
  }

 private:
  const int exceptions_ = std::uncaught_exceptions();
};

// What pages are told of the host is asked for below this room.
[[maybe_unused]] const bool kHostIdentifierHasItsSource = [] {
  HostIdentifier::setSource([] {
    const auto manager = MyPushAdManager::sharedPushAdManager();
    return manager == nullptr ? std::nullopt : manager->appBundleIdentifier();
  });
  return true;
}();

}  // namespace

// The one instance.

std::shared_ptr<MyPushAdManager> MyPushAdManager::sharedPushAdManagerMadeBy(
    const std::function<std::shared_ptr<MyPushAdManager>()>& make) {
  try {
    const std::lock_guard lock(classLock());
    // Never destroyed: the manager lives as long as the process.
    static auto& sharedMyPushAdManager = *new std::shared_ptr<MyPushAdManager>();
    if (sharedMyPushAdManager == nullptr && claimTheOneAllocation()) {
      const ClaimedAllocation claimed;
      sharedMyPushAdManager = make();
    }
    if (sharedMyPushAdManager != nullptr) {
      return sharedMyPushAdManager;
    }
  } catch (...) {
    logStoppedException();
    return nullptr;
  }
  logRefusedAllocation();
  return nullptr;
}

void MyPushAdManager::makeTheOne(const std::function<void()>& make) {
  callGuarded([&make] {
    const ClaimedAllocation claimed;
    make();
  });
}

bool MyPushAdManager::claimTheOneAllocation() {
  const std::lock_guard lock(classLock());
  return !std::exchange(alreadyAllocatedOneInstanceOfMyPushAdManager, true);
}

// Not under the lock: the log may be the host's, and may wait for a thread that asks for the
// manager.
void MyPushAdManager::logRefusedAllocation() {
  callGuarded([] {
    logLine("***Error***: alloc another object!!! This MACRO only supports really singlton class.");
  });
}

// The host's calls.

void MyPushAdManager::configureWithAppBundle(const std::shared_ptr<const Object>& bundle) {
  callGuarded([&] {
    if (const auto appBundle = std::dynamic_pointer_cast<const Bundle>(bundle)) {
      setAppBundleIdentifier(appBundle->bundleIdentifier());
    }
  });
}

std::optional<std::string> MyPushAdManager::appBundleIdentifier() const {
  const std::lock_guard lock(appBundleIdentifierMutex_);
  return appBundleIdentifier_;
}

void MyPushAdManager::setAppBundleIdentifier(std::optional<std::string> value) {
  const std::lock_guard lock(appBundleIdentifierMutex_);
  appBundleIdentifier_ = std::move(value);
}

void MyPushAdManager::prepareAndShowAdByUsingDefaultCloudKitContainerWithHostView(
    const std::shared_ptr<View>& hostView) {
  callGuarded([&] {
    prepareAndShowAdWithHostView(hostView, MyPushAdFileHostModeCloudKit,
                                 installedAddress(platform().defaultCloudContainerIdentifier,
                                                  "defaultCloudContainerIdentifier"));
  });
}

void MyPushAdManager::prepareAndShowAdByUsingMyAppWebServerURLWithHostView(
    const std::shared_ptr<View>& hostView) {
  callGuarded([&] {
    prepareAndShowAdWithHostView(hostView, MyPushAdFileHostModeWebServer,
                                 installedAddress(platform().defaultAdFileUrl, "defaultAdFileUrl"));
  });
}

void MyPushAdManager::prepareAndShowAdWithHostView(const std::shared_ptr<View>& hostView,
                                                   MyPushAdFileHostMode fileHostMode,
                                                   const std::optional<std::string>& address) {
  callGuarded([&] { prepareAndShow(hostView, fileHostMode, address); });
}

void MyPushAdManager::prepareAndShow(const std::shared_ptr<View>& hostView,
                                     MyPushAdFileHostMode fileHostMode,
                                     const std::optional<std::string>& address) {
  const auto view = hostView == nullptr ? stubHostView() : hostView;
  if (appBundleIdentifier().value_or("").empty()) {
    logLine("ZAM Warning: You dont configure app bundle identifier...");
  }
  if (view == nullptr || view->isGone()) {
    logCheck(kPrepareMethod, 157, kFatalError);
    return;
  }
  if (!pushAdOperators_) {
    logCheck(kPrepareMethod, 158, kFatalError);
    return;
  }
  const auto presenter = createOperatorWithHostView(view);
  if (presenter == nullptr) {
    logCheck(kPrepareMethod, 162, kFatalError);
    return;
  }
  pushAdOperators_->push_back(presenter);
  const bool hasRecord = lonePushAdInfo_ != nullptr;
  if (hasRecord) {
    presenter->processShowAdIfNeededWithPushAdInfo(lonePushAdInfo_);
  }
  if (!isDownloadFileRequested_ && (!hasRecord || isSourceToBeStarted)) {
    requestDownload(fileHostMode, address);
  }
  // The cached text is offered besides the held definition; the presenter keeps to the first.
  if (auto cached = fetchCachedPushAdInfo()) {
    lonePushAdInfo_ = std::move(cached);
    presenter->processShowAdIfNeededWithPushAdInfo(lonePushAdInfo_);
  }
}

std::shared_ptr<View> MyPushAdManager::stubHostView() {
  if (stubMemoryHostWindow_ == nullptr) {
    stubMemoryHostWindow_ = platform().windows->createBorderlessWindow(kStubWindowContentRect);
  }
  return stubMemoryHostWindow_ == nullptr ? nullptr : stubMemoryHostWindow_->contentView();
}

std::shared_ptr<MyPushAdOperator> MyPushAdManager::createOperatorWithHostView(
    const std::shared_ptr<View>& hostView) {
  return MyPushAdOperator::createInstanceWithHostView(hostView);
}

void MyPushAdManager::requestDownload(MyPushAdFileHostMode fileHostMode,
                                      const std::optional<std::string>& address) {
  isSourceToBeStarted = true;
  callGuarded([&] {
    startSource(fileHostMode, address);
    isDownloadFileRequested_ = true;
    isSourceToBeStarted = false;
  });
}

void MyPushAdManager::startSource(MyPushAdFileHostMode fileHostMode,
                                  const std::optional<std::string>& address) {
  if (fileHostMode == MyPushAdFileHostModeCloudKit) {
    pushAdSource_ = MyPushAdCloudManager::createInstanceWithCloudContainerId(address);
    pushAdSource_->setDelegate(copy());
  } else if (fileHostMode == MyPushAdFileHostModeWebServer) {
    pushAdSource_ = MyPushAdWebServerManager::createInstanceWithFileURLString(address);
    pushAdSource_->setDelegate(copy());
  } else {
    logCheck(kPrepareMethod, 189, kConfigurationError);
  }
  if (pushAdSource_ == nullptr) {
    logCheck(kPrepareMethod, 193, kVerifyFailed);
  }
  if (pushAdSource_ == nullptr || pushAdSource_->delegate() == nullptr) {
    logCheck(kPrepareMethod, 194, kVerifyFailed);
  }
  if (pushAdSource_ != nullptr) {
    pushAdSource_->downloadAdFileAsync();
  }
}

// What the source reports.

void MyPushAdManager::downloadSuccessfullyWithString(const std::string& text) {
  try {
    handleDocument(text);
  } catch (const std::bad_alloc&) {
    logStoppedException();
    retryDownload();
  } catch (...) {
    logStoppedException();
  }
}

void MyPushAdManager::handleDocument(const std::string& text) {
  constexpr const char* kMethod = "-[MyPushAdManager downloadSuccessfullyWithString:]";
  if (!isSignedAsAsked(text)) {
    downloadFailedWithError({"Custom Error: the ad document is not signed as asked.", 1, ""});
    return;
  }
  logLine("ZAM dSuccess");
  if (const auto beginning = beginningOfLongText(text)) {
    logLine("ZAM A small part of the beginning of dstring (" + *beginning + ")");
  }
  if (!pushAdOperators_) {
    logCheck(kMethod, 253, kVerifyFailed);
  }
  auto info = MyPushAdUtil::parseXMLWithString(text);
  if (info == nullptr) {
    logCheck(kMethod, 256, kFatalError);
    logLine("ZAM OK. but rty");
    retryDownload();
    return;
  }
  saveAsCachedPushAdWith(text);
  lonePushAdInfo_ = std::move(info);
  // A copy: whoever reacts to a showing may ask for another view, and so extend the list.
  const Operators presenters = pushAdOperators_.value_or(Operators());
  for (const auto& presenter : presenters) {
    presenter->processShowAdIfNeededWithPushAdInfo(lonePushAdInfo_);
  }
}

void MyPushAdManager::downloadFailedWithError(const Error& /*error*/) {
  callGuarded([] { logLine("ZAM dError rty"); });
  retryDownload();
}

void MyPushAdManager::retryDownload() {
  if (pushAdSource_ == nullptr) {
    return;
  }
  try {
    pushAdSource_->retryDownloadAdFileWithDelay(kRetryDelaySeconds);
  } catch (...) {
    logStoppedException();
    isDownloadFileRequested_ = false;
    isSourceToBeStarted = true;
  }
}

}  // namespace qorix
