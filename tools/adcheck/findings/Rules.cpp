#include "tools/adcheck/findings/Rules.h"

#include <array>
#include <utility>

#include "definition/AdFormat.h"
#include "text/AsciiCase.h"

namespace qorix::tools::adcheck {

namespace {

constexpr std::array kRules = {
    RuleText{Rule::tableLineIncomplete, "table-line-incomplete",
             "A line of the host table has no appid or no adid",
             "Hosts whose line comes later, and all hosts without a line, refuse the document. "
             "Write both elements, each with a text."},
    RuleText{Rule::tableHostRepeated, "table-host-repeated",
             "A second line of the host table names the same host",
             "Only the first line that names a host counts. Delete the other one."},
    RuleText{Rule::tableAdidUnknown, "table-adid-unknown",
             "A line of the host table names an adid that no push_ad has",
             "The host of this line refuses the document. Both texts must be equal, letter by "
             "letter."},
    RuleText{Rule::tableAppidBlanks, "table-appid-blanks", "An appid has blanks around it",
             "Blanks count when the identifier is compared, so no host is called so. Delete them."},
    RuleText{Rule::tableAppidQuotes, "table-appid-quotes", "An appid has a quote or a backslash",
             "The page's script receives the identifier between single quotes, unescaped."},
    RuleText{Rule::adWithoutAdid, "ad-without-adid", "A push_ad has no adid",
             "All hosts that get this advertisement, or one after it, refuse the document."},
    RuleText{Rule::adAdidRepeated, "ad-adid-repeated", "Two push_ad have the same adid",
             "The first one counts, and no host gets the other. Give it an adid of its own."},
    RuleText{Rule::adUnreachable, "ad-unreachable", "No host gets a push_ad",
             "Hosts without a line in the table get the first push_ad. Every other one must be "
             "named by a line."},
    RuleText{Rule::adRefused, "ad-refused", "A push_ad lacks something that is required",
             "Hosts that get this advertisement refuse the whole document."},
    RuleText{Rule::textMarkup, "text-markup", "There is markup inside a text",
             "The tags are dropped, and the text between them remains. Escape the markup, or put "
             "it into a CDATA section."},
    RuleText{Rule::nameNearlyKnown, "name-nearly-known", "An element's name is nearly a known one",
             "Names are exact, including letter case. The element is never read."},
    RuleText{Rule::elementRepeated, "element-repeated",
             "An element that is read once stands there again",
             "The first one counts. Delete the other one."},
    RuleText{Rule::numberOutOfRange, "number-out-of-range", "A number makes no sense",
             "adid, width, height and count start at 1, delay at 0, and embed is 0 to 8."},
    RuleText{Rule::numberPartlyRead, "number-partly-read", "A text is not, or not only, a number",
             "The integer at the start of the text is read, 0 if there is none. A number beyond "
             "64 bits becomes the nearest one that fits."},
    RuleText{Rule::enableSwitchesOn, "enable-switches-on",
             "An enable that looks like off switches on",
             "Only the text 0 switches off, without blanks around it."},
    RuleText{Rule::versionPartlyCompared, "version-partly-compared",
             "Only a part of a version is compared",
             "A version is a text, which may be followed by an \"a\" and a number of 32 bits. "
             "Versions that differ elsewhere are one version, and share one count."},
    RuleText{Rule::promotedNameEmpty, "promoted-name-empty", "A promo_app_name is empty",
             "It does not count. Delete it."},
    RuleText{Rule::promotedNameBlanks, "promoted-name-blanks",
             "A promo_app_name has blanks around it",
             "Blanks count, so no application is called so. Delete them."},
    RuleText{Rule::promotedNameEnding, "promoted-name-ending",
             "A promo_app_name has a package's ending",
             "Installed applications are known without .app, .AppDir and .desktop. Delete the "
             "ending."},
    RuleText{Rule::offsetElement, "offset-element", "An offset is written as an element",
             "Only the customisation sets offsetx and offsety."},
    RuleText{Rule::languageEmpty, "language-empty", "A language has no text",
             "It is left out. Write a text, or delete the element."},
    RuleText{Rule::languageRepeated, "language-repeated", "A language stands there twice",
             "The last one counts. Delete the others."},
    RuleText{Rule::languageBlank, "language-blank", "A language holds only blanks",
             "Users of this language see blanks, not the text of default."},
    RuleText{Rule::languageSpelling, "language-spelling",
             "A language code is spelled as no user's language is",
             "Codes are compared letter by letter. Write them as in pt-BR and zh-Hans."},
    RuleText{Rule::languageShadowed, "language-shadowed",
             "A language stands after a shorter code that it begins with",
             "The first entry that fits is chosen, so this one never is. Put the longer code "
             "first."},
    RuleText{Rule::languageDefaultMissing, "language-default-missing", "There is no default text",
             "Users of other languages see an empty advertisement, which counts as shown. Write a "
             "default."},
    RuleText{Rule::customisationNotJson, "customisation-not-json", "An advance is not JSON",
             "The advertisement is used without any customisation."},
    RuleText{Rule::customisationNotObject, "customisation-not-object",
             "An advance is no JSON object",
             "The advertisement is used without any customisation."},
    RuleText{Rule::customisationNameRepeated, "customisation-name-repeated",
             "Two members of an object have the same name",
             "The last one counts. Delete the others."},
    RuleText{Rule::customisationUnused, "customisation-unused",
             "A customisation is for a host that gets another advertisement",
             "It never counts. Move it to the advertisement that the host gets."},
    RuleText{Rule::customisationHostCase, "customisation-host-case",
             "A customised host has other letter case in the host table",
             "Identifiers are compared letter by letter. Write both in the same way."},
    RuleText{Rule::customisationHostQuotes, "customisation-host-quotes",
             "A customised host has a quote or a backslash",
             "The page's script receives the identifier between single quotes, unescaped."},
    RuleText{Rule::customisationEntryNotObject, "customisation-entry-not-object",
             "What stands under a host is no object", "It customises nothing."},
    RuleText{Rule::customisationMemberUnknown, "customisation-member-unknown",
             "A member is not known",
             "It is ignored. The members are enable, version, embed, width, height, offsetx, "
             "offsety, count, delay and notes."},
    RuleText{Rule::customisationMemberType, "customisation-member-type",
             "A member has the wrong type",
             "It is ignored. version and notes are strings that are not empty, all others are "
             "numbers without quotes."},
    RuleText{Rule::customisationFraction, "customisation-fraction", "A number loses its fraction",
             "Fractions are cut off: 1.9 is 1."},
    RuleText{Rule::customisationNumberOutOfRange, "customisation-number-out-of-range",
             "A number makes no sense",
             "width, height and count start at 1, delay at 0, and embed is 0 to 8."},
    RuleText{Rule::customisationVersionPartlyCompared, "customisation-version-partly-compared",
             "Only a part of a version is compared",
             "A version is a text, which may be followed by an \"a\" and a number of 32 bits. "
             "Versions that differ elsewhere are one version, and share one count."},
    RuleText{Rule::pageMarkMisplaced, "page-mark-misplaced",
             "A mark stands in a link's path or fragment", "Only the link's query is searched."},
    RuleText{Rule::pageMarkByAccident, "page-mark-by-accident", "A mark is found in something else",
             "The link acts as if it were marked. Rename the parameter."},
    RuleText{Rule::pageMarkMisspelled, "page-mark-misspelled", "A mark is misspelled",
             "Write it as name=1, without blanks."},
    RuleText{Rule::pageMarkInForm, "page-mark-in-form", "A mark stands in the address of a form",
             "Only clicks on links are looked at."},
    RuleText{Rule::pageMarkInNewWindow, "page-mark-in-new-window",
             "A marked link is for a new window",
             "Marks do nothing in such links. Leave the target out."},
    RuleText{Rule::pageClassCase, "page-class-case", "A class has a mark in other letter case",
             "Letter case counts in classes."},
    RuleText{Rule::pageClassOutsideLink, "page-class-outside-link",
             "A class with a mark lies in no link",
             "Clicks on it do nothing. Put it into an a element with href."},
    RuleText{Rule::pageClassCovered, "page-class-covered",
             "Clicks miss the element that has the class",
             "Only the clicked element's class is looked at. Write the mark into the link's "
             "query."},
    RuleText{Rule::pageCloseMisspelled, "page-close-misspelled",
             "The id of a close control is misspelled", "It is compared letter by letter."},
    RuleText{Rule::pageCloseOutsideLink, "page-close-outside-link",
             "A close control lies in no link",
             "Clicks on it do nothing. Put it into an a element with href."},
    RuleText{Rule::pageCloseCovered, "page-close-covered", "Clicks miss the close control",
             "Only the clicked element's id is looked at. Give it to the innermost element."},
    RuleText{Rule::pageCloseText, "page-close-text", "A close control holds text",
             "A click on its text does not close. Give the id to an image."},
    RuleText{Rule::pageTooLarge, "page-too-large", "A page has too many tags to be checked",
             "Hosts show it. Its links and its close control were not looked at, as it has many "
             "thousands of tags and attributes."},
};
static_assert(kRules.size() == static_cast<std::size_t>(Rule::number));
static_assert([] {
  for (std::size_t index = 0; index < kRules.size(); ++index) {
    if (kRules.at(index).rule != static_cast<Rule>(index)) {
      return false;
    }
  }
  return true;
}());

std::vector<RefusalRule> makeRefusalRules() {
  std::vector<RefusalRule> rules;
  const auto add = [&rules](int line, const std::string& name, std::string summary) {
    rules.push_back(
        {line, "refused-" + std::to_string(line), "Refused" + name, std::move(summary)});
  };
  add(refusal::notWellFormed, "NotWellFormed", "The text is not well-formed XML");
  add(refusal::noFileVersion, "FileVersionMissing",
      "The root is not rootcfg, or file_version is missing or empty");
  add(refusal::tableLineWithoutAppId, "TableLineWithoutAppid",
      "A line of the host table has no appid");
  add(refusal::tableLineWithoutAdId, "TableLineWithoutAdid",
      "A line of the host table has no adid");
  add(refusal::noAd, "AdMissing", "There is no push_ad");
  add(refusal::adWithoutId, "AdWithoutAdid", "A push_ad has no adid");
  for (std::size_t index = 1; index < kFieldNames.size(); ++index) {
    const std::string field(kFieldNames.at(index));
    std::string name = field + "Missing";
    name.front() = asciiUpper(name.front());
    add(refusal::ofField(index), name, field + " is missing or empty");
  }
  add(refusal::noTitle, "TitleMissing", "title is missing");
  add(refusal::noPages, "HtmlContentsMissing", "html_contents is missing");
  add(refusal::unknownAdId, "AdidUnknown",
      "A line of the host table names an adid that no push_ad has");
  add(refusal::noTitleText, "TitleEmpty", "title holds no language with a text");
  add(refusal::noPageText, "HtmlContentsEmpty", "html_contents holds no language with a text");
  return rules;
}

}  // namespace

std::span<const RuleText> allRules() { return kRules; }

const RuleText& textOf(Rule rule) { return kRules.at(static_cast<std::size_t>(rule)); }

const std::vector<RefusalRule>& refusalRules() {
  static const std::vector<RefusalRule> kRefusals = makeRefusalRules();
  return kRefusals;
}

}  // namespace qorix::tools::adcheck
