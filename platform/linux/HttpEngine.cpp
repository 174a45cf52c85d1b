#include "platform/linux/HttpEngine.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iterator>
#include <new>
#include <utility>

namespace qorix {

namespace {

constexpr std::chrono::seconds kReportInterval(1);

}  // namespace

HttpEngine::HttpEngine(std::shared_ptr<HttpChannel> channel, HttpOptions options)
    : channel_(std::move(channel)), options_(std::move(options)), multi_(curl_multi_init()) {
  if (multi_ == nullptr) {
    throw std::bad_alloc();
  }
}

void HttpEngine::run() noexcept {
  using Clock = HttpTransfer::Clock;
  channel_->setMulti(multi_.get());
  while (!channel_->isStopped()) {
    startTransfers();
    int running = 0;
    curl_multi_perform(multi_.get(), &running);
    endFinished();
    reportAgain();
    const int milliseconds = endIdle();
    const auto before = Clock::now();
    curl_multi_poll(multi_.get(), nullptr, 0, milliseconds, nullptr);
    waited_ += Clock::now() - before;
  }
  channel_->setMulti(nullptr);
  channel_->takeTransfers();
  while (!transfers_.empty()) {
    take(transfers_.begin());
  }
}

void HttpEngine::startTransfers() {
  HttpTransfers fresh = channel_->takeTransfers();
  while (!fresh.empty()) {
    transfers_.splice(transfers_.end(), fresh, fresh.begin());
    const auto transfer = std::prev(transfers_.end());
    CURLcode code = transfer->prepare(waited_);
    if (code == CURLE_OK && curl_multi_add_handle(multi_.get(), transfer->easy()) != CURLM_OK) {
      code = CURLE_OUT_OF_MEMORY;
    }
    if (code != CURLE_OK) {
      end(transfer, &HttpTransfer::complete, code);
    }
  }
}

void HttpEngine::endFinished() {
  int left = 0;
  while (const CURLMsg* message = curl_multi_info_read(multi_.get(), &left)) {
    const CURLcode code = message->data.result;
    const auto transfer = std::ranges::find(transfers_, message->easy_handle, &HttpTransfer::easy);
    end(transfer, &HttpTransfer::complete, code);
  }
}

/// Ends transfers that have been idle for too long or have become too large. Returns how many
/// milliseconds the others may wait.
int HttpEngine::endIdle() {
  using Seconds = std::chrono::duration<double>;
  const Seconds limit(options_.idleLimitSeconds);
  Seconds wait = unreported_.empty() ? std::chrono::hours(1) : kReportInterval;
  for (auto next = transfers_.begin(); next != transfers_.end();) {
    const auto transfer = next++;
    transfer->look(waited_);
    const Seconds left = limit - (waited_ - transfer->lastArrival());
    if (transfer->isTooLarge()) {
      end(transfer, &HttpTransfer::completeTooLarge);
    } else if (left.count() <= 0) {
      end(transfer, &HttpTransfer::completeIdle);
    } else {
      wait = std::min(wait, left);
    }
  }
  return static_cast<int>(std::ceil(wait.count() * 1000));
}

template <class... Arguments>
void HttpEngine::end(HttpTransfers::iterator transfer,
                     bool (HttpTransfer::*report)(Arguments...) noexcept, Arguments... arguments) {
  HttpTransfers ended = take(transfer);
  if (!(ended.front().*report)(arguments...)) {
    unreported_.splice(unreported_.end(), ended);
  }
}

void HttpEngine::reportAgain() {
  for (auto next = unreported_.begin(); next != unreported_.end();) {
    const auto transfer = next++;
    if (transfer->completeAgain()) {
      unreported_.erase(transfer);
    }
  }
}

HttpTransfers HttpEngine::take(HttpTransfers::iterator transfer) {
  HttpTransfers taken;
  taken.splice(taken.end(), transfers_, transfer);
  curl_multi_remove_handle(multi_.get(), taken.front().easy());
  return taken;
}

}  // namespace qorix
