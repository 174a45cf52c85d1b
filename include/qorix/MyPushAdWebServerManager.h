#pragma once

// Machinery: public for those who extend it.

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include <qorix/Export.h>
#include <qorix/MyPushAdSource.h>
#include <qorix/platform/UrlSession.h>

namespace qorix {

/// Fetches the ad configuration document from one URL. The body is read as UTF-8 whatever the
/// response declares, and the HTTP status is not looked at: an error page is a text like any other.
/// A body that is larger than 64 MiB, compressed or not, is a transport error.
///
/// Lives in a std::shared_ptr, as it must outlive what it has begun. One that was not made by
/// `createInstanceWithFileURLString` has no session: its attempts end silently.
class QORIX_EXPORT MyPushAdWebServerManager
    : public MyPushAdSource,
      public UrlSessionDelegate,
      public std::enable_shared_from_this<MyPushAdWebServerManager> {
 public:
  /// A new source for that address, allocated as a `Self`, with a session of its own.
  template <class Self = MyPushAdWebServerManager>
  static std::shared_ptr<Self> createInstanceWithFileURLString(
      std::optional<std::string> fileUrlString) {
    auto source = std::make_shared<Self>();
    source->setFileUrlString(std::move(fileUrlString));
    source->openSession();
    return source;
  }

  /// @{
  /// Without an address, or with one that is malformed, the attempt ends silently; one that cannot
  /// be fetched ("commonad.xml") is a transport error. An attempt that has begun comes to its end
  /// though the source is released. Two at a time would mix their bytes.
  void downloadAdFileAsync() override;
  void retryDownloadAdFileWithDelay(double delay) override;
  std::shared_ptr<MyPushAdDownloadDelegate> delegate() const override { return delegate_.lock(); }
  void setDelegate(const std::shared_ptr<MyPushAdDownloadDelegate>& delegate) override {
    delegate_ = delegate;
  }
  /// @}

  /// @{
  /// Where the document is; a change counts from the next attempt on.
  const std::optional<std::string>& fileUrlString() const { return fileUrlString_; }
  void setFileUrlString(std::optional<std::string> value) { fileUrlString_ = std::move(value); }
  /// @}

  // UrlSessionDelegate: called on the session's thread.
  void urlSessionDidReceiveData(std::string_view data) override;
  void urlSessionDidCompleteWithError(const std::optional<Error>& error) override;

 protected:
  /// @{
  /// Tells the delegate; main thread.
  void handleWithError(const Error& error);
  void handleWithFetchedString(const std::string& text);
  /// @}

 private:
  void openSession();
  /// What has arrived, when it is UTF-8; else null.
  std::shared_ptr<const std::string> receivedText();

  std::weak_ptr<MyPushAdDownloadDelegate> delegate_;
  std::optional<std::string> fileUrlString_;
  std::shared_ptr<UrlSession> session_;
  std::mutex receivedDataMutex_;  // the session's thread appends, a new attempt starts afresh
  std::shared_ptr<std::string> receivedData_;  // copied before it changes once it is handed over
  bool isHandedOver_ = false;
};

}  // namespace qorix
