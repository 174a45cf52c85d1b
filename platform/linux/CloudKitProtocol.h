#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <qorix/platform/CloudContainer.h>
#include <qorix/platform/Error.h>
#include <qorix/platform/Value.h>

namespace qorix::cloudkit {

// The service's JSON: queries of a public database and the answers to them. Errors have the domain
// "CloudKit", the HTTP status as code, and a description for people.

/// Where an asset's bytes are.
struct AssetLocation {
  /// As the service gives it; absent if it gives none.
  std::optional<std::string> downloadUrl;
  /// How many bytes there are; absent if the service does not say.
  std::optional<std::uint64_t> size;
};

struct RecordValues {
  /// Texts, numbers and booleans; fields of other types are left out.
  std::map<std::string, Value> plain;
  std::map<std::string, AssetLocation> assets;
};

/// One page of a query's results.
struct Page {
  std::vector<RecordValues> records;
  /// Stands for the next page; absent on the last one.
  std::optional<std::string> continuationMarker;
};

/// The error for an answer that cannot be used.
Error error(int status, std::string description);

/// The body of the request for the page that `continuationMarker` stands for, or for the first.
std::string queryBody(const CloudQuery& query,
                      const std::optional<std::string>& continuationMarker);

/// Reads an answer with that HTTP status. A page with a record that the service could not read is
/// an error.
std::variant<Page, Error> readAnswer(int status, std::string_view body);

/// Whether `url` is an address that a service or its assets can have.
bool isHttpOrHttps(const Url& url);

/// The address of an asset with that `downloadUrl`, whose place for a file name is filled in. An
/// error if it cannot be used: the assets of a service on https must be on https as well.
std::variant<Url, Error> assetAddress(std::string downloadUrl, const Url& service);

}  // namespace qorix::cloudkit
