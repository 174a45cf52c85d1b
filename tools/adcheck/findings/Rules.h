#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qorix::tools::adcheck {

/// The kinds of warnings.
enum class Rule : std::size_t {
  tableLineIncomplete,
  tableHostRepeated,
  tableAdidUnknown,
  tableAppidBlanks,
  tableAppidQuotes,
  adWithoutAdid,
  adAdidRepeated,
  adUnreachable,
  adRefused,
  textMarkup,
  nameNearlyKnown,
  elementRepeated,
  numberOutOfRange,
  numberPartlyRead,
  enableSwitchesOn,
  versionPartlyCompared,
  promotedNameEmpty,
  promotedNameBlanks,
  promotedNameEnding,
  offsetElement,
  languageEmpty,
  languageRepeated,
  languageBlank,
  languageSpelling,
  languageShadowed,
  languageDefaultMissing,
  customisationNotJson,
  customisationNotObject,
  customisationNameRepeated,
  customisationUnused,
  customisationHostCase,
  customisationHostQuotes,
  customisationEntryNotObject,
  customisationMemberUnknown,
  customisationMemberType,
  customisationFraction,
  customisationNumberOutOfRange,
  customisationVersionPartlyCompared,
  pageMarkMisplaced,
  pageMarkByAccident,
  pageMarkMisspelled,
  pageMarkInForm,
  pageMarkInNewWindow,
  pageClassCase,
  pageClassOutsideLink,
  pageClassCovered,
  pageCloseMisspelled,
  pageCloseOutsideLink,
  pageCloseCovered,
  pageCloseText,
  pageTooLarge,
  number
};

/// What a rule is about. Programs that show reports know a rule by its `id`, so that may never
/// change.
struct RuleText {
  Rule rule;
  std::string_view id;
  std::string_view summary;
  std::string_view help;
};

/// All of them, in the order of `Rule`.
std::span<const RuleText> allRules();

const RuleText& textOf(Rule rule);

/// Why a host refuses a document, by the number that it logs.
struct RefusalRule {
  int line;
  std::string id;
  std::string name;
  std::string summary;
};

/// All of them, by their numbers.
const std::vector<RefusalRule>& refusalRules();

}  // namespace qorix::tools::adcheck
