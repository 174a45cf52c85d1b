#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/linux/HttpChannel.h"
#include "platform/linux/HttpQueue.h"

namespace qorix {

/// The threads of all queues of the process. They are ended before the process exits.
class HttpThreads {
 public:
  /// The first call sets libcurl up. Never destroyed: queues may live until the process ends.
  static HttpThreads& shared();

  /// Starts a thread that runs the channel's transfers until the channel is stopped. Throws if none
  /// can be made; returns false if the process is ending.
  bool start(const std::shared_ptr<HttpChannel>& channel, const HttpOptions& options);

 private:
  struct Worker;

  HttpThreads();
  void joinFinished();
  void end();

  std::mutex mutex_;
  std::condition_variable finished_;
  std::vector<std::shared_ptr<Worker>> workers_;
  bool isEnding_ = false;
};

}  // namespace qorix
