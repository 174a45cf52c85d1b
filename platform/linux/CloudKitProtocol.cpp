#include "platform/linux/CloudKitProtocol.h"

#include <utf8.h>

#include <nlohmann/json.hpp>
#include <utility>

#include "text/AsciiCase.h"
#include "text/PlainNumbers.h"

namespace qorix::cloudkit {

namespace {

using nlohmann::json;

constexpr const char* kAssetType = "ASSETID";
constexpr int kOk = 200;
constexpr int kMostDepth = 32;
constexpr std::size_t kMostValues = 1'000'000;  // names and brackets count as well

/// The member of that name; null if there is none or `parent` is no object. Nothing is copied: a
/// copy of a hostile answer could be too deep for the stack.
const json* member(const json& parent, const char* name) {
  const auto found = parent.find(name);
  return found == parent.end() ? nullptr : &*found;
}

const std::string* text(const json* value) {
  return value == nullptr ? nullptr : value->get_ptr<const std::string*>();
}

const std::string* textMember(const json& parent, const char* name) {
  return text(member(parent, name));
}

Value plainValue(const json& value) {
  if (const auto* string = text(&value)) {
    return *string;
  }
  if (value.is_boolean()) {
    return value.get<bool>();
  }
  if (value.is_number_float() || (value.is_number_unsigned() && value.get<std::int64_t>() < 0)) {
    return value.get<double>();
  }
  return value.is_number() ? Value(value.get<std::int64_t>()) : Value();
}

bool hasScheme(const Url& url, std::string_view scheme) {
  return equalIgnoringCase(url.scheme(), scheme);
}

/// As much of a text as suits a log line.
std::string_view excerpt(std::string_view text) {
  const auto piece = text.substr(0, 500);
  return {piece.begin(), utf8::find_invalid(piece.begin(), piece.end())};
}

AssetLocation assetLocation(const json& value) {
  AssetLocation asset;
  if (const auto* url = textMember(value, "downloadURL")) {
    asset.downloadUrl = *url;
  }
  const json* size = member(value, "size");
  if (size != nullptr && size->is_number_unsigned()) {
    asset.size = size->get<std::uint64_t>();
  }
  return asset;
}

RecordValues recordValues(const json& record) {
  RecordValues values;
  const json* fields = member(record, "fields");
  if (fields == nullptr || !fields->is_object()) {
    return values;
  }
  for (const auto& [name, field] : fields->items()) {
    const json* value = member(field, "value");
    const auto* type = textMember(field, "type");
    if (value == nullptr) {
      continue;
    }
    if (type != nullptr && *type == kAssetType) {
      values.assets.emplace(name, assetLocation(*value));
    } else if (auto plain = plainValue(*value); !plain.isNull()) {
      values.plain.emplace(name, std::move(plain));
    }
  }
  return values;
}

/// The error that `answer`, the whole or one record, holds in place of what was asked for.
std::optional<Error> serverError(const json& answer, int status) {
  const auto* code = textMember(answer, "serverErrorCode");
  if (code == nullptr) {
    return std::nullopt;
  }
  std::string description(excerpt(*code));
  if (const auto* name = textMember(answer, "recordName")) {
    description += " for record ";
    description += excerpt(*name);
  }
  if (const auto* reason = textMember(answer, "reason")) {
    description += ": ";
    description += excerpt(*reason);
  }
  const json* wait = member(answer, "retryAfter");
  if (const auto seconds = wait == nullptr ? std::nullopt : plainValue(*wait).integerValue()) {
    description += " (retry after " + std::to_string(*seconds) + " s)";
  }
  return error(status, description);
}

std::variant<Page, Error> readPage(const json& answer) {
  const json* records = member(answer, "records");
  if (records == nullptr || !records->is_array()) {
    return error(kOk, "the cloud service's answer holds no records");
  }
  Page page;
  for (const json& record : *records) {
    if (auto fault = serverError(record, kOk)) {
      return *std::move(fault);
    }
    page.records.push_back(recordValues(record));
  }
  const auto* marker = textMember(answer, "continuationMarker");
  if (marker != nullptr && !marker->empty()) {
    page.continuationMarker = *marker;
  }
  return page;
}

}  // namespace

Error error(int status, std::string description) {
  return {"CloudKit", status, std::move(description)};
}

std::string queryBody(const CloudQuery& query,
                      const std::optional<std::string>& continuationMarker) {
  json body = {
      {"zoneID", {{"zoneName", "_defaultZone"}}},
      {"query",
       {{"recordType", query.recordType},
        {"filterBy",
         json::array({{{"comparator", "EQUALS"},
                       {"fieldName", query.fieldName},
                       {"fieldValue", {{"value", query.fieldValue}, {"type", "STRING"}}}}})}}},
  };
  if (continuationMarker) {
    body["continuationMarker"] = *continuationMarker;
  }
  return body.dump(-1, ' ', false, json::error_handler_t::replace);
}

std::variant<Page, Error> readAnswer(int status, std::string_view body) {
  // What lies deeper, or comes after too many values, is left out and costs no memory.
  std::size_t values = 0;
  const auto isWanted = [&values](int depth, json::parse_event_t, const json&) {
    return depth < kMostDepth && ++values <= kMostValues;
  };
  const PlainNumbers plainNumbers;  // the reader leaves fractions to the C library
  const json answer = json::parse(body, isWanted, /*allow_exceptions=*/false);
  if (values > kMostValues) {
    return error(status, "the cloud service's answer is too long");
  }
  if (auto fault = serverError(answer, status)) {
    return *std::move(fault);
  }
  if (status != kOk) {
    return error(status, "the cloud service answered with HTTP status " + std::to_string(status));
  }
  if (answer.is_discarded()) {
    return error(status, "the cloud service's answer is no JSON");
  }
  return readPage(answer);
}

bool isHttpOrHttps(const Url& url) {
  return (hasScheme(url, "https") || hasScheme(url, "http")) && !url.host().empty();
}

std::variant<Url, Error> assetAddress(std::string downloadUrl, const Url& service) {
  constexpr std::string_view kFileNamePlace = "${f}";
  constexpr std::string_view kFileName = "asset";
  for (auto place = downloadUrl.find(kFileNamePlace); place != downloadUrl.npos;
       place = downloadUrl.find(kFileNamePlace, place + kFileName.size())) {
    downloadUrl.replace(place, kFileNamePlace.size(), kFileName);
  }
  const auto url = Url::parse(downloadUrl);
  if (url && isHttpOrHttps(*url) && (hasScheme(*url, "https") || !hasScheme(service, "https"))) {
    return *url;
  }
  return error(kOk, "an asset's address cannot be used: " + std::string(excerpt(downloadUrl)));
}

}  // namespace qorix::cloudkit
