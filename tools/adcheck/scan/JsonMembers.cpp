#include "tools/adcheck/scan/JsonMembers.h"

#include <algorithm>
#include <utility>

#include "definition/Json.h"

namespace qorix::tools::adcheck {

namespace {

/// Walks over a text that parseJson has accepted, so it checks nothing.
class Walk {
 public:
  Walk(std::string_view json, std::size_t offset) : json_(json), offset_(offset) {}

  std::size_t offset() const { return offset_; }
  char here() const { return offset_ < json_.size() ? json_[offset_] : '\0'; }
  void step() { ++offset_; }

  void skipBlanks() {
    offset_ = std::min(json_.find_first_not_of(" \t\r\n", offset_), json_.size());
  }

  /// The string with its quotes, as it is written.
  std::string_view string() {
    const std::size_t begin = offset_;
    for (++offset_; here() != '"' && here() != '\0'; ++offset_) {
      offset_ += here() == '\\' ? 1 : 0;
    }
    offset_ = std::min(offset_ + 1, json_.size());
    return json_.substr(begin, offset_ - begin);
  }

  /// Goes to the end of the value that begins here.
  void skipValue() {
    std::size_t depth = 0;
    do {
      const char c = here();
      if (c == '"') {
        string();
        continue;
      }
      depth += c == '{' || c == '[' ? 1 : 0;
      depth -= c == '}' || c == ']' ? 1 : 0;
      const bool isNested = depth > 0 || c == '}' || c == ']';
      offset_ = isNested ? offset_ + 1
                         : std::min(json_.find_first_of(" \t\r\n,]}", offset_), json_.size());
    } while (depth > 0 && offset_ < json_.size());
  }

 private:
  std::string_view json_;
  std::size_t offset_;
};

/// The value of a string literal.
std::string contentsOf(std::string_view literal) {
  const auto list = parseJson('[' + std::string(literal) + ']');
  const auto* elements = list ? list->as<Array>() : nullptr;
  const auto* text =
      elements == nullptr || elements->empty() ? nullptr : elements->front().as<std::string>();
  return text == nullptr ? std::string() : *text;
}

}  // namespace

std::size_t firstValueOf(std::string_view json) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  Walk walk(json, json.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
  walk.skipBlanks();
  return walk.offset();
}

std::vector<JsonMember> membersAt(std::string_view json, std::size_t offset) {
  std::vector<JsonMember> members;
  Walk walk(json, offset);
  if (walk.here() != '{') {
    return members;
  }
  walk.step();
  walk.skipBlanks();
  while (walk.here() == '"') {
    JsonMember member;
    member.nameOffset = walk.offset();
    member.name = contentsOf(walk.string());
    walk.skipBlanks();
    walk.step();  // the colon
    walk.skipBlanks();
    member.valueOffset = walk.offset();
    walk.skipValue();
    members.push_back(std::move(member));
    walk.skipBlanks();
    walk.step();  // the comma or the end
    walk.skipBlanks();
  }
  return members;
}

}  // namespace qorix::tools::adcheck
