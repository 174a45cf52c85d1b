#pragma once

#include <string>
#include <string_view>
#include <utility>

#include <qorix/MyPushAdInfo.h>

namespace qorix {

/// The language of the texts for users whose own language has none.
inline constexpr std::string_view kDefaultLanguage = "default";

/// The user's first preferred language; "en" if there is none. Main thread (reads the settings).
std::string preferredLanguage();

/// The entry for `language`: the first with a code that `language` begins with, else the one under
/// "default". Null if there is neither.
const std::pair<std::string, std::string>* entryForLanguage(const LocalizedTexts& texts,
                                                            std::string_view language);

}  // namespace qorix
