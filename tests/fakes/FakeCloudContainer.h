#pragma once

#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <qorix/platform/CloudContainer.h>

namespace qorix {

struct FakeCloudAsset : CloudAsset {
  explicit FakeCloudAsset(std::optional<Url> file) : url(std::move(file)) {}
  std::optional<Url> fileUrl() const override { return url; }
  std::optional<Url> url;
};

struct FakeCloudRecord : CloudRecord {
  explicit FakeCloudRecord(Dictionary fields) : values(std::move(fields)) {}
  Value objectForKey(const std::string& key) const override {
    const Value* value = find(values, key);
    return value == nullptr ? Value() : *value;
  }
  Dictionary values;
};

/// Keeps queries until the test answers the last one.
struct FakeCloudDatabase : CloudDatabase {
  void performQuery(const CloudQuery& query, Completion completion) override {
    queries.push_back(query);
    completions.push_back(std::move(completion));
  }

  /// Answers on a new thread, as a real database does. Join it.
  std::thread answer(std::optional<std::vector<std::shared_ptr<CloudRecord>>> records,
                     std::optional<Error> error) {
    return std::thread([completion = std::move(completions.back()), records = std::move(records),
                        error = std::move(error)] { completion(records, error); });
  }

  std::vector<CloudQuery> queries;
  std::vector<Completion> completions;
};

struct FakeCloudContainer : CloudContainer {
  std::shared_ptr<CloudDatabase> publicCloudDatabase() override { return database; }
  std::shared_ptr<CloudDatabase> database;
};

struct FakeCloudContainerFactory : CloudContainerFactory {
  std::shared_ptr<CloudContainer> containerWithIdentifier(const std::string& identifier) override {
    asked.push_back(identifier);
    return container;
  }
  std::vector<std::string> asked;
  std::shared_ptr<FakeCloudContainer> container;
};

}  // namespace qorix
