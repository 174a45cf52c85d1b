#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace qorix {

// What an ad configuration document is made of, and the numbers under which hosts log what is wrong
// with one. All of it is a contract with the authors of documents, who find it in their guide.

/// The names of the elements that are looked for. The children of a title and of the pages are
/// languages, whose names the author chooses.
namespace tag {
inline constexpr std::string_view kRoot = "rootcfg";
inline constexpr std::string_view kData = "data";
inline constexpr std::string_view kFileVersion = "file_version";
inline constexpr std::string_view kTableLine = "push_ad_config";
inline constexpr std::string_view kAppId = "appid";
inline constexpr std::string_view kAdId =
    "adid";  // in a line of the table, and in an advertisement
inline constexpr std::string_view kAd = "push_ad";
inline constexpr std::string_view kTitle = "title";
inline constexpr std::string_view kPages = "html_contents";
inline constexpr std::string_view kPromotedName = "promo_app_name";

/// All of them, but for the fields.
inline constexpr std::array kAll = {kRoot, kData, kFileVersion, kTableLine, kAppId,
                                    kAdId, kAd,   kTitle,       kPages,     kPromotedName};
}  // namespace tag

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
}  // namespace field

/// Their names, in that order.
inline constexpr std::array<std::string_view, field::number> kFieldNames = {
    tag::kAdId, "enable", "version", "embed",   "width",
    "height",   "count",  "delay",   "advance", "notes"};

/// Why a host cannot use a document: the number that it logs. None of them may ever change.
namespace refusal {
enum Number : int {
  noText = 87,
  notWellFormed = 91,
  noFileVersion = 94,  // or the root element has another name
  tableLineWithoutAppId = 103,
  tableLineWithoutAdId = 104,
  noAd = 119,
  adWithoutId = 122,
  firstField = 127,  // missing or empty; one number for each field, see `ofField`
  lastField = 136,
  noTitle = 138,
  noPages = 139,
  unknownAdId = 166,  // no advertisement has the one that the table names for the host
  noTitleText = 176,  // in any language
  noPageText = 177,
};

/// The number of a field that is missing or empty.
constexpr Number ofField(std::size_t index) {
  return static_cast<Number>(firstField + static_cast<int>(index));
}
static_assert(ofField(field::number - 1) == lastField);
}  // namespace refusal

}  // namespace qorix
