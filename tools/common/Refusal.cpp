#include "tools/common/Refusal.h"

#include <string_view>

#include "tools/common/Wording.h"

namespace qorix::tools {

namespace {

/// The child that the defect of that number is about.
std::string_view childFor(refusal::Number number) {
  switch (number) {
    case refusal::noFileVersion:
      return tag::kFileVersion;
    case refusal::tableLineWithoutAppId:
      return tag::kAppId;
    case refusal::tableLineWithoutAdId:
    case refusal::adWithoutId:
      return tag::kAdId;
    case refusal::noTitle:
      return tag::kTitle;
    case refusal::noPages:
      return tag::kPages;
    default:
      return kFieldNames.at(static_cast<std::size_t>(number - refusal::firstField));
  }
}

}  // namespace

std::string wordsFor(const AdReading::Defect& defect) {
  const std::string name(defect.element.name());
  switch (defect.line) {
    case refusal::noFileVersion:
      if (name != tag::kRoot && name != tag::kFileVersion) {
        return "the root element is " + printable(name) + ", not rootcfg";
      }
      break;
    case refusal::noAd:
      return "there is no push_ad";
    case refusal::unknownAdId:
      return "no push_ad has the adid " + inQuotes(defect.element.text()) + " that this line names";
    case refusal::noTitleText:
    case refusal::noPageText:
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
    return {{},
            Refusal{refusal::notWellFormed, error.offset, "not well-formed XML: " + error.message}};
  }
  HostReading host{readAdForHost(*source.document(), app), std::nullopt};
  if (const auto& defect = host.reading.defect) {
    host.refusal = {defect->line, source.map().offsetOf(defect->element), wordsFor(*defect)};
  }
  return host;
}

}  // namespace qorix::tools
