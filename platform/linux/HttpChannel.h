#pragma once

#include <curl/curl.h>

#include <list>
#include <mutex>

namespace qorix {

class HttpTransfer;
using HttpTransfers = std::list<HttpTransfer>;

/// What a queue and its thread share. Any thread.
class HttpChannel {
 public:
  HttpChannel();
  HttpChannel(const HttpChannel&) = delete;
  HttpChannel& operator=(const HttpChannel&) = delete;
  ~HttpChannel();

  /// Takes what is to be started.
  void add(HttpTransfers&& transfers);
  HttpTransfers takeTransfers();

  /// No function of a request is called from now on.
  void stop();
  bool isStopped() const;

  /// The handle whose waiting ends when something happens here; null when there is none any more.
  void setMulti(CURLM* multi);

 private:
  void wake();

  mutable std::mutex mutex_;
  HttpTransfers transfers_;
  bool isStopped_ = false;
  CURLM* multi_ = nullptr;
};

}  // namespace qorix
