#include <array>
#include <fstream>

#include <qorix/MyPushAdCloudManager.h>
#include <qorix/platform/Log.h>
#include <qorix/platform/Platform.h>

#include "sources/GuardedAttempt.h"
#include "text/Utf8.h"

namespace qorix {

namespace {

constexpr const char* kRecordType = "macadfiles";
constexpr const char* kFileNameField = "filename";
constexpr const char* kFileContentsField = "filecontents";
constexpr const char* kAdFileName = "commonad";

Error resultsEmptyError() { return {"Custom Error: results empty.", 1, ""}; }
Error handleRecordError() { return {"Custom Error: handle record error.", 2, ""}; }

/// The whole of an error in one line, as the log has it.
std::string descriptionOf(const Error& error) {
  const std::string text = error.description.empty() ? "(null)" : error.description;
  return "Error Domain=" + error.domain + " Code=" + std::to_string(error.code) + " \"" + text +
         "\"";
}

std::optional<std::string> readUtf8File(const Url& url) {
  std::ifstream file(url.filePath().value_or(""), std::ios::binary);
  std::string text;
  std::array<char, 65536> piece{};
  while (file.read(piece.data(), piece.size()) || file.gcount() > 0) {
    text.append(piece.data(), static_cast<std::size_t>(file.gcount()));
  }
  // A file that is not there, and a folder, have failed before their end.
  return file.eof() && isUtf8(text) ? std::optional(std::move(text)) : std::nullopt;
}

/// The text in the record's asset; nothing, after one log line, when there is none.
std::optional<std::string> textOfRecord(const CloudRecord& record) {
  constexpr const char* kMethod = "-[MyPushAdCloudManager handleRecord:]";
  const auto asset = record.objectForKey(kFileContentsField).object<CloudAsset>();
  if (asset == nullptr) {
    logCheck(kMethod, 172, kFatalError);
    return std::nullopt;
  }
  const auto fileUrl = asset->fileUrl();
  if (!fileUrl) {
    logCheck(kMethod, 173, kFatalError);
    return std::nullopt;
  }
  auto text = readUtf8File(*fileUrl);
  if (!text) {
    logCheck(kMethod, 176, kFatalError);
  }
  return text;
}

}  // namespace

void MyPushAdCloudManager::downloadAdFileAsync() { queryAndHandleAdFileWithFileName(kAdFileName); }

void MyPushAdCloudManager::retryDownloadAdFileWithDelay(double delay) {
  if (const auto self = weak_from_this().lock()) {
    platform().mainRunLoop->performAfterDelay(delay, [self] {
      attemptGuarded([&self] { self->downloadAdFileAsync(); },
                     [&self](const Error& error) { self->handleWithError(error); });
    });
  }
}

void MyPushAdCloudManager::prepareDatabaseIfNeeded() {
  constexpr const char* kMethod = "-[MyPushAdCloudManager prepareDatabaseIfNeeded]";
  if (publicDatabase_ != nullptr) {
    return;
  }
  const std::string identifier = cloudContainerIdentifier_.value_or("");
  if (identifier.empty()) {
    logCheck(kMethod, 91, kConfigurationError);
  } else if (const auto container =
                 platform().cloudContainers->containerWithIdentifier(identifier)) {
    publicDatabase_ = container->publicCloudDatabase();
    if (publicDatabase_ == nullptr) {
      logCheck(kMethod, 99, kVerifyFailed);
    }
  } else {
    logCheck(kMethod, 103, kConfigurationError);
  }
  if (publicDatabase_ == nullptr) {
    logCheck(kMethod, 108, kVerifyFailed);
  }
}

void MyPushAdCloudManager::queryAndHandleAdFileWithFileName(const std::string& fileName) {
  prepareDatabaseIfNeeded();
  const auto source = weak_from_this().lock();
  if (publicDatabase_ == nullptr || source == nullptr) {
    return;
  }
  publicDatabase_->performQuery(
      {kRecordType, kFileNameField, fileName},
      [source](std::optional<Records> records, std::optional<Error> error) {
        if (error) {
          logCheck("-[MyPushAdCloudManager queryAndHandleAdFileWithFileName:]", 123,
                   "The Cloud Query Error:" + descriptionOf(*error));
          platform().mainRunLoop->performAndWait([&] { source->handleWithError(*error); });
        } else {
          platform().mainRunLoop->performAndWait([&] {
            attemptGuarded([&] { source->handleFetchedRecords(records); },
                           [&](const Error& failure) { source->handleWithError(failure); });
          });
        }
      });
}

void MyPushAdCloudManager::handleFetchedRecords(const std::optional<Records>& records) {
  if (records && !records->empty() && records->back() != nullptr) {
    handleRecord(records->back());
  } else {
    handleWithError(resultsEmptyError());
  }
}

void MyPushAdCloudManager::handleRecord(const std::shared_ptr<CloudRecord>& record) {
  const auto text = textOfRecord(*record);
  if (!text) {
    handleWithError(handleRecordError());
  } else if (const auto delegate = delegate_.lock()) {
    delegate->downloadSuccessfullyWithString(*text);
  }
}

void MyPushAdCloudManager::handleWithError(const Error& error) {
  if (const auto delegate = delegate_.lock()) {
    delegate->downloadFailedWithError(error);
  }
}

}  // namespace qorix
