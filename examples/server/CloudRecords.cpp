#include "CloudRecords.h"

#include <charconv>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

namespace {

using nlohmann::json;

constexpr const char* kMarkerPrefix = "from-";

/// What a query asks for, once it is known to be a sound one.
struct Query {
  std::string recordType;
  std::string fieldName;
  std::string fieldValue;
  std::size_t first = 0;  // of the matching records
};

struct Refusal {
  int status;
  std::string code;
  std::string reason;
};

CloudRecords::Answer errorAnswer(const Refusal& refusal) {
  const json body = {{"uuid", "7f3a2c1e-0000-4000-8000-000000000000"},
                     {"serverErrorCode", refusal.code},
                     {"reason", refusal.reason}};
  return {refusal.status, body.dump()};
}

[[noreturn]] void refuse(const std::string& reason) { throw Refusal{400, "BAD_REQUEST", reason}; }

/// "the body lacks query"
[[noreturn]] void refuseMember(std::string what, const char* how, const std::string& name) {
  refuse(what.append(how).append(name));
}

/// The members of an object that has those of `required` and at most those of `optional` besides.
void checkMembers(const json& object, const std::string& what,
                  const std::set<std::string>& required,
                  const std::set<std::string>& optional = {}) {
  if (!object.is_object()) {
    refuse(what + " must be an object");
  }
  for (const std::string& name : required) {
    if (!object.contains(name)) {
      refuseMember(what, " lacks ", name);
    }
  }
  for (const auto& [name, value] : object.items()) {
    if (!required.contains(name) && !optional.contains(name)) {
      refuseMember(what, " has an unknown member ", name);
    }
  }
}

std::string textMember(const json& object, const std::string& name) {
  if (!object.at(name).is_string()) {
    refuse(name + " must be a string");
  }
  return object.at(name).get<std::string>();
}

std::size_t firstOfMarker(const std::string& marker) {
  const std::string prefix = kMarkerPrefix;
  if (!marker.starts_with(prefix) ||
      marker.find_first_not_of("0123456789", prefix.size()) != marker.npos ||
      marker.size() == prefix.size() || marker.size() > prefix.size() + 9) {
    refuse("unknown continuationMarker");
  }
  return std::stoul(marker.substr(prefix.size()));
}

Query readQuery(const std::string& body) {
  const json request = json::parse(body, nullptr, false);
  if (request.is_discarded()) {
    refuse("the body is no JSON");
  }
  checkMembers(request, "the body", {"query"}, {"zoneID", "continuationMarker"});
  if (request.contains("zoneID")) {
    checkMembers(request["zoneID"], "zoneID", {"zoneName"});
    if (textMember(request["zoneID"], "zoneName") != "_defaultZone") {
      throw Refusal{404, "ZONE_NOT_FOUND", "there is no such zone"};
    }
  }
  const json& query = request["query"];
  checkMembers(query, "query", {"recordType", "filterBy"});
  if (!query["filterBy"].is_array() || query["filterBy"].size() != 1) {
    refuse("filterBy must hold one filter");
  }
  const json& filter = query["filterBy"][0];
  checkMembers(filter, "a filter", {"comparator", "fieldName", "fieldValue"});
  checkMembers(filter["fieldValue"], "fieldValue", {"value", "type"});
  if (textMember(filter, "comparator") != "EQUALS" ||
      textMember(filter["fieldValue"], "type") != "STRING") {
    refuse("only texts can be compared, for equality");
  }
  Query result{textMember(query, "recordType"), textMember(filter, "fieldName"),
               textMember(filter["fieldValue"], "value")};
  if (request.contains("continuationMarker")) {
    result.first = firstOfMarker(textMember(request, "continuationMarker"));
  }
  return result;
}

std::string decoded(const std::string& text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned char byte = 0;
    const char* digits = text.data() + i + 1;
    if (text[i] == '%' && i + 2 < text.size() &&
        std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
      result += static_cast<char>(byte);
      i += 2;
    } else {
      result += text[i];
    }
  }
  return result;
}

json recordObject(const CloudRecords::Record& record, std::size_t number) {
  json fields = json::object();
  for (const auto& [name, text] : record.texts) {
    fields[name] = {{"value", text}, {"type", "STRING"}};
  }
  for (const auto& [name, asset] : record.assets) {
    fields[name] = {{"value",
                     {{"fileChecksum", "AYB3Z1wAFi0rT3Vd0V4Q1mJkq1dY"},
                      {"size", asset.size},
                      {"downloadURL", asset.downloadUrl}}},
                    {"type", "ASSETID"}};
  }
  return {{"recordName", "record-" + std::to_string(number)},
          {"recordType", record.type},
          {"fields", fields},
          {"recordChangeTag", "k1"},
          {"deleted", false}};
}

}  // namespace

CloudRecords::CloudRecords(std::string container, std::string environment, std::string token)
    : container_(std::move(container)),
      environment_(std::move(environment)),
      token_(std::move(token)) {}

std::string CloudRecords::queryPath() const {
  return "/database/1/" + container_ + "/" + environment_ + "/public/records/query";
}

CloudRecords::Answer CloudRecords::answer(const Request& request) const {
  const std::size_t mark = request.target.find('?');
  const std::string query = mark == std::string::npos ? "" : request.target.substr(mark + 1);
  if (request.target.substr(0, mark) != queryPath()) {
    return errorAnswer({404, "NOT_FOUND", "there is no such container, environment or operation"});
  }
  if (request.method != "POST") {
    return errorAnswer({405, "BAD_REQUEST", "queries are posted"});
  }
  const std::string tokenName = "ckAPIToken=";
  if (!query.starts_with(tokenName)) {
    return errorAnswer({401, "AUTHENTICATION_FAILED", "no auth method found"});
  }
  if (decoded(query.substr(tokenName.size())) != token_) {
    return errorAnswer({401, "AUTHENTICATION_FAILED", "unknown API token"});
  }
  if (request.contentType != "application/json") {
    return errorAnswer({400, "BAD_REQUEST", "the body must be application/json"});
  }
  try {
    const Query asked = readQuery(request.body);
    std::vector<json> matches;
    for (std::size_t i = 0; i < records_.size(); ++i) {
      const auto field = records_[i].texts.find(asked.fieldName);
      if (records_[i].type == asked.recordType && field != records_[i].texts.end() &&
          field->second == asked.fieldValue) {
        matches.push_back(recordObject(records_[i], i));
      }
    }
    json page = {{"records", json::array()}};
    for (std::size_t i = asked.first; i < matches.size() && i < asked.first + pageSize_; ++i) {
      page["records"].push_back(matches[i]);
    }
    if (asked.first + pageSize_ < matches.size()) {
      page["continuationMarker"] = kMarkerPrefix + std::to_string(asked.first + pageSize_);
    }
    return {200, page.dump()};
  } catch (const Refusal& refusal) {
    return errorAnswer(refusal);
  }
}
