#include "definition/LanguageChoice.h"

#include <algorithm>

#include <qorix/platform/Platform.h>

namespace qorix {

std::string preferredLanguage() {
  const auto languages = platform().standardUserDefaults->stringArrayForKey(kAppleLanguagesKey);
  return languages && !languages->empty() ? languages->front() : "en";
}

const std::pair<std::string, std::string>* entryForLanguage(const LocalizedTexts& texts,
                                                            std::string_view language) {
  auto entry = std::ranges::find_if(
      texts, [&](const auto& candidate) { return language.starts_with(candidate.first); });
  if (entry == texts.end()) {
    entry = std::ranges::find_if(
        texts, [](const auto& candidate) { return candidate.first == kDefaultLanguage; });
  }
  return entry == texts.end() ? nullptr : &*entry;
}

}  // namespace qorix
