#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "definition/Json.h"
#include "text/AsciiCase.h"
#include "tools/adcheck/findings/FieldValues.h"
#include "tools/adcheck/findings/Findings.h"
#include "tools/adcheck/scan/JsonMembers.h"
#include "tools/common/Wording.h"

namespace qorix::tools::adcheck {

namespace {

constexpr std::array<std::string_view, 8> kNumberMembers = {"enable",  "embed",   "width", "height",
                                                            "offsetx", "offsety", "count", "delay"};
constexpr std::array<std::string_view, 2> kTextMembers = {"version", "notes"};

/// Looks through one `advance` element.
class CustomisationReader {
 public:
  /// Hosts without a line in the table get the first advertisement.
  CustomisationReader(XmlElement ad, XmlElement advance, bool isFirstAd, const HostTable& table,
                      Findings& findings)
      : adid_(ad.firstChildNamed("adid")),
        advance_(advance),
        json_(advance.text()),
        isFirstAd_(isFirstAd),
        table_(table),
        findings_(findings) {}

  void read();

 private:
  void add(Rule rule, std::size_t offset, std::string words) {
    findings_.addInText(rule, advance_, offset, std::move(words));
  }

  /// Returns the members that count: the last of each name. Reports the others.
  std::vector<JsonMember> membersThatCount(std::size_t object);
  void readHostName(const JsonMember& member);
  void readHost(const JsonMember& member, const Value& value);
  void readNumber(const JsonMember& member, const Value& value);
  void readText(const JsonMember& member, const Value& value);
  void readMember(const JsonMember& member, const Value& value);

  std::optional<XmlElement> adid_;
  XmlElement advance_;
  std::string_view json_;
  bool isFirstAd_;
  const HostTable& table_;
  Findings& findings_;
};

void CustomisationReader::read() {
  JsonDefect defect;
  const auto value = parseJson(json_, &defect);
  if (!value) {
    add(Rule::customisationNotJson, defect.offset,
        "advance is not JSON (" + printable(defect.message) + "): no host is customised");
    return;
  }
  const auto* hosts = value->as<Dictionary>();
  const std::size_t object = firstValueOf(json_);
  if (hosts == nullptr) {
    add(Rule::customisationNotObject, object, "advance is no JSON object: no host is customised");
    return;
  }
  for (const JsonMember& member : membersThatCount(object)) {
    readHost(member, *find(*hosts, member.name));
  }
}

std::vector<JsonMember> CustomisationReader::membersThatCount(std::size_t object) {
  auto members = membersAt(json_, object);
  std::map<std::string, std::size_t> last;
  for (std::size_t index = 0; index < members.size(); ++index) {
    last[members[index].name] = index;
  }
  std::vector<JsonMember> counting;
  for (std::size_t index = 0; index < members.size(); ++index) {
    if (last[members[index].name] == index) {
      counting.push_back(std::move(members[index]));
    } else {
      add(Rule::customisationNameRepeated, members[index].nameOffset,
          "a later member has the same name " + inQuotes(members[index].name) +
              ": this one does not count");
    }
  }
  return counting;
}

/// Whether the host gets this advertisement at all.
void CustomisationReader::readHostName(const JsonMember& member) {
  if (const auto line = table_.adids.find(member.name); line != table_.adids.end()) {
    if (adid_ && line->second != adid_->text()) {
      add(Rule::customisationUnused, member.nameOffset,
          "the table gives " + inQuotes(member.name) + " the adid " + inQuotes(line->second) +
              ": this customisation never counts");
    }
    return;
  }
  const auto near = table_.hosts.find(asciiLower(member.name));
  if (near != table_.hosts.end()) {
    add(Rule::customisationHostCase, member.nameOffset,
        "the table names " + inQuotes(near->second) + ", not " + inQuotes(member.name) +
            ": letter case counts");
  } else if (!isFirstAd_ && !table_.isBroken) {
    add(Rule::customisationUnused, member.nameOffset,
        "no table line names " + inQuotes(member.name) +
            ", which gets the first push_ad: this customisation never counts");
  }
}

void CustomisationReader::readHost(const JsonMember& member, const Value& value) {
  if (const auto odd = oddIdentifier(member.name)) {
    add(Rule::customisationHostQuotes, member.nameOffset, *odd);
  }
  readHostName(member);
  const auto* entry = value.as<Dictionary>();
  if (entry == nullptr) {
    add(Rule::customisationEntryNotObject, member.valueOffset,
        "what stands under " + inQuotes(member.name) + " is no object: it customises nothing");
    return;
  }
  for (const JsonMember& each : membersThatCount(member.valueOffset)) {
    readMember(each, *find(*entry, each.name));
  }
}

void CustomisationReader::readMember(const JsonMember& member, const Value& value) {
  if (std::ranges::find(kNumberMembers, member.name) != kNumberMembers.end()) {
    readNumber(member, value);
  } else if (std::ranges::find(kTextMembers, member.name) != kTextMembers.end()) {
    readText(member, value);
  } else {
    add(Rule::customisationMemberUnknown, member.nameOffset,
        "no member called " + inQuotes(member.name) + " is known: it is ignored");
  }
}

void CustomisationReader::readNumber(const JsonMember& member, const Value& value) {
  const auto number = value.integerValue();
  if (!number) {
    const bool isText = value.as<std::string>() != nullptr;
    add(Rule::customisationMemberType, member.valueOffset,
        member.name + " must be a number" + (isText ? ", without quotes" : "") + ": it is ignored");
    return;
  }
  const auto* fraction = value.as<double>();
  if (fraction != nullptr && std::trunc(*fraction) != *fraction) {
    add(Rule::customisationFraction, member.valueOffset,
        member.name + " loses its fraction: it is read as " + std::to_string(*number));
  }
  if (const auto odd = oddNumber(member.name, *number)) {
    add(Rule::customisationNumberOutOfRange, member.valueOffset, *odd);
  }
}

void CustomisationReader::readText(const JsonMember& member, const Value& value) {
  const auto* text = value.as<std::string>();
  if (text == nullptr || text->empty()) {
    add(Rule::customisationMemberType, member.valueOffset,
        member.name + " must be a " + (text == nullptr ? "string" : "string that is not empty") +
            ": it is ignored");
    return;
  }
  const auto odd = member.name == "version" ? oddVersion(*text) : std::nullopt;
  if (odd) {
    add(Rule::customisationVersionPartlyCompared, member.valueOffset, *odd);
  }
}

}  // namespace

void findInCustomisation(XmlElement ad, XmlElement advance, bool isFirstAd, const HostTable& table,
                         Findings& findings) {
  if (!advance.text().empty()) {  // without a text the document is refused
    CustomisationReader(ad, advance, isFirstAd, table, findings).read();
  }
}

}  // namespace qorix::tools::adcheck
