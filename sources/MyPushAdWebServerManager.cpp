#include "qorix/MyPushAdWebServerManager.h"

#include <utf8.h>

#include <utility>

#include "platform/Platform.h"

namespace qorix {

namespace {

Error noTextError() { return {"Custom Error: MyWebServer download file failed", 1, ""}; }

}  // namespace

void MyPushAdWebServerManager::openSession() {
  session_ = platform().urlSessions->createEphemeralSession(weak_from_this());
}

void MyPushAdWebServerManager::downloadAdFileAsync() {
  {
    const std::lock_guard lock(receivedDataMutex_);
    receivedData_ = std::string();
  }
  if (!fileUrlString_) {
    return;
  }
  if (const auto url = Url::parse(*fileUrlString_)) {
    session_->startDataTask(*url);
  }
}

void MyPushAdWebServerManager::retryDownloadAdFileWithDelay(double delay) {
  platform().mainRunLoop->performAfterDelay(
      delay, [self = shared_from_this()] { self->downloadAdFileAsync(); });
}

void MyPushAdWebServerManager::urlSessionDidReceiveData(std::string_view data) {
  const std::lock_guard lock(receivedDataMutex_);
  if (receivedData_) {
    receivedData_->append(data);
  }
}

void MyPushAdWebServerManager::urlSessionDidCompleteWithError(const std::optional<Error>& error) {
  std::string text;
  if (!error) {
    const std::lock_guard lock(receivedDataMutex_);
    if (receivedData_ && utf8::is_valid(*receivedData_)) {
      text = *std::exchange(receivedData_, std::string());
    }
  }
  platform().mainRunLoop->dispatchAsync([self = shared_from_this(), error, text = std::move(text)] {
    if (error) {
      self->handleWithError(*error);
    } else if (!text.empty()) {
      self->handleWithFetchedString(text);
    } else {
      self->handleWithError(noTextError());
    }
  });
}

void MyPushAdWebServerManager::handleWithError(const Error& error) {
  if (const auto delegate = delegate_.lock()) {
    delegate->downloadFailedWithError(error);
  }
}

void MyPushAdWebServerManager::handleWithFetchedString(const std::string& text) {
  if (const auto delegate = delegate_.lock()) {
    delegate->downloadSuccessfullyWithString(text);
  }
}

}  // namespace qorix
