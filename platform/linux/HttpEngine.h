#pragma once

#include <curl/curl.h>

#include <memory>

#include "platform/linux/HttpChannel.h"
#include "platform/linux/HttpQueue.h"
#include "platform/linux/HttpTransfer.h"

namespace qorix {

/// What a queue's thread does.
class HttpEngine {
 public:
  /// Throws if there is not enough memory.
  HttpEngine(std::shared_ptr<HttpChannel> channel, HttpOptions options);
  HttpEngine(const HttpEngine&) = delete;
  HttpEngine& operator=(const HttpEngine&) = delete;

  /// Runs the channel's transfers until the channel is stopped.
  void run() noexcept;

 private:
  struct CleanUp {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
  };

  void startTransfers();
  void endFinished();
  int endIdle();
  HttpTransfers take(HttpTransfers::iterator transfer);
  template <class... Arguments>
  void end(HttpTransfers::iterator transfer, bool (HttpTransfer::*report)(Arguments...) noexcept,
           Arguments... arguments);
  void reportAgain();

  const std::shared_ptr<HttpChannel> channel_;
  const HttpOptions options_;
  const std::unique_ptr<CURLM, CleanUp> multi_;
  HttpTransfers transfers_;
  HttpTransfers unreported_;  // they have ended, but there was no memory to say so
  /// How long the queue has waited for its connections altogether. Only this time makes transfers
  /// idle, not the time spent in the functions of requests.
  HttpTransfer::Clock::duration waited_{};
};

}  // namespace qorix
