#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "definition/AdReader.h"
#include "tools/adcheck/findings/Rules.h"
#include "tools/common/SourceDocument.h"

namespace qorix::tools::adcheck {

/// Something allowed but hardly meant, and its byte in the source.
struct Finding {
  Rule rule{};
  std::size_t offset = 0;
  std::string words;
};

/// Gathers findings about one document.
class Findings {
 public:
  explicit Findings(const SourceDocument& source) : source_(source) {}

  /// At the element's start tag.
  void add(Rule rule, XmlElement element, std::string words);

  /// At the byte `offset` of the element's text.
  void addInText(Rule rule, XmlElement element, std::size_t offset, std::string words);

  /// In the order of their places.
  std::vector<Finding> take();

 private:
  const SourceDocument& source_;
  std::vector<Finding> found_;
};

/// All that is found in a document, whichever host reads it. None in a text that is not XML.
std::vector<Finding> findingsIn(const SourceDocument& source);

/// What the host table says of the hosts that it names.
struct HostTable {
  std::map<std::string_view, std::string_view, std::less<>> adids;
  std::map<std::string, std::string_view, std::less<>> hosts;  // by their names in lower case
  bool isBroken = false;  // a line lacks what it would say of some host
};

// One function for each kind; each adds what it finds.

/// The host table, and which advertisements can be reached from it.
HostTable findInTable(XmlElement root, Findings& findings);

/// The elements of an advertisement but for those below. `reading` may have a defect.
void findInRecord(const AdReading& reading, Findings& findings);

/// The customisation: the text of the `advance` element of `ad`.
void findInCustomisation(XmlElement ad, XmlElement advance, bool isFirstAd, const HostTable& table,
                         Findings& findings);

/// The languages of a `title` or `html_contents` element.
void findInLanguages(XmlElement dictionary, Findings& findings);

/// The HTML page of one language: its link marks and its close control. Scripts are not read.
void findInPage(XmlElement page, Findings& findings);

/// Markup in an element that holds a text: of it only the text counts.
void findMarkup(XmlElement element, Findings& findings);

/// Children whose names are nearly one of those that are read.
void findNearlyNamed(XmlElement parent, std::span<const std::string_view> names,
                     Findings& findings);

}  // namespace qorix::tools::adcheck
