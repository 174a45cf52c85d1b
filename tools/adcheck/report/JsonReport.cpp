#include "tools/adcheck/report/JsonReport.h"

#include <cstdint>
#include <optional>

namespace qorix::tools::adcheck {

namespace {

Json toJson(const std::optional<std::string>& text) { return text ? Json(*text) : Json(); }

Json toJson(const std::optional<LocalizedTexts>& texts) {
  if (!texts) {
    return {};
  }
  Json::object_t object;
  for (const auto& [language, text] : *texts) {
    object.emplace_back(language, text);  // languages are distinct: no need to search
  }
  return object;
}

Json toJson(const Value& value) {
  if (const auto* flag = value.as<bool>()) {
    return *flag;
  }
  if (const auto* integer = value.as<std::int64_t>()) {
    return *integer;
  }
  if (const auto* number = value.as<double>()) {
    return *number;
  }
  if (const auto* text = value.as<std::string>()) {
    return *text;
  }
  if (const auto* elements = value.as<Array>()) {
    Json array = Json::array();
    for (const Value& element : *elements) {
      array.push_back(toJson(element));
    }
    return array;
  }
  if (const auto* members = value.as<Dictionary>()) {
    Json::object_t object;
    for (const auto& [name, member] : *members) {
      object.emplace_back(name, toJson(member));
    }
    return object;
  }
  return {};
}

Json toJson(const Decision& decision) {
  return {{"due", decision.isDue},
          {"reason", nameOf(decision.reason)},
          {"storedVersion", toJson(decision.storedVersion)},
          {"storedCount", decision.storedCount}};
}

}  // namespace

Json toJson(const HostRun& run) {
  if (run.record == nullptr) {
    return {};
  }
  const MyPushAdInfo& info = *run.record;
  return {{"adId", info.adId()},
          {"enable", info.enable()},
          {"version", toJson(info.version())},
          {"embed", info.embed()},
          {"width", info.width()},
          {"height", info.height()},
          {"offsetx", info.offsetx()},
          {"offsety", info.offsety()},
          {"count", info.count()},
          {"delay", info.delay()},
          {"notes", toJson(info.notes())},
          {"advance", toJson(info.advance())},
          {"advanceDict", info.advanceDict() ? toJson(Value(*info.advanceDict())) : Json()},
          {"titleDict", toJson(info.titleDict())},
          {"htmlContentsDict", toJson(info.htmlContentsDict())},
          {"localizedTitle", toJson(run.title)},
          {"localizedHtmlString", toJson(run.page)},
          {"decision", toJson(run.decision)}};
}

std::string textOf(const Json& json) {
  constexpr int kIndent = 2;
  return json.dump(kIndent, ' ', false, Json::error_handler_t::replace) + '\n';
}

}  // namespace qorix::tools::adcheck
