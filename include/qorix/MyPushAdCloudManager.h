#pragma once

// Machinery: public for those who extend it.

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <qorix/Export.h>
#include <qorix/MyPushAdSource.h>
#include <qorix/platform/CloudContainer.h>

namespace qorix {

/// Reads the ad configuration document from a record of a cloud container's public database: the
/// last record of type "macadfiles" whose "filename" is "commonad", the text in the asset
/// "filecontents". Without a database it stays silent for good. Lives in a std::shared_ptr, as it
/// must outlive what it has begun.
class QORIX_EXPORT MyPushAdCloudManager
    : public MyPushAdSource,
      public std::enable_shared_from_this<MyPushAdCloudManager> {
 public:
  /// A new source for that container, allocated as a `Self`. Nothing is asked of the platform yet.
  template <class Self = MyPushAdCloudManager>
  static std::shared_ptr<Self> createInstanceWithCloudContainerId(
      std::optional<std::string> cloudContainerIdentifier) {
    auto source = std::make_shared<Self>();
    source->setCloudContainerIdentifier(std::move(cloudContainerIdentifier));
    return source;
  }

  void downloadAdFileAsync() override;
  void retryDownloadAdFileWithDelay(double delay) override;
  std::shared_ptr<MyPushAdDownloadDelegate> delegate() const override { return delegate_.lock(); }
  void setDelegate(const std::shared_ptr<MyPushAdDownloadDelegate>& delegate) override {
    delegate_ = delegate;
  }

  /// @{
  /// The container's name, of the form "iCloud." and a reverse-DNS name.
  const std::optional<std::string>& cloudContainerIdentifier() const {
    return cloudContainerIdentifier_;
  }
  void setCloudContainerIdentifier(std::optional<std::string> value) {
    cloudContainerIdentifier_ = std::move(value);
  }
  /// @}

 protected:
  /// What a query has found, in the database's order.
  using Records = std::vector<std::shared_ptr<CloudRecord>>;

  /// Finds the database on first use; logs when there is none.
  void prepareDatabaseIfNeeded();
  /// Asks for the records with that file name; the outcome is handled on the main thread.
  void queryAndHandleAdFileWithFileName(const std::string& fileName);
  /// The query succeeded: handles the last record. Tells the delegate of a failure if there is
  /// none.
  void handleFetchedRecords(const std::optional<Records>& records);
  /// Reads the text of the record's asset and hands it to the delegate, or tells it of a failure.
  void handleRecord(const std::shared_ptr<CloudRecord>& record);
  /// Tells the delegate that the fetch failed with `error`.
  void handleWithError(const Error& error);

 private:
  std::shared_ptr<CloudDatabase> publicDatabase_;
  std::weak_ptr<MyPushAdDownloadDelegate> delegate_;
  std::optional<std::string> cloudContainerIdentifier_;
};

}  // namespace qorix
