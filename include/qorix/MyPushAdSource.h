#pragma once

// Machinery: public for those who extend it.

#include <memory>
#include <string>

#include <qorix/Export.h>
#include <qorix/platform/Error.h>
#include <qorix/platform/Object.h>

namespace qorix {

/// Hears how a fetch ended: one call at most for each, on the main thread. Every method may be left
/// out.
class QORIX_EXPORT MyPushAdDownloadDelegate {
 public:
  virtual ~MyPushAdDownloadDelegate() = default;

  /// `error` is the transport's own, or the source's with its whole message as the domain.
  virtual void downloadFailedWithError(const Error& /*error*/) {}
  /// `text` is the fetched document, UTF-8.
  virtual void downloadSuccessfullyWithString(const std::string& /*text*/) {}
};

/// Where the ad configuration document comes from. Never tries again by itself. Main thread only.
class QORIX_EXPORT MyPushAdSource : public Object {
 public:
  /// Starts one fetch and returns at once; the delegate hears the outcome later.
  virtual void downloadAdFileAsync() = 0;

  /// Starts one fetch `delay` seconds from now, not while the user tracks a menu.
  virtual void retryDownloadAdFileWithDelay(double delay) = 0;

  /// @{
  /// Held weakly.
  virtual std::shared_ptr<MyPushAdDownloadDelegate> delegate() const = 0;
  virtual void setDelegate(const std::shared_ptr<MyPushAdDownloadDelegate>& delegate) = 0;
  /// @}
};

}  // namespace qorix
