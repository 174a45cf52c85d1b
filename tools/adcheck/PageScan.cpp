#include "tools/adcheck/PageScan.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <optional>
#include <system_error>
#include <utility>

#include "text/AsciiCase.h"
#include "tools/adcheck/Wording.h"

namespace qorix::adcheck {

namespace {

constexpr std::string_view kPageBlanks = " \t\r\n\f";

/// The character of a reference such as "&amp;" or "&#61;", which is at the beginning of `text` and
/// is cut off it; nothing when there is none, or none of an ASCII character.
std::optional<char> takeReference(std::string_view& text) {
  constexpr std::string_view kAmpersand = "&amp;";
  if (text.starts_with(kAmpersand)) {
    text.remove_prefix(kAmpersand.size());
    return '&';
  }
  constexpr std::size_t kLongest = 16;
  const auto end = text.substr(0, kLongest).find(';');
  if (!text.starts_with("&#") || end == text.npos) {
    return std::nullopt;
  }
  const bool isHexadecimal = asciiLower(text[2]) == 'x';
  const auto digits = text.substr(isHexadecimal ? 3 : 2, end - (isHexadecimal ? 3 : 2));
  constexpr unsigned kAscii = 0x80;
  unsigned code = 0;
  const char* const last = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), last, code, isHexadecimal ? 16 : 10);
  if (error != std::errc() || stop != last || code >= kAscii) {
    return std::nullopt;
  }
  text.remove_prefix(end + 1);
  return static_cast<char>(code);
}

/// As a browser reads it, as far as it matters to marks.
std::string decoded(std::string_view value) {
  std::string text;
  while (!value.empty()) {
    const auto next = std::min(value.find('&'), value.size());
    text += value.substr(0, next);
    value.remove_prefix(next);
    if (const auto character = takeReference(value)) {
      text += *character;
    } else if (!value.empty()) {
      text += '&';
      value.remove_prefix(1);
    }
  }
  return text;
}

/// Follows which elements are open.
class Nesting {
 public:
  explicit Nesting(std::vector<Tag>& tags) : tags_(tags) {}

  void read() {
    for (std::size_t index = 0; index < tags_.size(); ++index) {
      if (tags_[index].isEnd) {
        closeUpTo(tags_[index].name);
      } else {
        open(index);
      }
    }
  }

 private:
  void open(std::size_t index) {
    Tag& tag = tags_[index];
    if (tag.name == "a") {
      closeUpTo(tag.name);  // links do not stand in links
    }
    if (!open_.empty()) {
      tag.parent = open_.back();
      tag.link = tags_[open_.back()].link;
    }
    if (isLink(tag)) {
      tag.link = index;
    }
    const bool isInDrawing =
        tag.name == "svg" || tag.name == "math" || numbers_["svg"] > 0 || numbers_["math"] > 0;
    if (!isVoid(tag.name) && !(tag.isSelfClosing && isInDrawing)) {
      open_.push_back(index);
      ++numbers_[tag.name];
    }
  }

  void closeUpTo(const std::string& name) {
    if (numbers_[name] == 0) {
      return;
    }
    bool isFound = false;
    while (!isFound) {
      const std::string& last = tags_[open_.back()].name;
      isFound = last == name;
      --numbers_[last];
      open_.pop_back();
    }
  }

  static bool isVoid(std::string_view name) {
    static constexpr std::array<std::string_view, 14> kNames = {
        "area", "base",  "br",   "col",  "embed",  "frame", "hr",
        "img",  "input", "link", "meta", "source", "track", "wbr"};
    return std::ranges::find(kNames, name) != kNames.end();
  }

  std::vector<Tag>& tags_;
  std::vector<std::size_t> open_;
  std::map<std::string, std::size_t> numbers_;  // of open elements, by their names
};

class Scanner {
 public:
  explicit Scanner(std::string_view page) : page_(page) {}

  PageScan scan() {
    while ((at_ = page_.find('<', at_)) != page_.npos) {
      if (page_.substr(at_).starts_with("<!--")) {
        skipBehind("-->", at_ + 4);
      } else if (isAsciiLetter(charAt(at_ + 1)) ||
                 (charAt(at_ + 1) == '/' && isAsciiLetter(charAt(at_ + 2)))) {
        readTag();
      } else {
        ++at_;
      }
    }
    Nesting(scan_.tags).read();
    return std::move(scan_);
  }

