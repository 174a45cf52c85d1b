#include <array>
#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "text/AsciiCase.h"
#include "tools/adcheck/findings/FieldValues.h"
#include "tools/adcheck/findings/Findings.h"
#include "tools/common/Wording.h"

namespace qorix::tools::adcheck {

namespace {

std::string_view childText(XmlElement element, std::string_view name) {
  const auto child = element.firstChildNamed(name);
  return child ? child->text() : std::string_view();
}

/// By their adid: the first advertisements that bear it.
using Ads = std::map<std::string_view, XmlElement, std::less<>>;

Ads advertisementsIn(XmlElement root, Findings& findings) {
  Ads ads;
  for (const XmlElement ad : root.childrenNamed("push_ad")) {
    const auto adid = ad.firstChildNamed("adid");
    if (!adid || adid->text().empty()) {
      findings.add(Rule::adWithoutAdid, adid.value_or(ad),
                   "this push_ad has no adid: hosts that get an advertisement after it refuse the "
                   "document");
    } else if (!ads.try_emplace(adid->text(), ad).second) {
      findings.add(Rule::adAdidRepeated, *adid,
                   "an earlier push_ad has the same adid: no host gets this one");
    }
  }
  return ads;
}

/// Looks through the lines in their order.
class TableReader {
 public:
  TableReader(XmlElement root, Findings& findings)
      : root_(root), findings_(findings), ads_(advertisementsIn(root, findings)) {}

  HostTable read();

 private:
  void readLine(XmlElement line);
  void readBrokenLine(XmlElement line, bool hasAppid);
  void readUnreachedAds();

  XmlElement root_;
  Findings& findings_;
  const Ads ads_;
  HostTable table_;
};

void TableReader::readLine(XmlElement line) {
  const auto appid = line.firstChildNamed("appid").value();
  const auto adid = line.firstChildNamed("adid").value();
  findMarkup(appid, findings_);
  findMarkup(adid, findings_);
  if (trimmed(appid.text()) != appid.text()) {
    findings_.add(Rule::tableAppidBlanks, appid,
                  "blanks around the appid count: no host is called so");
  }
  if (const auto odd = oddIdentifier(appid.text())) {
    findings_.add(Rule::tableAppidQuotes, appid, *odd);
  }
  table_.hosts.try_emplace(asciiLower(appid.text()), appid.text());
  if (!table_.adids.try_emplace(appid.text(), adid.text()).second) {
    findings_.add(
        Rule::tableHostRepeated, line,
        "an earlier table line names " + inQuotes(appid.text()) + ": this one never counts");
  } else if (!ads_.contains(adid.text())) {
    findings_.add(Rule::tableAdidUnknown, adid,
                  "no push_ad has the adid " + inQuotes(adid.text()) + ": " +
                      inQuotes(appid.text()) + " refuses the document");
  }
}

/// After the first one no later line counts, so only the first is reported.
void TableReader::readBrokenLine(XmlElement line, bool hasAppid) {
  if (std::exchange(table_.isBroken, true)) {
    return;
  }
  constexpr std::size_t kMost = 5;
  std::string list;
  std::size_t number = 0;
  for (const auto& [host, adid] : table_.adids) {
    if (ads_.contains(adid) && ++number <= kMost) {
      list += (list.empty() ? "" : ", ") + printable(host);
    }
  }
  findings_.add(Rule::tableLineIncomplete, line,
                std::string("this table line has no ") + (hasAppid ? "adid" : "appid") +
                    (list.empty() ? ": no host can read the document"
                                  : ": only hosts with a line before it can read the document: " +
                                        list + (number > kMost ? ", ..." : "")));
}

/// Hosts without a line get the first one.
void TableReader::readUnreachedAds() {
  std::set<std::string_view> named;
  for (const auto& [host, adid] : table_.adids) {
    named.insert(adid);
  }
  const XmlElement first = *root_.childrenNamed("push_ad").begin();
  const auto firstAdid = childText(first, "adid");
  for (const auto& [adid, ad] : ads_) {
    if (adid != firstAdid && !named.contains(adid)) {
      findings_.add(Rule::adUnreachable, ad,
                    "no table line names the adid " + inQuotes(adid) +
                        ", and this push_ad is not the first: no host gets it");
    }
  }
}

HostTable TableReader::read() {
  static constexpr std::array<std::string_view, 2> kDataNames = {"file_version", "push_ad_config"};
  static constexpr std::array<std::string_view, 2> kLineNames = {"appid", "adid"};
  static constexpr std::array<std::string_view, 2> kRootNames = {"data", "push_ad"};
  findNearlyNamed(root_, kRootNames, findings_);
  for (const XmlElement data : root_.childrenNamed("data")) {
    findNearlyNamed(data, kDataNames, findings_);
    for (const XmlElement line : data.childrenNamed("push_ad_config")) {
      findNearlyNamed(line, kLineNames, findings_);
      const bool hasAppid = !childText(line, "appid").empty();
      if (hasAppid && !childText(line, "adid").empty()) {
        readLine(line);
      } else {
        readBrokenLine(line, hasAppid);
      }
    }
  }
  if (!ads_.empty() && !table_.isBroken) {
    readUnreachedAds();
  }
  return std::move(table_);
}

}  // namespace

HostTable findInTable(XmlElement root, Findings& findings) {
  return TableReader(root, findings).read();
}

}  // namespace qorix::tools::adcheck
