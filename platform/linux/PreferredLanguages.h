#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qorix {

/// The environment variables that name the user's languages. An empty one counts as unset.
struct LocaleVariables {
  std::string language = {};    // LANGUAGE, a list separated by colons
  std::string lcAll = {};       // LC_ALL
  std::string lcMessages = {};  // LC_MESSAGES
  std::string lang = {};        // LANG
};

/// A locale name ("zh_TW.UTF-8", "sr_RS@latin") as a BCP 47 tag ("zh-Hant-TW", "sr-Latn-RS"). A tag
/// for Chinese always has the script. Absent for a name that is no language, such as C and POSIX.
std::optional<std::string> languageTag(std::string_view localeName);

/// The user's languages, most preferred first, as BCP 47 tags. LANGUAGE decides if it is set, else
/// the first of the others that is. As for message catalogues, LANGUAGE does not count if the
/// others ask for the C locale. Absent if no language remains.
///
/// GLib's g_get_language_names reads the same variables. It puts shorter forms after each language,
/// "zh" after "zh_TW", which would count as another language here, and lets LANGUAGE count in the C
/// locale.
std::optional<std::vector<std::string>> preferredLanguages(const LocaleVariables& variables);

/// The same for the variables of this process. No other thread may change them during the call.
std::optional<std::vector<std::string>> preferredLanguagesFromEnvironment();

}  // namespace qorix
