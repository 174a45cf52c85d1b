#include "tools/adcheck/Findings.h"

#include <algorithm>
#include <utility>

#include "definition/AdReader.h"

namespace qorix::adcheck {

namespace {

void findInAd(XmlElement ad, Findings& findings) {
  findInRecord(ad, findings);
  if (const auto advance = ad.firstChildNamed(kFieldNames[field::advance])) {
    findInCustomisation(*advance, findings);
  }
  const AdReading reading = readAd(ad);
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

void Findings::add(XmlElement element, std::string words) {
  found_.push_back({source_.map().offsetOf(element), std::move(words)});
}

void Findings::addInText(XmlElement element, std::size_t offset, std::string words) {
  found_.push_back({source_.map().offsetInText(element, offset), std::move(words)});
}

std::vector<Finding> Findings::take() {
  std::ranges::stable_sort(found_, {}, &Finding::offset);
  return std::exchange(found_, {});
}

std::vector<Finding> findingsIn(const SourceDocument& source) {
  Findings findings(source);
  if (source.document() != nullptr) {
    const XmlElement root = source.document()->root();
    findInTable(root, findings);
    for (const XmlElement ad : root.childrenNamed("push_ad")) {
      findInAd(ad, findings);
    }
  }
  return findings.take();
}

}  // namespace qorix::adcheck
