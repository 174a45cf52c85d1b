#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qorix {

/// The environment variables that name the user's languages; empty counts as unset.
struct LocaleVariables {
  std::string language = {};    // LANGUAGE, a list separated by colons
  std::string lcAll = {};       // LC_ALL
  std::string lcMessages = {};  // LC_MESSAGES
  std::string lang = {};        // LANG
};

/// One locale name of the platform ("zh_TW.UTF-8", "sr_RS@latin") as a BCP 47 tag ("zh-Hant-TW",
/// "sr-Latn-RS"); Chinese always carries its script. Nothing for names that are no language, such
/// as C and POSIX.
std::optional<std::string> languageTag(std::string_view localeName);

/// The user's languages, most preferred first, as BCP 47 tags: the first variable that is set
/// decides. LANGUAGE is ignored when the other ones ask for the C locale, as message catalogues do.
/// Nothing when no language remains.
std::optional<std::vector<std::string>> preferredLanguages(const LocaleVariables& variables);

/// The same for the variables of this process. No other thread may change them meanwhile.
std::optional<std::vector<std::string>> preferredLanguagesFromEnvironment();

}  // namespace qorix