 private:
  char charAt(std::size_t index) const { return index < page_.size() ? page_[index] : '\0'; }

  std::size_t firstOf(std::string_view characters, std::size_t from) const {
    return std::min(page_.find_first_of(characters, from), page_.size());
  }
  std::size_t firstNotOf(std::string_view characters, std::size_t from) const {
    return std::min(page_.find_first_not_of(characters, from), page_.size());
  }

  void skipBehind(std::string_view mark, std::size_t from) {
    const auto end = page_.find(mark, from);
    at_ = end == page_.npos ? page_.size() : end + mark.size();
  }

  void readTag() {
    Tag tag;
    tag.begin = at_;
    tag.isEnd = charAt(at_ + 1) == '/';
    const std::size_t name = at_ + (tag.isEnd ? 2 : 1);
    at_ = firstOf(" \t\r\n\f/>", name);
    tag.name = asciiLower(page_.substr(name, at_ - name));
    while (readAttribute(tag)) {
    }
    tag.isSelfClosing = page_[at_ - 1] == '/';
    at_ = std::min(at_ + 1, page_.size());
    tag.end = at_;
    static constexpr std::array<std::string_view, 6> kRaw = {"script", "style",    "textarea",
                                                             "title",  "template", "noscript"};
    const bool isRaw = !tag.isEnd && std::ranges::find(kRaw, tag.name) != kRaw.end();
    scan_.tags.push_back(std::move(tag));
    if (isRaw) {
      skipContents(scan_.tags.back().name);
    }
  }

  /// False at the end of the tag, where `at_` then is.
  bool readAttribute(Tag& tag) {
    at_ = firstNotOf(" \t\r\n\f/", at_);
    if (at_ == page_.size() || page_[at_] == '>') {
      return false;
    }
    Attribute attribute;
    const std::size_t name = at_;
    at_ = firstOf(" \t\r\n\f/>=", at_ + 1);  // the first character always belongs to the name
    attribute.name = asciiLower(page_.substr(name, at_ - name));
    attribute.offset = at_;
    const std::size_t sign = firstNotOf(kPageBlanks, at_);
    if (charAt(sign) == '=') {
      readValue(attribute, firstNotOf(kPageBlanks, sign + 1));
    }
    tag.attributes.push_back(std::move(attribute));
    return true;
  }

  void readValue(Attribute& attribute, std::size_t begin) {
    const char quote = charAt(begin);
    const bool isQuoted = quote == '"' || quote == '\'';
    begin += isQuoted ? 1 : 0;
    const std::size_t end =
        isQuoted ? std::min(page_.find(quote, begin), page_.size()) : firstOf(" \t\r\n\f>", begin);
    attribute.offset = begin;
    attribute.value = decoded(page_.substr(begin, end - begin));
    at_ = std::min(end + (isQuoted ? 1 : 0), page_.size());
  }

  /// Only its own end tag ends such an element.
  void skipContents(const std::string& name) {
    const std::size_t begin = at_;
    const std::string end = "</" + name;
    while ((at_ = page_.find("</", at_)) != page_.npos &&
           !startsWithIgnoringCase(page_.substr(at_), end)) {
      at_ += 2;
    }
    at_ = std::min(at_, page_.size());
    if (name == "script") {
      scan_.scripts.push_back({begin, at_});
    }
  }

  std::string_view page_;
  std::size_t at_ = 0;
  PageScan scan_;
};

}  // namespace

const Attribute* Tag::attribute(std::string_view attributeName) const {
  const auto found = std::ranges::find(attributes, attributeName, &Attribute::name);
  return found == attributes.end() ? nullptr : &*found;
}

bool isLink(const Tag& tag) {
  return (tag.name == "a" || tag.name == "area") && tag.attribute("href") != nullptr;
}

PageScan scanPage(std::string_view page) { return Scanner(page).scan(); }

}  // namespace qorix::adcheck
