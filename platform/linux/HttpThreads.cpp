#include "platform/linux/HttpThreads.h"

#include <curl/curl.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <thread>
#include <utility>

#include "platform/linux/HttpEngine.h"

namespace qorix {

struct HttpThreads::Worker {
  std::shared_ptr<HttpChannel> channel;
  std::thread thread;
  bool isFinished = false;
};

HttpThreads& HttpThreads::shared() {
  static HttpThreads& threads = *new HttpThreads;
  return threads;
}

HttpThreads::HttpThreads() {
  curl_global_init(CURL_GLOBAL_DEFAULT);
  // Registered after the handlers of libcurl and of the libraries below it, so it runs before them.
  std::atexit([] { shared().end(); });
}

bool HttpThreads::start(const std::shared_ptr<HttpChannel>& channel, const HttpOptions& options) {
  const std::lock_guard lock(mutex_);
  joinFinished();
  if (isEnding_) {
    return false;
  }
  const auto worker = std::make_shared<Worker>();
  worker->channel = channel;
  workers_.push_back(worker);
  try {
    auto engine = std::make_unique<HttpEngine>(channel, options);
    worker->thread = std::thread([this, worker, engine = std::move(engine)]() mutable {
      engine->run();
      engine = nullptr;
      const std::lock_guard finishing(mutex_);
      worker->isFinished = true;
      finished_.notify_all();
    });
  } catch (...) {
    workers_.pop_back();
    throw;
  }
  return true;
}

void HttpThreads::joinFinished() {
  std::erase_if(workers_, [](const std::shared_ptr<Worker>& worker) {
    if (worker->isFinished) {
      worker->thread.join();
    }
    return worker->isFinished;
  });
}

void HttpThreads::end() {
  constexpr auto kMost = std::chrono::seconds(2);  // a request's function may take long
  std::unique_lock lock(mutex_);
  isEnding_ = true;
  for (const auto& worker : workers_) {
    worker->channel->stop();
  }
  finished_.wait_for(lock, kMost, [this] {
    return std::ranges::all_of(workers_, [](const std::shared_ptr<Worker>& worker) {
      return worker->isFinished || worker->thread.get_id() == std::this_thread::get_id();
    });
  });
  joinFinished();
}

}  // namespace qorix
