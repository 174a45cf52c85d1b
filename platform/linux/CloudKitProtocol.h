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

/// What the service says, in its JSON, to a query of a public database. Errors have the domain
/// "CloudKit", the HTTP status as code, and a description for people.

/// Where an asset's bytes are.
struct AssetLocation {
  /// As the service gives it; absent when it gives none.
  std::optional<std::string> downloadUrl;
  /// How many bytes there are; absent when the service does not say.
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
  /// Asks for the next page; absent on the last one.
  std::optional<std::string> continuationMarker;
};

/// The error for an answer that cannot be used.
Error error(int status, std::string description);

/// The body of the request for the page behind `continuationMarker`, or for the first.
std::string queryBody(const CloudQuery& query,
                      const std::optional<std::string>& continuationMarker);

/// Reads an answer with that HTTP status. A page with a record that could not be read is an error.
std::variant<Page, Error> readAnswer(int status, std::string_view body);

/// Whether a service or its assets can be there.
bool isHttpOrHttps(const Url& url);

/// The whole address of an asset with that `downloadUrl`: the place for a file name of the reader's
/// choice is filled. An error when it cannot be used; an asset of a service on https is on https.
std::variant<Url, Error> assetAddress(std::string downloadUrl, const Url& service);

}  // namespace qorix::cloudkit
