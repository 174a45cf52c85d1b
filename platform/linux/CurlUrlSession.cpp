#include "platform/linux/CurlUrlSession.h"

#include <utility>

namespace qorix {

namespace {

class CurlUrlSession : public UrlSession {
 public:
  CurlUrlSession(std::weak_ptr<UrlSessionDelegate> delegate, HttpOptions options)
      : delegate_(std::move(delegate)), queue_(std::move(options)) {}

  void startDataTask(const Url& url) override {
    const auto receiver = delegate_.lock();
    if (receiver == nullptr) {
      return;
    }
    const auto receive = [receiver](std::string_view data, int) {
      receiver->urlSessionDidReceiveData(data);
      return true;
    };
    const auto complete = [receiver](const std::optional<Error>& error, int) {
      receiver->urlSessionDidCompleteWithError(error);
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
