#include "platform/linux/CloudKitQuery.h"

#include <cerrno>
#include <cstring>
#include <utility>
#include <variant>

#include "platform/linux/PrivateFile.h"

namespace qorix {

namespace {

// Far more than anybody publishes, and little enough for a host's memory and patience.
constexpr std::size_t kMostPages = 1000;
constexpr std::size_t kMostAssets = 16;

constexpr int kOk = 200;

Error unusable(const std::string& description) { return cloudkit::error(kOk, description); }

Error badStatus(int status) {
  return cloudkit::error(status,
                         "an asset could not be fetched: HTTP status " + std::to_string(status));
}

}  // namespace

struct CloudKitQuery::Asset : CloudAsset {
  explicit Asset(cloudkit::AssetLocation place) : location(std::move(place)) {}
  std::optional<Url> fileUrl() const override {
    return file ? std::optional(file->url()) : std::nullopt;
  }

  const cloudkit::AssetLocation location;
  std::optional<PrivateFile> file;
  std::uint64_t size = 0;  // of what has arrived
};

class CloudKitQuery::Record : public CloudRecord {
 public:
  explicit Record(Dictionary values) : values_(std::move(values)) {}
  Value objectForKey(const std::string& key) const override {
    const Value* value = find(values_, key);
    return value == nullptr ? Value() : *value;
  }

 private:
  const Dictionary values_;
};

CloudKitQuery::CloudKitQuery(std::shared_ptr<HttpQueue> queue, Url address, CloudQuery query,
                             CloudDatabase::Completion completion)
    : queue_(std::move(queue)),
      address_(std::move(address)),
      query_(std::move(query)),
      completion_(std::move(completion)) {}

void CloudKitQuery::run() { requestPage(std::nullopt); }

void CloudKitQuery::start(HttpRequest request, std::function<void(int status)> ended) {
  request.complete = [self = shared_from_this(), ended = std::move(ended)](
                         const std::optional<Error>& error, int status) {
    if (error) {
      self->fail(self->ownError_.value_or(*error));
    } else {
      ended(status);
    }
  };
  queue_->start(std::move(request));
}

// Pages.

void CloudKitQuery::requestPage(const std::optional<std::string>& continuationMarker) {
  const auto body = std::make_shared<std::string>();
  const auto receive = [this, body](std::string_view bytes, int status) {
    pageBytes_ += bytes.size();
    if (pageBytes_ > queue_->options().mostBytes) {
      ownError_ = cloudkit::error(status, "the cloud service's answer is too long");
      return false;
    }
    body->append(bytes);
    return true;
  };
  start({.url = address_,
         .body = cloudkit::queryBody(query_, continuationMarker),
         .headers = {"Content-Type: application/json", "Accept: application/json"},
         .followsRedirects = false,
         .receive = receive},
        [this, body, continuationMarker](int status) {
          handleAnswer(status, *body, continuationMarker);
        });
}

void CloudKitQuery::handleAnswer(int status, const std::string& body,
                                 const std::optional<std::string>& askedWith) {
  auto answer = cloudkit::readAnswer(status, body);
  if (const auto* error = std::get_if<Error>(&answer)) {
    fail(*error);
    return;
  }
  auto& page = std::get<cloudkit::Page>(answer);
  for (auto& record : page.records) {
    addRecord(std::move(record));
  }
  ++pages_;
  if (!page.continuationMarker && assets_.size() > kMostAssets) {
    fail(unusable("the last record has too many assets"));
  } else if (!page.continuationMarker) {
    fetchNextAsset();
  } else if (page.continuationMarker == askedWith || pages_ == kMostPages) {
    fail(unusable("the cloud service's results do not end"));
  } else {
    requestPage(page.continuationMarker);
  }
}

void CloudKitQuery::addRecord(cloudkit::RecordValues values) {
  Dictionary fields = std::move(values.plain);
  assets_.clear();
  for (auto& [name, location] : values.assets) {
    const auto asset = std::make_shared<Asset>(std::move(location));
    fields.insert_or_assign(name, asset);
    if (asset->location.downloadUrl) {
      assets_.push_back(asset);
    }
  }
  records_.push_back(std::make_shared<Record>(std::move(fields)));
}

// Assets.

void CloudKitQuery::fetchNextAsset() {
  asset_ = nullptr;
  if (assets_.empty()) {
    succeed();
    return;
  }
  asset_ = std::move(assets_.back());
  assets_.pop_back();
  const auto address = cloudkit::assetAddress(*asset_->location.downloadUrl, address_);
  if (const auto* error = std::get_if<Error>(&address)) {
    fail(*error);
    return;
  }
  if (asset_->location.size.value_or(0) > queue_->options().mostBytes) {
    fail(unusable("an asset is too large"));
    return;
  }
  asset_->file = PrivateFile::create();
  if (!asset_->file) {
    fail(unusable(std::string("no file can be made for an asset: ") + std::strerror(errno)));
    return;
  }
  start({.url = std::get<Url>(address),
         .receive = [this](std::string_view bytes,
                           int status) { return receiveAsset(bytes, status); }},
        [this](int status) { checkAsset(status); });
}

bool CloudKitQuery::receiveAsset(std::string_view bytes, int status) {
  asset_->size += bytes.size();
  if (status != kOk) {
    ownError_ = badStatus(status);
  } else if (asset_->size > asset_->location.size.value_or(asset_->size)) {
    ownError_ = unusable("an asset is longer than its record says");
  } else if (!asset_->file->append(bytes)) {
    ownError_ = unusable(std::string("an asset cannot be stored: ") + std::strerror(errno));
  }
  return !ownError_;
}

void CloudKitQuery::checkAsset(int status) {
  if (status != kOk) {
    fail(badStatus(status));
  } else if (asset_->size < asset_->location.size.value_or(0)) {
    fail(unusable("an asset is shorter than its record says"));
  } else {
    fetchNextAsset();
  }
}

// The end. Nothing is kept, so that an asset's file is gone with its record.

void CloudKitQuery::succeed() { report(std::exchange(records_, {}), std::nullopt); }

void CloudKitQuery::fail(const Error& error) {
  asset_ = nullptr;
  assets_.clear();
  records_.clear();
  report(std::nullopt, error);
}

// If the completion throws, the current request fails, and so does the query.
void CloudKitQuery::report(std::optional<Records> records, const std::optional<Error>& error) {
  completion_(std::move(records), error);
  completion_ = nullptr;
}

}  // namespace qorix
