#include "definition/XmlText.h"

#include <utf8.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <optional>

#include "text/Utf8.h"

namespace qorix {

namespace {

bool isPlainCharacter(char c) { return (isAscii(c) && c >= ' ') || c == '\n' || c == '\t'; }

/// Whether a run of bytes beyond ASCII is a run of characters that XML allows.
bool isRunOfCharacters(std::string_view run) {
  return utf8::is_valid(run.begin(), run.end()) && run.find("\xEF\xBF\xBE") == run.npos &&
         run.find("\xEF\xBF\xBF") == run.npos;
}

struct Reference {
  std::string_view written;
  char32_t character;
};
constexpr std::array<Reference, 5> kReferences = {
    {{"&lt;", '<'}, {"&gt;", '>'}, {"&amp;", '&'}, {"&quot;", '"'}, {"&apos;", '\''}}};

bool isBasicCharacter(std::uint16_t number) {
  return number < ' ' ? number == '\t' || number == '\n' || number == '\r' : number < 0xD800;
}

/// The reference by number with which `text` begins, if it is to a character below the surrogates.
std::optional<Reference> numericReference(std::string_view text) {
  const std::string_view mark = text.starts_with("&#x") ? "&#x" : "&#";
  if (!text.starts_with(mark)) {
    return std::nullopt;
  }
  std::uint16_t number = 0;
  const char* const textEnd = text.data() + text.size();
  const auto [end, error] =
      std::from_chars(text.data() + mark.size(), textEnd, number, mark == "&#x" ? 16 : 10);
  if (error != std::errc() || end == textEnd || *end != ';' || !isBasicCharacter(number)) {
    return std::nullopt;
  }
  return Reference{text.substr(0, static_cast<std::size_t>(end + 1 - text.data())), number};
}

std::optional<Reference> firstReference(std::string_view text) {
  const auto* const named = std::ranges::find_if(
      kReferences, [&](const Reference& each) { return text.starts_with(each.written); });
  return named != kReferences.end() ? std::optional(*named) : numericReference(text);
}

}  // namespace

bool appendCharacters(std::string& text, std::string_view section) {
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
    if (!appendCharacters(text, between.substr(0, plain))) {
      return false;
    }
    between.remove_prefix(plain);
    if (between.empty()) {
      return true;
    }
    const auto reference = firstReference(between);
    if (!reference) {
      return false;
    }
    if (reference->character < 0x80) {
      text += static_cast<char>(reference->character);
    } else {
      utf8::append(reference->character, std::back_inserter(text));
    }
    between.remove_prefix(reference->written.size());
  }
}

}  // namespace qorix
