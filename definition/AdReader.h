#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <qorix/MyPushAdInfo.h>

#include "definition/XmlDocument.h"

namespace qorix {

/// The elements of an advertisement that hold one text each, all of them required.
namespace field {
enum Index : std::size_t {
  adid,
  enable,
  version,
  embed,
  width,
  height,
  count,
  delay,
  advance,
  notes,
  number
};
}

/// Their names, in that order.
inline constexpr std::array<std::string_view, field::number> kFieldNames = {
    "adid", "enable", "version", "embed", "width", "height", "count", "delay", "advance", "notes"};

/// What a document holds for one host: as much as could be read of it. The elements belong to the
/// document, which must outlive them.
struct AdReading {
  /// What makes the document unusable.
  struct Defect {
    int line = 0;  // the number that is logged
    /// The element that is wrong, or that lacks a child.
    XmlElement element;
  };

  std::optional<Defect> defect;
  /// The line of the host table that names the host.
  std::optional<XmlElement> tableLine;
  /// The advertisement chosen.
  std::optional<XmlElement> ad;
  /// The first element of each field, in the order of `field::Index`, up to the first defect.
  std::vector<XmlElement> fields;
  /// The elements of the dictionaries, one for each language, in their order.
  std::vector<XmlElement> titles;
  std::vector<XmlElement> pages;
  /// The names of the promoted applications; nothing when there is no element for them.
  std::optional<std::set<std::string>> promotedNames;

  std::string_view text(field::Index index) const { return fields[index].text(); }
};

/// Reads what the host of that identifier gets. Logs nothing. The defects of the first `title` and
/// `html_contents` without usable languages are found last, when all else is read.
AdReading readAdForHost(const XmlDocument& document, const std::optional<std::string>& host);

/// Reads one advertisement in the same way, whoever gets it.
AdReading readAd(XmlElement ad);

/// The record that the document's own elements make: without customisation, and whatever is
/// installed. `reading` has no defect.
std::shared_ptr<MyPushAdInfo> createRecord(const AdReading& reading);

}  // namespace qorix
