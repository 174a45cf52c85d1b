#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "definition/AdReader.h"
#include "text/AsciiCase.h"
#include "text/LeadingInteger.h"
#include "tools/adcheck/findings/FieldValues.h"
#include "tools/adcheck/findings/Findings.h"
#include "tools/common/Wording.h"

namespace qorix::tools::adcheck {

namespace {

void findInNumber(XmlElement element, Findings& findings) {
  const auto value = leadingInteger<std::int64_t>(element.text());
  if (const auto odd = oddNumber(element.name(), value)) {
    findings.add(Rule::numberOutOfRange, element, *odd);
  }
  auto digits = trimmed(element.text());
  if (digits.starts_with('-') || digits.starts_with('+')) {
    digits.remove_prefix(1);
  }
  using Limits = std::numeric_limits<std::int64_t>;
  const bool isBound = value == Limits::min() || value == Limits::max();
  if (isBound || digits.empty() || digits.find_first_not_of("0123456789") != digits.npos) {
    findings.add(Rule::numberPartlyRead, element,
                 std::string(element.name()) + " is " + inQuotes(element.text()) +
                     ", which is read as " + std::to_string(value));
  }
}

/// Only "0" switches off.
void findInSwitch(XmlElement enable, Findings& findings) {
  const std::string text = asciiLower(trimmed(enable.text()));
  const bool meansOff = text == "no" || text == "false" || text == "off" ||
                        (!text.empty() && text.find_first_not_of("+-0") == text.npos);
  if (meansOff && enable.text() != "0") {
    findings.add(
        Rule::enableSwitchesOn, enable,
        "enable is " + inQuotes(enable.text()) + ", which switches on: only 0 switches off");
  }
}

void findInPromotedName(XmlElement name, Findings& findings) {
  findMarkup(name, findings);
  const auto text = name.text();
  if (text.empty()) {
    findings.add(Rule::promotedNameEmpty, name, "an empty promo_app_name does not count");
  } else if (trimmed(text) != text) {
    findings.add(Rule::promotedNameBlanks, name,
                 "blanks around a promoted name count: no application is called so");
  }
  for (const std::string_view ending : {".app", ".AppDir", ".desktop"}) {
    if (text.ends_with(ending)) {
      findings.add(Rule::promotedNameEnding, name,
                   "installed applications are known without " + std::string(ending) +
                       ": this one is never found");
    }
  }
}

/// If an element may occur once, the first one counts.
void findRepetitions(XmlElement ad, Findings& findings) {
  const auto find = [&](std::string_view name) {
    bool isFirst = true;
    for (const XmlElement element : ad.childrenNamed(name)) {
      if (!isFirst) {
        findings.add(Rule::elementRepeated, element,
                     "a second " + std::string(name) + " is never read");
      }
      isFirst = false;
    }
  };
  for (const std::string_view name : kFieldNames) {
    find(name);
  }
  find("title");
  find("html_contents");
}

/// The elements that an advertisement is read from.
constexpr auto kElementNames = [] {
  std::array<std::string_view, field::number + 3> names{"title", "html_contents", "promo_app_name"};
  std::ranges::copy(kFieldNames, names.begin() + 3);
  return names;
}();

}  // namespace

void findInRecord(const AdReading& reading, Findings& findings) {
  const XmlElement ad = reading.ad.value();
  findNearlyNamed(ad, kElementNames, findings);
  for (const XmlElement element : reading.fields) {
    findMarkup(element, findings);
  }
  // Those are numbers; a defect ends what was read.
  for (const auto index :
       {field::adid, field::embed, field::width, field::height, field::count, field::delay}) {
    if (index < reading.fields.size()) {
      findInNumber(reading.fields[index], findings);
    }
  }
  if (reading.fields.size() > field::enable) {
    findInSwitch(reading.fields[field::enable], findings);
  }
  if (reading.fields.size() > field::version) {
    if (const auto odd = oddVersion(reading.text(field::version))) {
      findings.add(Rule::versionPartlyCompared, reading.fields[field::version], *odd);
    }
  }
  for (const XmlElement name : ad.childrenNamed("promo_app_name")) {
    findInPromotedName(name, findings);
  }
  for (const auto* name : {"offsetx", "offsety"}) {
    for (const XmlElement offset : ad.childrenNamed(name)) {
      findings.add(Rule::offsetElement, offset,
                   std::string(name) + " is read from the customisation only");
    }
  }
  findRepetitions(ad, findings);
}

}  // namespace qorix::tools::adcheck
