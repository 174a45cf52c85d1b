#include "platform/linux/HttpQueue.h"

#include <curl/curl.h>

#include <exception>
#include <mutex>
#include <utility>

#include <qorix/platform/Platform.h>

#include "platform/linux/HttpChannel.h"
#include "platform/linux/HttpThreads.h"
#include "platform/linux/HttpTransfer.h"

namespace qorix {

class HttpQueue::Implementation {
 public:
  explicit Implementation(HttpOptions options) : options_(std::move(options)) {}
  Implementation(const Implementation&) = delete;
  Implementation& operator=(const Implementation&) = delete;
  ~Implementation() { channel_->stop(); }

  const HttpOptions& options() const { return options_; }

  void start(HttpRequest&& request) {
    const std::lock_guard lock(mutex_);
    if (!isStarted_) {
      isStarted_ = HttpThreads::shared().start(channel_, options_);
    }
    if (isStarted_) {
      HttpTransfers transfer;
      transfer.emplace_back(std::move(request), channel_, options_);
      channel_->add(std::move(transfer));
    }
  }

  /// Reports on the main thread, as there is no other.
  void failLater(const HttpRequest& request, const std::string& reason) {
    platform().mainRunLoop->dispatchAsync(
        [channel = channel_, complete = request.complete,
         error = Error{"curl", CURLE_FAILED_INIT, "The request cannot be run: " + reason}] {
          if (!channel->isStopped()) {
            complete(error, 0);
          }
        });
  }

 private:
  const std::shared_ptr<HttpChannel> channel_ = std::make_shared<HttpChannel>();
  const HttpOptions options_;
  std::mutex mutex_;
  bool isStarted_ = false;
};

HttpQueue::HttpQueue(HttpOptions options)
    : implementation_(std::make_unique<Implementation>(std::move(options))) {
  prepare();
}

HttpQueue::~HttpQueue() = default;

void HttpQueue::prepare() { HttpThreads::shared(); }

const HttpOptions& HttpQueue::options() const { return implementation_->options(); }

void HttpQueue::start(HttpRequest request) {
  try {
    implementation_->start(std::move(request));
  } catch (const std::exception& exception) {
    implementation_->failLater(request, exception.what());
  }
}

}  // namespace qorix
