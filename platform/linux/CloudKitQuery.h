#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <qorix/platform/CloudContainer.h>

#include "platform/linux/CloudKitProtocol.h"
#include "platform/linux/HttpQueue.h"

namespace qorix {

/// One query under way: page after page, then the last record's assets one by one. Keeps itself
/// alive until its end. Everything but `run` happens on the thread on which the queue reports.
class CloudKitQuery : public std::enable_shared_from_this<CloudKitQuery> {
 public:
  CloudKitQuery(std::shared_ptr<HttpQueue> queue, Url address, CloudQuery query,
                CloudDatabase::Completion completion);

  /// Starts the query. To be called once.
  void run();

 private:
  struct Asset;
  class Record;
  using Records = std::vector<std::shared_ptr<CloudRecord>>;

  /// Runs a request. If it fails, so does the query; otherwise `ended` gets its HTTP status.
  void start(HttpRequest request, std::function<void(int status)> ended);
  void requestPage(const std::optional<std::string>& continuationMarker);
  void handleAnswer(int status, const std::string& body,
                    const std::optional<std::string>& askedWith);
  void addRecord(cloudkit::RecordValues values);
  void fetchNextAsset();
  bool receiveAsset(std::string_view bytes, int status);
  void checkAsset(int status);
  void succeed();
  void fail(const Error& error);
  void report(std::optional<Records> records, const std::optional<Error>& error);

  const std::shared_ptr<HttpQueue> queue_;
  const Url address_;
  const CloudQuery query_;
  CloudDatabase::Completion completion_;
  std::size_t pages_ = 0;
  std::size_t pageBytes_ = 0;  // of all pages
  Records records_;
  std::vector<std::shared_ptr<Asset>> assets_;  // of the last record, still to be fetched
  std::shared_ptr<Asset> asset_;                // the one that is being fetched
  std::optional<Error> ownError_;               // why the query itself ended a request
};

}  // namespace qorix
