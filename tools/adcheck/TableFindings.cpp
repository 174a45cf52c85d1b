#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/adcheck/FieldValues.h"
#include "tools/adcheck/Findings.h"
#include "tools/adcheck/Wording.h"

namespace qorix::adcheck {

namespace {

std::string_view childText(XmlElement element, std::string_view name) {
  const auto child = element.firstChildNamed(name);
  return child ? child->text() : std::string_view();
}

/// By their text: the first elements that bear it.
using Seen = std::map<std::string_view, XmlElement, std::less<>>;

Seen advertisementsIn(XmlElement root, Findings& findings) {
  Seen ads;
  for (const XmlElement ad : root.childrenNamed("push_ad")) {
    const auto adid = ad.firstChildNamed("adid");
    if (!adid || adid->text().empty()) {
      findings.add(adid.value_or(ad),
                   "this push_ad has no adid: hosts that get an advertisement behind it refuse the "
                   "document");
    } else if (!ads.try_emplace(adid->text(), ad).second) {
      findings.add(*adid, "an earlier push_ad has the same adid: no host gets this one");
    }
  }
  return ads;
}

void findInLine(XmlElement line, const Seen& ads, Seen& hosts, Findings& findings) {
  const auto appid = line.firstChildNamed("appid").value();
  const auto adid = line.firstChildNamed("adid").value();
  if (trimmed(appid.text()) != appid.text()) {
    findings.add(appid, "blanks around the appid count: no host is called so");
  }
  if (const auto odd = oddIdentifier(appid.text())) {
    findings.add(appid, *odd);
  }
  if (!hosts.try_emplace(appid.text(), line).second) {
    findings.add(line,
                 "an earlier table line names " + quoted(appid.text()) + ": this one never counts");
  } else if (!ads.contains(adid.text())) {
    findings.add(adid, "no push_ad has the adid " + quoted(adid.text()) + ": " +
                           quoted(appid.text()) + " refuses the document");
  }
}

std::string listOf(const Seen& hosts) {
  constexpr std::size_t kMost = 5;
  std::string list;
  std::size_t number = 0;
  for (const auto& [host, line] : hosts) {
    if (++number > kMost) {
      return list + ", ...";
    }
    list += (list.empty() ? "" : ", ") + printable(host);
  }
  return list;
}

}  // namespace

void findInTable(XmlElement root, Findings& findings) {
  const Seen ads = advertisementsIn(root, findings);
  Seen hosts;
  for (const XmlElement data : root.childrenNamed("data")) {
    for (const XmlElement line : data.childrenNamed("push_ad_config")) {
      const bool hasAppid = !childText(line, "appid").empty();
      if (hasAppid && !childText(line, "adid").empty()) {
        findInLine(line, ads, hosts, findings);
        continue;
      }
      findings.add(line, std::string("this table line has no ") + (hasAppid ? "adid" : "appid") +
                             (hosts.empty() ? ": no host can read the document"
                                            : ": only hosts with a line before it can read the "
                                              "document: " +
                                                  listOf(hosts)));
    }
  }
}

}  // namespace qorix::adcheck
