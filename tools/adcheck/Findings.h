#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/adcheck/SourceDocument.h"

namespace qorix::adcheck {

/// Something legal and surely unwanted, and the byte of the source where it stands.
struct Finding {
  std::size_t offset = 0;
  std::string words;
};

/// Gathers findings about one document.
class Findings {
 public:
  explicit Findings(const SourceDocument& source) : source_(source) {}

  /// At the element's start tag.
  void add(XmlElement element, std::string words);

  /// At the byte `offset` of the element's text.
  void addInText(XmlElement element, std::size_t offset, std::string words);

  /// In the order of their places.
  std::vector<Finding> take();

 private:
  const SourceDocument& source_;
  std::vector<Finding> found_;
};

/// All that is found in a document, whichever host reads it. None in a text that is not XML.
std::vector<Finding> findingsIn(const SourceDocument& source);

// One function for each kind; each adds what it finds.

/// The host table, and which advertisements can be reached from it.
void findInTable(XmlElement root, Findings& findings);

/// The elements of an advertisement but for those below.
void findInRecord(XmlElement ad, Findings& findings);

/// The customisation: the text of an `advance` element.
void findInCustomisation(XmlElement advance, Findings& findings);

/// The languages of a `title` or `html_contents` element.
void findInLanguages(XmlElement dictionary, Findings& findings);

/// The HTML page of one language: its link marks, its close control and its script bridge.
void findInPage(XmlElement page, Findings& findings);

}  // namespace qorix::adcheck
