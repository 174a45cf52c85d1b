#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <qorix/MyPushAdInfo.h>

#include "definition/AdFormat.h"
#include "definition/XmlDocument.h"

namespace qorix {

/// What a document holds for one host, as far as it could be read. The elements belong to the
/// document, which must outlive them.
struct AdReading {
  /// What makes the document unusable for the host.
  struct Defect {
    refusal::Number line;  // what is logged
    /// The element that is wrong, or that lacks a child.
    XmlElement element;
  };

  /// The first one that was found; absent if the document can be used.
  std::optional<Defect> defect;
  /// The line of the host table that names the host; absent if there is none.
  std::optional<XmlElement> tableLine;
  /// The advertisement chosen; absent if reading ended before the choice.
  std::optional<XmlElement> ad;
  /// The first element of each field, in the order of `field::Index`, up to the first defect.
  std::vector<XmlElement> fields;
  /// The elements of the two dictionaries, one per language, in document order.
  std::vector<XmlElement> titles;
  std::vector<XmlElement> pages;
  /// The names of the promoted applications; absent if no element names any.
  std::optional<std::set<std::string>> promotedNames;

  std::string_view text(field::Index index) const { return fields[index].text(); }
};

/// Reads what the host with the identifier `host` gets. Logs nothing. That the first `title` or
/// `html_contents` has no usable language is found last, after all else has been read.
AdReading readAdForHost(const XmlDocument& document, const std::optional<std::string>& host);

/// The pages of the advertisements that the host does not get, so far as the elements before them
/// tell: usually all of them. Where `AdReading::ad` is not whole, they told wrong. For one
/// document.
XmlOmission pagesOfOtherAds(std::optional<std::string> host);

/// Reads one advertisement in the same way, for no particular host.
AdReading readAd(XmlElement ad);

/// The record made from the document's own elements: without the customisation, and regardless of
/// what is installed. `reading` must have no defect.
std::shared_ptr<MyPushAdInfo> createRecord(const AdReading& reading);

}  // namespace qorix
