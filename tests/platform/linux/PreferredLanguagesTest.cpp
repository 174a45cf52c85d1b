#include <gmock/gmock.h>

#include <cstdlib>
#include <utility>

#include "platform/linux/PreferredLanguages.h"

namespace qorix {
namespace {

using ::testing::ElementsAre;
using ::testing::Optional;

TEST(PreferredLanguagesTest, isBcp47WithTheRegion) {
  const std::pair<const char*, const char*> kCases[] = {
      {"pt_BR.UTF-8", "pt-BR"},
      {"de_DE@euro", "de-DE"},
      {"de_AT.ISO-8859-1@euro", "de-AT"},
      {"EN_us", "en-US"},
      {"es_419", "es-419"},
      {"fil_PH", "fil-PH"},
      {"fr", "fr"},
      {"pt-BR", "pt-BR"},
      {"sr_RS@latin", "sr-Latn-RS"},
      {"uz_UZ.UTF-8@cyrillic", "uz-Cyrl-UZ"},
      {"ks_IN@devanagari", "ks-Deva-IN"},
  };
  for (const auto& [locale, tag] : kCases) {
    EXPECT_THAT(languageTag(locale), Optional(std::string(tag))) << locale;
  }
}

TEST(PreferredLanguagesTest, chineseCarriesItsScript) {
  const std::pair<const char*, const char*> kCases[] = {
      {"zh_CN.UTF-8", "zh-Hans-CN"}, {"zh_SG", "zh-Hans-SG"},      {"zh_TW", "zh-Hant-TW"},
      {"zh_HK.UTF-8", "zh-Hant-HK"}, {"zh_MO", "zh-Hant-MO"},      {"zh", "zh-Hans"},
      {"zh_Hant", "zh-Hant"},        {"zh-hans-HK", "zh-Hans-HK"},
  };
  for (const auto& [locale, tag] : kCases) {
    EXPECT_THAT(languageTag(locale), Optional(std::string(tag))) << locale;
  }
}

TEST(PreferredLanguagesTest, isNothingForWhatIsNoLanguage) {
  for (const char* locale :
       {"", "C", "POSIX", "C.UTF-8", "_DE", "d", "deutsch", "de_DEU", "de_D", "de_DE_1996", "12_DE",
        "d\xC3\xA9_FR", "/usr/share/locale/de", "../de", ".UTF-8", "@euro"}) {
    EXPECT_EQ(languageTag(locale), std::nullopt) << locale;
  }
}

TEST(PreferredLanguagesTest, theListComesFirstInItsOrder) {
  EXPECT_THAT(preferredLanguages({.language = "pt_BR:pt:en", .lcAll = "de_DE.UTF-8"}),
              Optional(ElementsAre("pt-BR", "pt", "en")));
}

TEST(PreferredLanguagesTest, theFirstLocaleThatIsSetDecidesWithoutAList) {
  EXPECT_THAT(preferredLanguages({.lcAll = "de_DE", .lcMessages = "fr_FR", .lang = "it_IT"}),
              Optional(ElementsAre("de-DE")));
  EXPECT_THAT(preferredLanguages({.lcMessages = "fr_FR", .lang = "it_IT"}),
              Optional(ElementsAre("fr-FR")));
  EXPECT_THAT(preferredLanguages({.lang = "it_IT"}), Optional(ElementsAre("it-IT")));
}

TEST(PreferredLanguagesTest, theListIsIgnoredInTheCLocale) {
  EXPECT_EQ(preferredLanguages({.language = "de:en", .lcAll = "C"}), std::nullopt);
  EXPECT_EQ(preferredLanguages({.language = "de:en", .lang = "POSIX"}), std::nullopt);
  EXPECT_EQ(preferredLanguages({.language = "de", .lcMessages = "C", .lang = "fr_FR"}),
            std::nullopt);
}

TEST(PreferredLanguagesTest, theListCountsInTheCLocaleWithACharacterSetAndWithoutAnyLocale) {
  EXPECT_THAT(preferredLanguages({.language = "de", .lang = "C.UTF-8"}),
              Optional(ElementsAre("de")));
  EXPECT_THAT(preferredLanguages({.language = "de"}), Optional(ElementsAre("de")));
}

TEST(PreferredLanguagesTest, entriesThatAreNoLanguageAreDropped) {
  EXPECT_THAT(preferredLanguages({.language = ":C::de_DE:POSIX:nonsense:en:", .lang = "de_DE"}),
              Optional(ElementsAre("de-DE", "en")));
}

TEST(PreferredLanguagesTest, areAbsentWhenNothingRemains) {
  EXPECT_EQ(preferredLanguages({}), std::nullopt);
  EXPECT_EQ(preferredLanguages({.lang = "C.UTF-8"}), std::nullopt);
  EXPECT_EQ(preferredLanguages({.language = "C:nonsense", .lang = "de_DE"}), std::nullopt);
}

TEST(PreferredLanguagesTest, areReadFromTheEnvironment) {
  ::setenv("LANGUAGE", "zh_TW:en", 1);
  ::setenv("LC_ALL", "", 1);
  ::setenv("LC_MESSAGES", "", 1);
  ::setenv("LANG", "de_DE.UTF-8", 1);
  EXPECT_THAT(preferredLanguagesFromEnvironment(), Optional(ElementsAre("zh-Hant-TW", "en")));
  ::unsetenv("LANGUAGE");
  EXPECT_THAT(preferredLanguagesFromEnvironment(), Optional(ElementsAre("de-DE")));
  ::setenv("LC_MESSAGES", "fr_FR", 1);
  EXPECT_THAT(preferredLanguagesFromEnvironment(), Optional(ElementsAre("fr-FR")));
  ::setenv("LC_ALL", "C", 1);
  EXPECT_EQ(preferredLanguagesFromEnvironment(), std::nullopt);
}

}  // namespace
}  // namespace qorix
