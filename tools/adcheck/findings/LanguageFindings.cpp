#include <algorithm>
#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "definition/LanguageChoice.h"
#include "text/AsciiCase.h"
#include "tools/adcheck/findings/Findings.h"
#include "tools/common/Wording.h"

namespace qorix::tools::adcheck {

namespace {

/// The code as preferred languages are spelled: "zh-Hans-CN".
std::string asPreferred(std::string_view code) {
  std::string spelled = asciiLower(code);
  std::size_t begin = 0;
  for (std::size_t end = 0; begin < spelled.size(); begin = end + 1) {
    end = std::min(spelled.find_first_of("-_", begin), spelled.size());
    if (begin > 0 && end - begin == 4) {  // a script
      spelled[begin] = asciiUpper(spelled[begin]);
    } else if (begin > 0 && end - begin == 2) {  // a region
      spelled[begin] = asciiUpper(spelled[begin]);
      spelled[begin + 1] = asciiUpper(spelled[begin + 1]);
    }
    if (end < spelled.size()) {
      spelled[end] = '-';
    }
  }
  return spelled;
}

void findInCode(XmlElement language, Findings& findings) {
  const std::string spelled = asPreferred(language.name());
  if (spelled != language.name()) {
    findings.add(
        Rule::languageSpelling, language,
        "no user prefers " + inQuotes(language.name()) + ": it is spelled " + inQuotes(spelled));
  }
}

/// Codes after a shorter one that they begin with, which serves all their users.
void findPrefixes(const std::vector<XmlElement>& languages, Findings& findings) {
  std::map<std::string_view, std::size_t, std::less<>> places;
  for (std::size_t index = 0; index < languages.size(); ++index) {
    places.emplace(languages[index].name(), index);
  }
  for (std::size_t index = 0; index < languages.size(); ++index) {
    const auto code = languages[index].name();
    if (code == kDefaultLanguage) {
      continue;  // nobody's language, though "de" begins it
    }
    for (std::size_t length = 1; length < code.size(); ++length) {
      const auto shorter = places.find(code.substr(0, length));
      if (shorter != places.end() && shorter->second < index) {
        findings.add(Rule::languageShadowed, languages[index],
                     inQuotes(shorter->first) + " and " + inQuotes(code) +
                         " serve the same users, and the first in the document counts: " +
                         inQuotes(code) + " is never used");
        break;
      }
    }
  }
}

}  // namespace

void findInLanguages(XmlElement dictionary, Findings& findings) {
  std::set<std::string_view> codes;
  std::vector<XmlElement> languages;
  for (const XmlElement child : dictionary.children()) {
    findMarkup(child, findings);
    if (child.text().empty()) {
      findings.add(Rule::languageEmpty, child,
                   inQuotes(child.name()) + " has no text and is left out");
    } else if (codes.insert(child.name()).second) {
      languages.push_back(child);
    } else {
      findings.add(Rule::languageRepeated, child,
                   inQuotes(child.name()) + " stands here again, and the last one counts");
    }
  }
  for (const XmlElement language : languages) {
    if (trimmed(language.text()).empty()) {
      findings.add(Rule::languageBlank, language,
                   inQuotes(language.name()) +
                       " holds only blanks: its users see them, not another language");
    }
    if (language.name() != kDefaultLanguage) {
      findInCode(language, findings);
    }
  }
  findPrefixes(languages, findings);
  if (!languages.empty() && !codes.contains(kDefaultLanguage)) {
    findings.add(Rule::languageDefaultMissing, dictionary,
                 std::string(dictionary.name()) +
                     " has no \"default\": users of other languages get nothing");
  }
}

}  // namespace qorix::tools::adcheck
