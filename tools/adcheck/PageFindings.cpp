#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <qorix/platform/Url.h>

#include "text/AsciiCase.h"
#include "tools/adcheck/Findings.h"
#include "tools/adcheck/PageScan.h"
#include "tools/adcheck/ScriptScan.h"
#include "tools/adcheck/Wording.h"
#include "webview/LinkMarks.h"
#include "webview/PageScripts.h"

namespace qorix::adcheck {

namespace {

constexpr std::string_view kListFunction = "cocoa_obtain_promo_app_ids";
constexpr std::string_view kAnswerFunction = "cocoa_post_promo_app_info";

/// The marks that a class may hold, too.
constexpr std::array kMarks = {kBrowserMark, kPurchaseMark};

/// The pieces of a query, in lower case.
std::vector<std::string> parametersOf(std::string_view query) {
  std::vector<std::string> parameters;
  while (!query.empty()) {
    const auto end = std::min(query.find_first_of("&;"), query.size());
    parameters.push_back(asciiLower(query.substr(0, end)));
    query.remove_prefix(std::min(end + 1, query.size()));
  }
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

/// Whether one of the names in a class attribute is `name`.
bool hasClass(std::string_view classes, std::string_view name) {
  while (!classes.empty()) {
    const auto end = std::min(classes.find_first_of(" \t\r\n\f"), classes.size());
    if (classes.substr(0, end) == name) {
      return true;
    }
    classes.remove_prefix(std::min(end + 1, classes.size()));
  }
  return false;
}

/// Whether an element is seen, so that it takes clicks.
bool isClicked(const Tag& tag) {
  static constexpr std::array<std::string_view, 6> kUnseen = {"br",    "wbr",      "script",
                                                              "style", "template", "noscript"};
  return std::ranges::find(kUnseen, tag.name) == kUnseen.end();
}

/// Looks through one page.
class PageReader {
 public:
  PageReader(XmlElement page, Findings& findings)
      : page_(page), html_(page.text()), scan_(scanPage(html_)), findings_(findings) {}

  void read();

 private:
  void add(std::size_t offset, std::string words) {
    findings_.addInText(page_, offset, std::move(words));
  }

  void readLink(const Tag& tag);
  void readMissedMark(const Attribute& link, const std::string& address, std::string_view mark);
  void readMisspelledMark(const Attribute& link, const std::string& address, const LinkMark& mark);
  void readClass(std::size_t index);
  bool holdsUnmarkedElement(std::size_t index, std::string_view mark) const;
  void readTarget(const Tag& tag);
  void readId(std::size_t index);
  bool holdsOnlyText(std::size_t index) const;
  void readBridge();
  void readList(std::size_t offset, const ScriptScan& script, std::string_view text);

  XmlElement page_;
  std::string_view html_;
  PageScan scan_;
  std::vector<std::optional<std::size_t>> firstChild_;  // of each tag's element, if any
  Findings& findings_;
};

void PageReader::read() {
  firstChild_.resize(scan_.tags.size());
  for (std::size_t index = scan_.tags.size(); index-- > 0;) {
    if (const auto parent = scan_.tags[index].parent; parent && isClicked(scan_.tags[index])) {
      firstChild_[*parent] = index;
    }
  }
  for (std::size_t index = 0; index < scan_.tags.size(); ++index) {
    const Tag& tag = scan_.tags[index];
    if (!tag.isEnd) {
      readLink(tag);
      readClass(index);
      readTarget(tag);
      readId(index);
    }
  }
  readBridge();
}

bool classHolds(const Tag& tag, std::string_view mark) {
  const Attribute* value = tag.attribute("class");
  return value != nullptr && value->value.find(mark) != std::string::npos;
}

void PageReader::readLink(const Tag& tag) {
  if (!isLink(tag)) {
    return;
  }
  const Attribute* link = tag.attribute("href");
  const std::string& address = link->value;
  readMissedMark(*link, address, kAppStoreMark.inQuery);
  for (const LinkMark& mark : kMarks) {
    if (!classHolds(tag, mark.inClass)) {
      readMissedMark(*link, address, mark.inQuery);
      readMisspelledMark(*link, address, mark);
    }
  }
}

/// A mark that stands where it is not looked for, or that is found in something else.
void PageReader::readMissedMark(const Attribute& link, const std::string& address,
                                std::string_view mark) {
  const Url url = Url::fromWebEngine(address);
  const std::string lower = asciiLower(address);
  if (!queryHoldsMark(url, mark)) {
    if (holdsAsParameter(lower, mark)) {
      const bool isInFragment = lower.find('#') < lower.find(mark);
      add(link.offset, "\"" + std::string(mark) + "\" stands in the link's " +
                           (isInFragment ? "fragment" : "path") +
                           ", where it is not looked for: only the query counts");
    }
    return;
  }
  const auto parameters = parametersOf(url.query().value_or(""));
  const auto isMark = [&](const std::string& each) { return trimmed(each) == mark; };
  const auto holdsMark = [&](const std::string& each) { return each.find(mark) != each.npos; };
  const auto other = std::ranges::find_if(parameters, holdsMark);
  if (std::ranges::none_of(parameters, isMark) && other != parameters.end()) {
    add(link.offset, "\"" + std::string(mark) + "\" is also found in " + inQuotes(*other) +
                         (mark == kAppStoreMark.inQuery ? ": the link opens the App Store"
                                                        : ": the link acts as if it were marked"));
  }
}

/// "zamopenout = 1", "zamopenout=yes".
void PageReader::readMisspelledMark(const Attribute& link, const std::string& address,
                                    const LinkMark& mark) {
  const std::string lower = asciiLower(address);
  const auto query = std::min(lower.find_first_of("?#"), lower.size());
  const auto at = lower.find(mark.inClass, query);
  if (at == lower.npos || queryHoldsMark(Url::fromWebEngine(address), mark.inQuery) ||
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
  add(link.offset, "this mark cannot match: it is spelled \"" + std::string(mark.inQuery) + "\"" +
                       (isSpaced ? ", without blanks" : ""));
}

void PageReader::readClass(std::size_t index) {
  const Tag& tag = scan_.tags[index];
  const Attribute* value = tag.attribute("class");
  if (value == nullptr) {
    return;
  }
  const auto* link = tag.link ? scan_.tags[*tag.link].attribute("href") : nullptr;
  for (const LinkMark& mark : kMarks) {
    const bool isMarkedAnyway =
        link != nullptr && queryHoldsMark(Url::fromWebEngine(link->value), mark.inQuery);
    if (isMarkedAnyway || asciiLower(value->value).find(mark.inClass) == std::string::npos) {
      continue;
    }
    if (!classHolds(tag, mark.inClass)) {
      add(value->offset,
          "this class cannot match: letter case counts in \"" + std::string(mark.inClass) + "\"");
    } else if (!hasClass(value->value, mark.inClass)) {
      continue;  // a longer name, perhaps for a style sheet only
    } else if (link == nullptr) {
      add(value->offset, "this \"" + std::string(mark.inClass) +
                             "\" lies in no link (a with href): clicks on it do nothing");
    } else if (holdsUnmarkedElement(index, mark.inClass)) {
      add(value->offset, "a click on an element inside this one does not find its class \"" +
                             std::string(mark.inClass) + "\": write \"" +
                             std::string(mark.inQuery) + "\" into the link's query");
    }
  }
}

/// Whether a click may fall on a child whose class does not hold the mark.
bool PageReader::holdsUnmarkedElement(std::size_t index, std::string_view mark) const {
  const auto child = firstChild_[index];
  return child && !classHolds(scan_.tags[*child], mark);
}

/// Where marks are never looked for.
void PageReader::readTarget(const Tag& tag) {
  const bool isForm = tag.name == "form";
  const Attribute* address = isForm        ? tag.attribute("action")
                             : isLink(tag) ? tag.attribute("href")
                                           : nullptr;
  const Attribute* target = tag.attribute("target");
  const bool isForNewWindow = target != nullptr && asciiLower(target->value) == "_blank";
  if (address == nullptr || (!isForm && !isForNewWindow)) {
    return;
  }
  const auto parameters = parametersOf(Url::fromWebEngine(address->value).query().value_or(""));
  const auto isMarked = [&](const LinkMark& mark) {
    return std::ranges::find(parameters, mark.inQuery) != parameters.end() ||
           (!isForm && !mark.inClass.empty() && classHolds(tag, mark.inClass));
  };
  if (std::ranges::any_of(kMarks, isMarked) || isMarked(kAppStoreMark)) {
    add(isForm ? address->offset : target->offset,
        isForm ? "marks in the address of a form do nothing: only clicks on links count"
               : "marks do nothing in a link for a new window: leave the target out");
  }
}

void PageReader::readId(std::size_t index) {
  const Tag& tag = scan_.tags[index];
  const Attribute* id = tag.attribute("id");
  if (id == nullptr || asciiLower(trimmed(id->value)) != kCloseControlId) {
    return;
  }
  if (id->value != kCloseControlId) {
    add(id->offset,
        "this id cannot match: it is \"" + std::string(kCloseControlId) + "\", letter by letter");
  } else if (!tag.link) {
    add(id->offset, "this close control lies in no link (a with href): clicks on it do nothing");
  } else if (holdsOnlyText(index)) {
    add(id->offset,
        "a click on this close control's text does not close: give the id to an image, say");
  } else if (firstChild_[index]) {
    add(id->offset,
        "a click on an element inside this close control does not close: give the id to the "
        "innermost one, an image, say");
  }
}

/// Whether the element that begins with that tag holds a text and no element.
bool PageReader::holdsOnlyText(std::size_t index) const {
  if (index + 1 == scan_.tags.size()) {
    return false;
  }
  const Tag& tag = scan_.tags[index];
  const Tag& next = scan_.tags[index + 1];
  const auto contents = html_.substr(tag.end, next.begin - tag.end);
  return next.isEnd && next.name == tag.name && !trimmed(contents).empty() &&
         contents.find("<!--") == contents.npos;
}

void PageReader::readBridge() {
  bool definesList = false;
  bool definesAnswer = false;
  for (const Part part : scan_.scripts) {
    const auto text = html_.substr(part.begin, part.end - part.begin);
    const ScriptScan script(text);
    definesList |= script.defines(kListFunction);
    definesAnswer |= script.defines(kAnswerFunction);
    readList(part.begin, script, text);
  }
  const bool hasOtherScripts = std::ranges::any_of(scan_.tags, [](const Tag& tag) {
    return tag.name == "script" && tag.attribute("src") != nullptr;
  });
  const auto present = definesList ? kListFunction : kAnswerFunction;
  const auto missing = definesList ? kAnswerFunction : kListFunction;
  // A name that is mentioned at all may be defined in a way that is not seen here.
  if (definesList != definesAnswer && !hasOtherScripts && html_.find(missing) == html_.npos) {
    add(html_.find(present), "the page defines " + std::string(present) + ", but not " +
                                 std::string(missing) + ": it is told nothing");
  }
}

void PageReader::readList(std::size_t offset, const ScriptScan& script, std::string_view text) {
  if (const auto list = script.listReturnedBy(kListFunction)) {
    add(offset + *list, std::string(kListFunction) +
                            " returns a list, which counts as none: return a text, joined with "
                            "commas");
  }
  for (const Part part : script.textsReturnedBy(kListFunction)) {
    const auto literal = text.substr(part.begin, part.end - part.begin);
    if (literal.find_first_of("'\n") != literal.npos || literal.find("\\'") != literal.npos ||
        literal.find("\\\\") != literal.npos || literal.find("\\n") != literal.npos) {
      add(offset + part.begin, "the promoted identifier " + inQuotes(literal) +
                                   " holds a quote, a backslash or a line break, which breaks the "
                                   "script that answers the page");
    }
  }
}

}  // namespace

void findInPage(XmlElement page, Findings& findings) { PageReader(page, findings).read(); }

}  // namespace qorix::adcheck
