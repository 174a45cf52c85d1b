#pragma once

// For hosts.

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <qorix/Export.h>
#include <qorix/FactoryKey.h>
#include <qorix/MyPushAdInfo.h>
#include <qorix/MyPushAdOperator.h>
#include <qorix/MyPushAdSource.h>
#include <qorix/platform/Object.h>
#include <qorix/platform/View.h>
#include <qorix/platform/Window.h>

namespace qorix {

/// Where the ad configuration document of a show request lives.
enum MyPushAdFileHostMode : std::int64_t {
  MyPushAdFileHostModeWebServer = 0,  ///< The address is a URL.
  MyPushAdFileHostModeCloudKit = 1,   ///< The address is a container identifier.
};

/// The library's front door. A host takes the one shared manager, configures it with its bundle and
/// asks once for each view in which an advertisement may appear; the rest happens by itself.
/// Reports no errors: faults are logged, and downloads are tried again every 60 seconds until one
/// succeeds. Main thread only, but for `sharedPushAdManager` and `appBundleIdentifier`.
class QORIX_EXPORT MyPushAdManager : public Object,
                                     public MyPushAdDownloadDelegate,
                                     public std::enable_shared_from_this<MyPushAdManager> {
 public:
  /// The shared manager, made by the first call as a `Self`; it lives until the process ends. Null
  /// when the host has allocated a manager of its own before, and when it cannot be made: a later
  /// call tries again. Any thread.
  template <class Self = MyPushAdManager>
  static std::shared_ptr<MyPushAdManager> sharedPushAdManager() {
    return sharedPushAdManagerMadeBy(
        [] { return std::make_shared<Self>(FactoryKey<MyPushAdManager>()); });
  }

  /// A new manager, allocated as a `Self`, that is not the shared one. A process has one manager:
  /// when there is one already, this logs one line and returns null, and after this
  /// `sharedPushAdManager` does. Null after a log line, too, when it cannot be made: a later call
  /// of either tries again. Any thread.
  template <class Self = MyPushAdManager>
  static std::shared_ptr<Self> alloc() {
    if (!claimTheOneAllocation()) {
      logRefusedAllocation();
      return nullptr;
    }
    std::shared_ptr<Self> made;
    makeTheOne([&made] { made = std::make_shared<Self>(FactoryKey<MyPushAdManager>()); });
    return made;
  }

  /// For the two above: there is one manager at most.
  explicit MyPushAdManager(const FactoryKey<MyPushAdManager>& /*key*/) {}
  ~MyPushAdManager() override = default;

  /// The manager itself: there is only one. Null while a subclass's constructor runs.
  std::shared_ptr<MyPushAdManager> copy() { return weak_from_this().lock(); }

  /// Tells the manager who the host is: the identifier of a Bundle. Null and any other object are
  /// ignored. A later call replaces the identifier. Show requests without one log a warning.
  void configureWithAppBundle(const std::shared_ptr<const Object>& bundle);

  /// Requests the advertisement for `hostView` and returns at once. Nothing appears before the
  /// document is there and the advertisement is due: with a cached document that is decided in this
  /// call, else when the download ends. What is due appears after the delay that the document
  /// states, on a later pass of the loop; kPushAdWillShowNotification says so.
  ///
  /// hostView: where a banner may appear. Held weakly: once the host has dropped or destroyed it,
  /// no banner appears. Null for hosts that only want the pop-up: a view in a hidden window takes
  /// its place. A view that has been destroyed is refused with one log line, the whole request with
  /// it.
  ///
  /// fileHostMode, address: where the document is. The first request of the process starts the one
  /// download and fixes both for the process; those of later requests are ignored. An unknown mode
  /// is logged and starts no download; only a cached document is shown then. An absent or malformed
  /// address ends the download silently; a web address that cannot be fetched is a failed download,
  /// which is tried again every 60 seconds.
  ///
  /// Each call makes a presenter, also a second call for one view. Main thread only.
  void prepareAndShowAdWithHostView(const std::shared_ptr<View>& hostView,
                                    MyPushAdFileHostMode fileHostMode,
                                    const std::optional<std::string>& address);

  /// @{
  /// The same with the container and the URL that the host has installed as its defaults. When it
  /// has installed none, they log one line and go on with an absent address.
  void prepareAndShowAdByUsingDefaultCloudKitContainerWithHostView(
      const std::shared_ptr<View>& hostView);
  void prepareAndShowAdByUsingMyAppWebServerURLWithHostView(const std::shared_ptr<View>& hostView);
  /// @}

  // MyPushAdDownloadDelegate.
  void downloadFailedWithError(const Error& error) override;
  void downloadSuccessfullyWithString(const std::string& text) override;

  // The last good document, kept in the host's settings.

  /// Forgets it. What is loaded in this run stays in force.
  void clearCachedAdContents();
  /// Parses it anew. Null, after one log line for a document that no longer parses or that is not
  /// signed as the host asks now, when there is none. Shared with nobody else.
  std::shared_ptr<const MyPushAdInfo> fetchCachedPushAdInfo();
  /// Keeps `text` durably, in place of the last one. An absent or empty text is ignored.
  void saveAsCachedPushAdWith(const std::optional<std::string>& text);

  /// @{
  /// Whether the source was chosen and started; true for the rest of the process then, unless
  /// there is no memory to schedule a retry: the next request then starts it again.
  bool isDownloadFileRequested() const { return isDownloadFileRequested_; }
  void setIsDownloadFileRequested(bool value) { isDownloadFileRequested_ = value; }
  /// @}

  /// @{
  /// The host's bundle identifier; absent until it is configured. Any thread.
  std::optional<std::string> appBundleIdentifier() const;
  void setAppBundleIdentifier(std::optional<std::string> value);
  /// @}

  /// @{
  /// The one source; null until the first show request, and after one with an unknown mode.
  const std::shared_ptr<MyPushAdSource>& pushAdSource() const { return pushAdSource_; }
  void setPushAdSource(std::shared_ptr<MyPushAdSource> source) {
    pushAdSource_ = std::move(source);
  }
  /// @}

  /// @{
  /// The definition that all host views share; null until there is one.
  const std::shared_ptr<const MyPushAdInfo>& lonePushAdInfo() const { return lonePushAdInfo_; }
  void setLonePushAdInfo(std::shared_ptr<const MyPushAdInfo> info) {
    lonePushAdInfo_ = std::move(info);
  }
  /// @}

  /// @{
  /// Every presenter ever made, in order. Absent only when set so; show requests then log and end.
  using Operators = std::vector<std::shared_ptr<MyPushAdOperator>>;
  const std::optional<Operators>& pushAdOperators() const { return pushAdOperators_; }
  void setPushAdOperators(std::optional<Operators> operators) {
    pushAdOperators_ = std::move(operators);
  }
  /// @}

  /// @{
  /// The hidden window whose content stands in for a host view; null until it is needed.
  const std::shared_ptr<Window>& stubMemoryHostWindow() const { return stubMemoryHostWindow_; }
  void setStubMemoryHostWindow(std::shared_ptr<Window> window) {
    stubMemoryHostWindow_ = std::move(window);
  }
  /// @}

 protected:
  /// Makes the presenter for a view; null when a subclass cannot.
  virtual std::shared_ptr<MyPushAdOperator> createOperatorWithHostView(
      const std::shared_ptr<View>& hostView);

 private:
  static std::shared_ptr<MyPushAdManager> sharedPushAdManagerMadeBy(
      const std::function<std::shared_ptr<MyPushAdManager>()>& make);
  static bool claimTheOneAllocation();
  static void makeTheOne(const std::function<void()>& make);
  static void logRefusedAllocation();
  void prepareAndShow(const std::shared_ptr<View>& hostView, MyPushAdFileHostMode fileHostMode,
                      const std::optional<std::string>& address);
  void handleDocument(const std::string& text);
  std::shared_ptr<View> stubHostView();
  void requestDownload(MyPushAdFileHostMode fileHostMode,
                       const std::optional<std::string>& address);
  void startSource(MyPushAdFileHostMode fileHostMode, const std::optional<std::string>& address);
  void retryDownload();
  /// Whether the owner of one of the platform's public keys has signed the document; true where
  /// there are none. Logs one line if not.
  static bool isSignedAsAsked(const std::string& text);

  bool isDownloadFileRequested_ = false;
  mutable std::mutex appBundleIdentifierMutex_;
  std::optional<std::string> appBundleIdentifier_;
  std::shared_ptr<MyPushAdSource> pushAdSource_;
  std::shared_ptr<const MyPushAdInfo> lonePushAdInfo_;
  std::optional<Operators> pushAdOperators_ = Operators();
  std::shared_ptr<Window> stubMemoryHostWindow_;
};

}  // namespace qorix
