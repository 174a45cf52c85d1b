#include <utility>

#include <qorix/MyPushAdWebServerManager.h>
#include <qorix/platform/Platform.h>

#include "sources/GuardedAttempt.h"
#include "text/Utf8.h"

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
    receivedData_ = std::make_shared<std::string>();
    isHandedOver_ = false;
  }
  if (!fileUrlString_) {
    return;
  }
  const auto url = Url::parse(*fileUrlString_);
  if (url && session_ != nullptr) {
    session_->startDataTask(*url);
  }
}

void MyPushAdWebServerManager::retryDownloadAdFileWithDelay(double delay) {
  if (const auto self = weak_from_this().lock()) {
    platform().mainRunLoop->performAfterDelay(delay, [self] {
      attemptGuarded([&self] { self->downloadAdFileAsync(); },
                     [&self](const Error& error) { self->handleWithError(error); });
    });
  }
}

void MyPushAdWebServerManager::urlSessionDidReceiveData(std::string_view data) {
  const std::lock_guard lock(receivedDataMutex_);
  if (receivedData_ != nullptr) {
    if (isHandedOver_) {
      receivedData_ = std::make_shared<std::string>(*receivedData_);
      isHandedOver_ = false;
    }
    receivedData_->append(data);
  }
}

void MyPushAdWebServerManager::urlSessionDidCompleteWithError(const std::optional<Error>& error) {
  const auto self = weak_from_this().lock();
  if (self == nullptr) {
    return;
  }
  auto text = error ? nullptr : receivedText();
  platform().mainRunLoop->dispatchAsync([self, error, text = std::move(text)] {
    const auto fail = [&self](const Error& failure) { self->handleWithError(failure); };
    if (error) {
      callGuarded([&] { fail(*error); });
    } else if (text != nullptr && !text->empty()) {
      attemptGuarded([&] { self->handleWithFetchedString(*text); }, fail);
    } else {
      attemptGuarded([&] { fail(noTextError()); }, fail);
    }
  });
}

std::shared_ptr<const std::string> MyPushAdWebServerManager::receivedText() {
  const std::lock_guard lock(receivedDataMutex_);
  if (receivedData_ == nullptr || !isUtf8(*receivedData_)) {
    return nullptr;
  }
  isHandedOver_ = true;
  return receivedData_;
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
