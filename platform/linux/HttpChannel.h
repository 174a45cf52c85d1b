#pragma once

#include <curl/curl.h>

#include <list>
#include <mutex>

namespace qorix {

class HttpTransfer;
using HttpTransfers = std::list<HttpTransfer>;

/// What a queue and its thread share. All functions may be called on any thread.
class HttpChannel {
 public:
  HttpChannel();
  HttpChannel(const HttpChannel&) = delete;
  HttpChannel& operator=(const HttpChannel&) = delete;
  ~HttpChannel();

  /// Adds transfers for the queue's thread to start.
  void add(HttpTransfers&& transfers);
  HttpTransfers takeTransfers();

  /// From now on no function of a request is called.
  void stop();
  bool isStopped() const;

  /// The handle to wake when something happens here; null if there is none.
  void setMulti(CURLM* multi);

 private:
  void wake();

  mutable std::mutex mutex_;
  HttpTransfers transfers_;
  bool isStopped_ = false;
  CURLM* multi_ = nullptr;
};

}  // namespace qorix
