#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <qorix/platform/UrlSession.h>

namespace qorix {

/// A session without a network. The test delivers the data of each task, on its own thread.
class FakeUrlSession : public UrlSession {
 public:
  explicit FakeUrlSession(std::weak_ptr<UrlSessionDelegate> delegate)
      : delegate_(std::move(delegate)) {}

  void startDataTask(const Url& url) override {
    startedUrls.push_back(url.absoluteString());
    running_.push_back(delegate_.lock());
  }

  /// The running task receives a piece of the body.
  void deliver(std::string_view data) {
    if (const auto delegate = delegate_.lock()) {
      delegate->urlSessionDidReceiveData(data);
    }
  }

  /// Ends the running task; if there are several, the one that was started first.
  void complete(const std::optional<Error>& error = std::nullopt) {
    const auto delegate = delegate_.lock();
    if (!running_.empty()) {
      running_.erase(running_.begin());
    }
    if (delegate != nullptr) {
      delegate->urlSessionDidCompleteWithError(error);
    }
  }

  std::vector<std::string> startedUrls;

 private:
  std::weak_ptr<UrlSessionDelegate> delegate_;
  std::vector<std::shared_ptr<UrlSessionDelegate>> running_;  // a task keeps its delegate alive
};

class FakeUrlSessionFactory : public UrlSessionFactory {
 public:
  std::shared_ptr<UrlSession> createEphemeralSession(
      std::weak_ptr<UrlSessionDelegate> delegate) override {
    sessions.push_back(std::make_shared<FakeUrlSession>(std::move(delegate)));
    return sessions.back();
  }

  std::vector<std::shared_ptr<FakeUrlSession>> sessions;
};

}  // namespace qorix
