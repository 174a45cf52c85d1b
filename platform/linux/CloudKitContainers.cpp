#include "platform/linux/CloudKitContainers.h"

#include <curl/curl.h>

#include <memory>
#include <optional>
#include <utility>

#include <qorix/platform/Log.h>

#include "platform/linux/CloudKitQuery.h"

namespace qorix {

namespace {

std::string escaped(const std::string& text) {
  const std::unique_ptr<char, decltype(&curl_free)> result(
      curl_easy_escape(nullptr, text.c_str(), static_cast<int>(text.size())), curl_free);
  return result == nullptr ? "" : result.get();
}

bool isServiceAddress(const std::string& address) {
  const auto url = Url::parse(address);
  return url && cloudkit::isHttpOrHttps(*url) && address.find_first_of("?#") == address.npos;
}

/// Where the queries of a container's public database go.
std::optional<Url> queryAddress(const CloudKitContainerFactory::Options& options,
                                const std::string& container) {
  std::string address = options.serviceAddress;
  if (address.ends_with('/')) {
    address.pop_back();
  }
  address += "/database/1/" + escaped(container) + "/" + options.environment;
  return Url::parse(address + "/public/records/query?ckAPIToken=" + escaped(options.apiToken));
}

class Database : public CloudDatabase {
 public:
  Database(Url address, HttpOptions options)
      : address_(std::move(address)), queue_(std::make_shared<HttpQueue>(std::move(options))) {}

  void performQuery(const CloudQuery& query, Completion completion) override {
    std::make_shared<CloudKitQuery>(queue_, address_, query, std::move(completion))->run();
  }

 private:
  const Url address_;
  const std::shared_ptr<HttpQueue> queue_;
};

class Container : public CloudContainer {
 public:
  explicit Container(std::shared_ptr<CloudDatabase> database) : database_(std::move(database)) {}
  std::shared_ptr<CloudDatabase> publicCloudDatabase() override { return database_; }

 private:
  const std::shared_ptr<CloudDatabase> database_;
};

}  // namespace

CloudKitContainerFactory::CloudKitContainerFactory(Options options)
    : options_(std::move(options)) {}

std::shared_ptr<CloudContainer> CloudKitContainerFactory::containerWithIdentifier(
    const std::string& identifier) {
  if (options_.apiToken.empty()) {
    return nullptr;
  }
  if (!isServiceAddress(options_.serviceAddress)) {
    logLine("The cloud service's address cannot be used: " + options_.serviceAddress);
    return nullptr;
  }
  if (options_.environment != "development" && options_.environment != "production") {
    logLine("The cloud environment is neither development nor production: " + options_.environment);
    return nullptr;
  }
  const auto address = queryAddress(options_, identifier);
  return address == std::nullopt
             ? nullptr
             : std::make_shared<Container>(std::make_shared<Database>(*address, options_.http));
}

}  // namespace qorix
