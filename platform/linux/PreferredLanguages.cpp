#include "platform/linux/PreferredLanguages.h"

#include <algorithm>
#include <cstdlib>

#include "text/AsciiCase.h"

namespace qorix {

namespace {

bool isLanguage(std::string_view text) {
  return (text.size() == 2 || text.size() == 3) && std::ranges::all_of(text, isAsciiLetter);
}

bool isScript(std::string_view text) {
  return text.size() == 4 && std::ranges::all_of(text, isAsciiLetter);
}

bool isRegion(std::string_view text) {
  return (text.size() == 2 && std::ranges::all_of(text, isAsciiLetter)) ||
         (text.size() == 3 && std::ranges::all_of(text, isAsciiDigit));
}

/// Removes the part before the first of `separators` from the front of `text` and returns it.
std::string_view takePart(std::string_view& text, const char* separators) {
  const auto end = text.find_first_of(separators);
  const auto part = text.substr(0, end);
  text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
  return part;
}

std::string scriptOfModifier(std::string_view modifier) {
  struct Entry {
    std::string_view modifier;
    const char* script;
  };
  static constexpr Entry kScripts[] = {
      {"latin", "Latn"}, {"iqtelif", "Latn"}, {"cyrillic", "Cyrl"}, {"devanagari", "Deva"}};
  const std::string name = asciiLower(modifier);
  const auto* entry = std::ranges::find(kScripts, name, &Entry::modifier);
  return entry == std::end(kScripts) ? std::string() : entry->script;
}

std::string chineseScript(std::string_view region) {
  const bool isTraditional = region == "TW" || region == "HK" || region == "MO";
  return isTraditional ? "Hant" : "Hans";
}

const std::string& firstNonEmpty(const std::string& a, const std::string& b, const std::string& c) {
  return !a.empty() ? a : !b.empty() ? b : c;
}

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : value;
}

}  // namespace

std::optional<std::string> languageTag(std::string_view localeName) {
  const auto at = localeName.find('@');
  const auto modifier = at == std::string_view::npos ? "" : localeName.substr(at + 1);
  std::string_view rest = localeName.substr(0, std::min(at, localeName.find('.')));

  const std::string language = asciiLower(takePart(rest, "_-"));
  std::string script;
  if (isScript(rest.substr(0, rest.find_first_of("_-")))) {
    script = asciiLower(takePart(rest, "_-"));
    script[0] = asciiUpper(script[0]);
  }
  const std::string region = asciiUpper(rest);
  if (!isLanguage(language) || !(region.empty() || isRegion(region))) {
    return std::nullopt;
  }
  if (script.empty()) {
    script = scriptOfModifier(modifier);
  }
  if (script.empty() && language == "zh") {
    script = chineseScript(region);
  }
  return language + (script.empty() ? "" : "-" + script) + (region.empty() ? "" : "-" + region);
}

std::optional<std::vector<std::string>> preferredLanguages(const LocaleVariables& variables) {
  const std::string& locale = firstNonEmpty(variables.lcAll, variables.lcMessages, variables.lang);
  const bool isUntranslated = locale == "C" || locale == "POSIX";
  std::string_view rest =
      variables.language.empty() || isUntranslated ? locale : variables.language;

  std::vector<std::string> languages;
  while (!rest.empty()) {
    if (auto tag = languageTag(takePart(rest, ":"))) {
      languages.push_back(std::move(*tag));
    }
  }
  return languages.empty() ? std::nullopt : std::optional(std::move(languages));
}

std::optional<std::vector<std::string>> preferredLanguagesFromEnvironment() {
  return preferredLanguages({.language = variable("LANGUAGE"),
                             .lcAll = variable("LC_ALL"),
                             .lcMessages = variable("LC_MESSAGES"),
                             .lang = variable("LANG")});
}

}  // namespace qorix
