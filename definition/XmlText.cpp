#include "definition/XmlText.h"

#include <utf8.h>

#include <algorithm>
#include <array>

namespace qorix {

namespace {

bool isPlainCharacter(char c) { return c >= ' ' || c == '\n' || c == '\t'; }
bool isAscii(char c) { return c >= 0; }

/// Whether a run of bytes beyond ASCII is a run of characters that XML allows.
bool isRunOfCharacters(std::string_view run) {
  return utf8::is_valid(run.begin(), run.end()) && run.find("\xEF\xBF\xBE") == run.npos &&
         run.find("\xEF\xBF\xBF") == run.npos;
}

struct Reference {
  std::string_view written;
  char character;
};
constexpr std::array<Reference, 5> kReferences = {
    {{"&lt;", '<'}, {"&gt;", '>'}, {"&amp;", '&'}, {"&quot;", '"'}, {"&apos;", '\''}}};

}  // namespace

bool appendSection(std::string& text, std::string_view section) {
  const auto takeRun = [&](auto isEnd) {
    const auto end = std::find_if(section.begin(), section.end(), isEnd);
    const auto run = section.substr(0, static_cast<std::size_t>(end - section.begin()));
    section.remove_prefix(run.size());
    return run;
  };
  while (true) {
    text += takeRun([](char c) { return !isPlainCharacter(c); });
    if (section.empty()) {
      return true;
    }
    if (section.front() == '\r') {  // a document's lines may also end in CR or CR LF
      section.remove_prefix(1);
      if (!section.starts_with('\n')) {
        text += '\n';
      }
      continue;
    }
    const auto run = takeRun(isAscii);
    if (run.empty() || !isRunOfCharacters(run)) {
      return false;
    }
    text += run;
  }
}

bool appendBetweenTags(std::string& text, std::string_view between) {
  if (between.find("]]>") != between.npos) {
    return false;
  }
  while (true) {
    const std::size_t plain = std::min(between.find('&'), between.size());
    if (!appendSection(text, between.substr(0, plain))) {
      return false;
    }
    between.remove_prefix(plain);
    if (between.empty()) {
      return true;
    }
    const auto* const reference = std::ranges::find_if(
        kReferences, [&](const Reference& each) { return between.starts_with(each.written); });
    if (reference == kReferences.end()) {
      return false;
    }
    text += reference->character;
    between.remove_prefix(reference->written.size());
  }
}

}  // namespace qorix
