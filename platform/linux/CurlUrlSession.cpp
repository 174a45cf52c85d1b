#include "platform/linux/CurlUrlSession.h"

#include <utility>

namespace qorix {

namespace {

class CurlUrlSession : public UrlSession {
 public:
  CurlUrlSession(std::weak_ptr<UrlSessionDelegate> delegate, HttpOptions options)
      : delegate_(std::move(delegate)), queue_(std::move(options)) {}

  void startDataTask(const Url& url) override {
    const auto receive = [delegate = delegate_](std::string_view data, int) {
      const auto receiver = delegate.lock();
      if (receiver != nullptr) {
        receiver->urlSessionDidReceiveData(data);
      }
      return receiver != nullptr;
    };
    const auto complete = [delegate = delegate_](const std::optional<Error>& error, int) {
      if (const auto receiver = delegate.lock()) {
        receiver->urlSessionDidCompleteWithError(error);
      }
    };
    queue_.start({.url = url, .receive = receive, .complete = complete});
  }

 private:
  const std::weak_ptr<UrlSessionDelegate> delegate_;
  HttpQueue queue_;
};

}  // namespace

CurlUrlSessionFactory::CurlUrlSessionFactory() : CurlUrlSessionFactory(Options()) {}

CurlUrlSessionFactory::CurlUrlSessionFactory(Options options) : options_(std::move(options)) {
  HttpQueue::prepare();  // not when the first task is started
}

std::shared_ptr<UrlSession> CurlUrlSessionFactory::createEphemeralSession(
    std::weak_ptr<UrlSessionDelegate> delegate) {
  return std::make_shared<CurlUrlSession>(std::move(delegate), options_);
}

}  // namespace qorix
