#include "tools/adcheck/findings/Findings.h"

#include <algorithm>
#include <utility>

#include "text/AsciiCase.h"
#include "tools/common/Refusal.h"
#include "tools/common/Wording.h"

namespace qorix::tools::adcheck {

namespace {

/// Why hosts refuse it. A missing adid is reported with the table, as it concerns other hosts, too.
void findDefect(const AdReading& reading, Findings& findings) {
  const bool hasAdid = !reading.fields.empty();
  if (hasAdid && reading.defect) {
    findings.add(Rule::adRefused, reading.defect->element,
                 wordsFor(*reading.defect) + ": hosts that get this push_ad refuse the document");
  }
}

void findInAd(XmlElement ad, bool isFirst, const HostTable& table, Findings& findings) {
  const AdReading reading = readAd(ad);
  findDefect(reading, findings);
  findInRecord(reading, findings);
  if (const auto advance = ad.firstChildNamed(kFieldNames[field::advance])) {
    findInCustomisation(ad, *advance, isFirst, table, findings);
  }
  for (const auto* name : {"title", "html_contents"}) {
    if (const auto dictionary = ad.firstChildNamed(name)) {
      findInLanguages(*dictionary, findings);
    }
  }
  for (const XmlElement page : reading.pages) {
    findInPage(page, findings);
  }
}

}  // namespace

void Findings::add(Rule rule, XmlElement element, std::string words) {
  found_.push_back({rule, source_.map().offsetOf(element), std::move(words)});
}

void Findings::addInText(Rule rule, XmlElement element, std::size_t offset, std::string words) {
  found_.push_back({rule, source_.map().offsetInText(element, offset), std::move(words)});
}

std::vector<Finding> Findings::take() {
  std::ranges::stable_sort(found_, {}, &Finding::offset);
  return std::exchange(found_, {});
}

void findMarkup(XmlElement element, Findings& findings) {
  if (const auto children = element.children(); !children.empty()) {
    findings.add(Rule::textMarkup, *children.begin(),
                 "markup inside " + printable(element.name()) +
                     " is dropped: escape it or put it into a CDATA section");
  }
}

void findNearlyNamed(XmlElement parent, std::span<const std::string_view> names,
                     Findings& findings) {
  const auto plain = [](std::string_view name) {
    std::string lower = asciiLower(name);
    if (lower.ends_with('s')) {
      lower.pop_back();
    }
    return lower;
  };
  for (const XmlElement child : parent.children()) {
    if (std::ranges::find(names, child.name()) != names.end()) {
      continue;
    }
    const auto near = std::ranges::find(names, plain(child.name()), plain);
    if (near != names.end()) {
      findings.add(
          Rule::nameNearlyKnown, child,
          inQuotes(child.name()) + " is never read: the element is called " + inQuotes(*near));
    }
  }
}

std::vector<Finding> findingsIn(const SourceDocument& source) {
  Findings findings(source);
  if (source.document() != nullptr) {
    const XmlElement root = source.document()->root();
    const HostTable table = findInTable(root, findings);
    bool isFirst = true;
    for (const XmlElement ad : root.childrenNamed("push_ad")) {
      findInAd(ad, isFirst, table, findings);
      isFirst = false;
    }
  }
  return findings.take();
}

}  // namespace qorix::tools::adcheck
