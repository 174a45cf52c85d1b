#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <qorix/platform/Url.h>

#include "text/AsciiCase.h"
#include "tools/adcheck/findings/Findings.h"
#include "tools/adcheck/scan/HtmlPage.h"
#include "tools/common/Wording.h"
#include "webview/LinkMarks.h"
#include "webview/PageScripts.h"

namespace qorix::tools::adcheck {

namespace {

/// The marks that a class may hold, too.
constexpr std::array kMarks = {kBrowserMark, kPurchaseMark};

/// What stands between any of those characters.
std::vector<std::string_view> piecesOf(std::string_view text, std::string_view separators) {
  std::vector<std::string_view> pieces;
  while (!text.empty()) {
    const auto end = std::min(text.find_first_of(separators), text.size());
    pieces.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return pieces;
}

/// The parameters of the address's query, in lower case.
std::vector<std::string> parametersOf(const Url& url) {
  std::vector<std::string> parameters;
  const std::string query(url.query().value_or(""));
  std::ranges::transform(piecesOf(query, "&;"), std::back_inserter(parameters),
                         [](std::string_view each) { return asciiLower(each); });
  return parameters;
}

/// Whether `text` holds `mark` as a parameter of its own. Both in lower case.
bool holdsAsParameter(std::string_view text, std::string_view mark) {
  constexpr std::string_view kBefore = "?&;#/";
  constexpr std::string_view kAfter = "&;#/";
  for (auto at = text.find(mark); at != text.npos; at = text.find(mark, at + 1)) {
    const auto end = at + mark.size();
    if ((at == 0 || kBefore.find(text[at - 1]) != kBefore.npos) &&
        (end == text.size() || kAfter.find(text[end]) != kAfter.npos)) {
      return true;
    }
  }
  return false;
}

/// The address of a link or a form.
Url urlIn(const HtmlAttribute& address) { return Url::fromWebEngine(std::string(address.value)); }

bool classHolds(const HtmlElement& element, std::string_view mark) {
  const auto classes = element.attribute("class");
  return classes && classes->value.find(mark) != std::string_view::npos;
}

/// Looks through one page.
class PageReader {
 public:
  PageReader(XmlElement page, Findings& findings) : page_(page), findings_(findings) {}

  void read();

 private:
  void add(Rule rule, std::size_t offset, const std::string& words);
  void readLink(const HtmlElement& element);
  void readMissedMark(const HtmlAttribute& link, std::string_view mark);
  void readMisspelledMark(const HtmlAttribute& link, const LinkMark& mark);
  void readClass(const HtmlElement& element, const std::optional<HtmlElement>& link);
  void readTarget(const HtmlElement& element);
  void readId(const HtmlElement& element, bool isInLink);

  XmlElement page_;
  Findings& findings_;
  std::set<std::pair<std::size_t, std::string>> added_;
};

/// If elements are not closed in order, the tree holds some of them twice.
void PageReader::add(Rule rule, std::size_t offset, const std::string& words) {
  if (added_.emplace(offset, words).second) {
    findings_.addInText(rule, page_, offset, words);
  }
}

void PageReader::read() {
  const HtmlPage page(page_.text());
  if (page.isTooLarge()) {
    add(Rule::pageTooLarge, 0, "this page has too many tags and attributes to be checked");
  }
  page.visit([this](const HtmlElement& element, const std::optional<HtmlElement>& link) {
    readLink(element);
    readClass(element, link);
    readTarget(element);
    readId(element, link.has_value());
  });
}

void PageReader::readLink(const HtmlElement& element) {
  if (!element.isLink()) {
    return;
  }
  const auto link = element.attribute("href").value();
  readMissedMark(link, kAppStoreMark.inQuery);
  for (const LinkMark& mark : kMarks) {
    if (!classHolds(element, mark.inClass)) {
      readMissedMark(link, mark.inQuery);
      readMisspelledMark(link, mark);
    }
  }
}

/// A mark that stands where it is not looked for, or that is found in something else.
void PageReader::readMissedMark(const HtmlAttribute& link, std::string_view mark) {
  const Url url = urlIn(link);
  const std::string lower = asciiLower(link.value);
  if (!queryHoldsMark(url, mark)) {
    if (holdsAsParameter(lower, mark)) {
      const bool isInFragment = lower.find('#') < lower.find(mark);
      add(Rule::pageMarkMisplaced, link.offset,
          "\"" + std::string(mark) + "\" stands in the link's " +
              (isInFragment ? "fragment" : "path") +
              ", where it is not looked for: only the query counts");
    }
    return;
  }
  const auto parameters = parametersOf(url);
  const auto isMark = [&](const std::string& each) { return trimmed(each) == mark; };
  const auto holdsMark = [&](const std::string& each) { return each.find(mark) != each.npos; };
  const auto other = std::ranges::find_if(parameters, holdsMark);
  if (std::ranges::none_of(parameters, isMark) && other != parameters.end()) {
    add(Rule::pageMarkByAccident, link.offset,
        "\"" + std::string(mark) + "\" is also found in " + inQuotes(*other) +
            (mark == kAppStoreMark.inQuery ? ": the link opens the App Store"
                                           : ": the link acts as if it were marked"));
  }
}

/// "zamopenout = 1", "zamopenout=yes".
void PageReader::readMisspelledMark(const HtmlAttribute& link, const LinkMark& mark) {
  const std::string lower = asciiLower(link.value);
  const auto query = std::min(lower.find_first_of("?#"), lower.size());
  const auto at = lower.find(mark.inClass, query);
  if (at == lower.npos || queryHoldsMark(urlIn(link), mark.inQuery) ||
      holdsAsParameter(lower, mark.inQuery)) {
    return;
  }
  constexpr std::string_view kBefore = "?&;# ";
  const auto rest = std::string_view(lower).substr(at + mark.inClass.size());
  if (rest.starts_with("=0") || kBefore.find(lower[at - 1]) == kBefore.npos ||
      (!rest.empty() && std::string_view("=&;# %+").find(rest.front()) == std::string_view::npos)) {
    return;
  }
  const bool isSpaced = rest.starts_with(' ') || rest.starts_with("%20") || rest.starts_with('+') ||
                        rest.starts_with("= ") || rest.starts_with("=%20") ||
                        rest.starts_with("=+");
  add(Rule::pageMarkMisspelled, link.offset,
      "this mark cannot match: it is spelled \"" + std::string(mark.inQuery) + "\"" +
          (isSpaced ? ", without blanks" : ""));
}

void PageReader::readClass(const HtmlElement& element, const std::optional<HtmlElement>& link) {
  const auto classes = element.attribute("class");
  if (!classes) {
    return;
  }
  const auto names = piecesOf(classes->value, " \t\r\n\f");
  for (const LinkMark& mark : kMarks) {
    const std::string name(mark.inClass);
    const bool isMarkedAnyway =
        link && queryHoldsMark(urlIn(*link->attribute("href")), mark.inQuery);
    if (isMarkedAnyway || asciiLower(classes->value).find(name) == std::string::npos) {
      continue;
    }
    if (!classHolds(element, name)) {
      add(Rule::pageClassCase, classes->offset,
          "this class cannot match: letter case counts in \"" + name + "\"");
    } else if (std::ranges::find(names, name) == names.end()) {
      continue;  // a longer name, perhaps for a style sheet only
    } else if (!link) {
      add(Rule::pageClassOutsideLink, classes->offset,
          "this \"" + name + "\" lies in no link (a with href): clicks on it do nothing");
    } else if (element.anyVisibleChild(
                   [&](const HtmlElement& child) { return !classHolds(child, name); })) {
      add(Rule::pageClassCovered, classes->offset,
          "a click on an element inside this one does not find its class \"" + name +
              "\": write \"" + std::string(mark.inQuery) + "\" into the link's query");
    }
  }
}

/// Where marks are never looked for.
void PageReader::readTarget(const HtmlElement& element) {
  const bool isForm = element.is(GUMBO_TAG_FORM);
  const auto address = isForm             ? element.attribute("action")
                       : element.isLink() ? element.attribute("href")
                                          : std::nullopt;
  const auto target = element.attribute("target");
  const bool isForNewWindow = target && asciiLower(target->value) == "_blank";
  if (!address || (!isForm && !isForNewWindow)) {
    return;
  }
  const auto parameters = parametersOf(urlIn(*address));
  const auto isMarked = [&](const LinkMark& mark) {
    return std::ranges::find(parameters, mark.inQuery) != parameters.end() ||
           (!isForm && !mark.inClass.empty() && classHolds(element, mark.inClass));
  };
  if (std::ranges::any_of(kMarks, isMarked) || isMarked(kAppStoreMark)) {
    add(isForm ? Rule::pageMarkInForm : Rule::pageMarkInNewWindow,
        isForm ? address->offset : target->offset,
        isForm ? "marks in the address of a form do nothing: only clicks on links count"
               : "marks do nothing in a link for a new window: leave the target out");
  }
}

void PageReader::readId(const HtmlElement& element, bool isInLink) {
  const auto id = element.attribute("id");
  if (!id || asciiLower(trimmed(id->value)) != kCloseControlId) {
    return;
  }
  if (id->value != kCloseControlId) {
    add(Rule::pageCloseMisspelled, id->offset,
        "this id cannot match: it is \"" + std::string(kCloseControlId) + "\", letter by letter");
  } else if (!isInLink) {
    add(Rule::pageCloseOutsideLink, id->offset,
        "this close control lies in no link (a with href): clicks on it do nothing");
  } else if (element.anyVisibleChild([](const HtmlElement& /*child*/) { return true; })) {
    add(Rule::pageCloseCovered, id->offset,
        "a click on an element inside this close control does not close: give the id to the "
        "innermost one, an image, say");
  } else if (element.holdsText()) {
    add(Rule::pageCloseText, id->offset,
        "a click on this close control's text does not close: give the id to an image, say");
  }
}

}  // namespace

void findInPage(XmlElement page, Findings& findings) { PageReader(page, findings).read(); }

}  // namespace qorix::tools::adcheck
