#include "tools/common/Refusal.h"

#include <string_view>

#include "tools/common/Wording.h"

namespace qorix::tools {

namespace {

constexpr int kNotWellFormed = 91;
constexpr int kFirstFieldLine = 127;

/// The child that the defect of that number is about.
std::string_view childFor(int line) {
  switch (line) {
    case 94:
      return "file_version";
    case 103:
      return "appid";
    case 104:
    case 122:
      return "adid";
    case 138:
      return "title";
    case 139:
      return "html_contents";
    default:
      return kFieldNames.at(static_cast<std::size_t>(line - kFirstFieldLine));
  }
}

}  // namespace

std::string wordsFor(const AdReading::Defect& defect) {
  const std::string name(defect.element.name());
  switch (defect.line) {
    case 94:
      if (name != "rootcfg" && name != "file_version") {
        return "the root element is " + printable(name) + ", not rootcfg";
      }
      break;
    case 119:
      return "there is no push_ad";
    case 166:
      return "no push_ad has the adid " + inQuotes(defect.element.text()) + " that this line names";
    case 176:
    case 177:
      return name + " has no child element with a text";
    default:
      break;
  }
  const std::string child(childFor(defect.line));
  return name == child ? child + " is empty" : child + " is missing from " + name;
}

HostReading readForHost(const SourceDocument& source, const std::optional<std::string>& app) {
  if (source.document() == nullptr) {
    const auto& error = source.map().error().value();
    return {{}, Refusal{kNotWellFormed, error.offset, "not well-formed XML: " + error.message}};
  }
  HostReading host{readAdForHost(*source.document(), app), std::nullopt};
  if (const auto& defect = host.reading.defect) {
    host.refusal = {defect->line, source.map().offsetOf(defect->element), wordsFor(*defect)};
  }
  return host;
}

}  // namespace qorix::tools
