#include "tools/adcheck/PageScan.h"

#include <algorithm>
#include <utility>

#include "tools/adcheck/Wording.h"

namespace qorix::adcheck {

namespace {

constexpr std::string_view kBlanks = " \t\r\n\f";

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool startsWithIgnoringCase(std::string_view text, std::string_view start) {
  return text.size() >= start.size() &&
         std::equal(start.begin(), start.end(), text.begin(),
                    [](char a, char b) { return lower(a) == lower(b); });
}

class Scanner {
 public:
  explicit Scanner(std::string_view page) : page_(page) {}

  PageScan scan() {
    while ((at_ = page_.find('<', at_)) != page_.npos) {
      if (page_.substr(at_).starts_with("<!--")) {
        skipBehind("-->", at_ + 4);
      } else if (isLetter(charAt(at_ + 1)) ||
                 (charAt(at_ + 1) == '/' && isLetter(charAt(at_ + 2)))) {
        readTag();
      } else {
        ++at_;
      }
    }
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
    tag.name = inLowerCase(page_.substr(name, at_ - name));
    while (readAttribute(tag)) {
    }
    at_ = std::min(at_ + 1, page_.size());
    tag.end = at_;
    const bool isRaw = !tag.isEnd && (tag.name == "script" || tag.name == "style" ||
                                      tag.name == "textarea" || tag.name == "title");
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
    attribute.name = inLowerCase(page_.substr(name, at_ - name));
    attribute.offset = at_;
    const std::size_t sign = firstNotOf(kBlanks, at_);
    if (charAt(sign) == '=') {
      readValue(attribute, firstNotOf(kBlanks, sign + 1));
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
    attribute.value = page_.substr(begin, end - begin);
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

PageScan scanPage(std::string_view page) { return Scanner(page).scan(); }

}  // namespace qorix::adcheck
