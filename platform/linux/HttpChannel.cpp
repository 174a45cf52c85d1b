#include "platform/linux/HttpChannel.h"

#include <utility>

#include "platform/linux/HttpTransfer.h"

namespace qorix {

HttpChannel::HttpChannel() = default;
HttpChannel::~HttpChannel() = default;

void HttpChannel::add(HttpTransfers&& transfers) {
  const std::lock_guard lock(mutex_);
  transfers_.splice(transfers_.end(), transfers);
  wake();
}

HttpTransfers HttpChannel::takeTransfers() {
  const std::lock_guard lock(mutex_);
  return std::exchange(transfers_, {});
}

void HttpChannel::stop() {
  const std::lock_guard lock(mutex_);
  isStopped_ = true;
  wake();
}

bool HttpChannel::isStopped() const {
  const std::lock_guard lock(mutex_);
  return isStopped_;
}

void HttpChannel::setMulti(CURLM* multi) {
  const std::lock_guard lock(mutex_);
  multi_ = multi;
}

void HttpChannel::wake() {
  if (multi_ != nullptr) {
    curl_multi_wakeup(multi_);
  }
}

}  // namespace qorix
