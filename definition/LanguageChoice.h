#pragma once

#include <string>
#include <string_view>
#include <utility>

#include <qorix/MyPushAdInfo.h>

namespace qorix {

/// The language of the texts that serve whoever has none of his own.
inline constexpr std::string_view kDefaultLanguage = "default";

/// The user's first preferred language, or English. Main thread (reads the settings).
std::string preferredLanguage();

/// The entry that serves `language`: the first whose code it begins with, else the one under
/// "default". Null when there is neither.
const std::pair<std::string, std::string>* entryForLanguage(const LocalizedTexts& texts,
                                                            std::string_view language);

}  // namespace qorix
