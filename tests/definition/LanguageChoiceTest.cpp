#include <qorix/MyPushAdInfo.h>

#include "definition/LanguageChoice.h"
#include "support/CheckLines.h"
#include "support/DefinitionTest.h"

namespace qorix {
namespace {

const std::string kLanguageLine =
    checkLine("+[MyPushAdInfo localizedValueInDict:]", 130, kVerifyFailedMessage);

class LanguageChoiceTest : public DefinitionTest {
 protected:
  void prefer(const std::vector<std::string>& languages) {
    userDefaults_->setStringArray(languages, kAppleLanguagesKey);
  }

  static std::optional<std::string> choose(const LocalizedTexts& texts) {
    return MyPushAdInfo::localizedValueInDict(&texts);
  }
};

TEST_F(LanguageChoiceTest, onlyTheFirstPreferenceCounts) {
  prefer({"de-DE", "en-US"});
  EXPECT_EQ(choose({{"en", "English"}, {"default", "Default"}}), "Default");
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(LanguageChoiceTest, withoutPreferencesTheLanguageIsEnglish) {
  EXPECT_EQ(choose({{"default", "Default"}, {"en", "English"}}), "English");
  EXPECT_EQ(choose({{"default", "Default"}, {"ja", "Japanese"}}), "Default");
  EXPECT_EQ(preferredLanguage(), "en");
  prefer({});
  EXPECT_EQ(preferredLanguage(), "en");
  EXPECT_EQ(choose({{"default", "Default"}, {"en", "English"}}), "English");
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(LanguageChoiceTest, anEmptyEntryForTheLanguageIsNotReplacedByTheDefault) {
  prefer({"en-US"});
  EXPECT_EQ(choose({{"en", ""}, {"default", "Default"}}), "");
  EXPECT_EQ(log_->lines(), Lines{kLanguageLine});
}

TEST_F(LanguageChoiceTest, withNeitherTheLanguageNorADefaultThereIsNothing) {
  prefer({"de-DE"});
  EXPECT_EQ(choose({{"en", "English"}}), std::nullopt);
  EXPECT_EQ(log_->lines(), Lines{kLanguageLine});
}

TEST_F(LanguageChoiceTest, anAbsentDictionaryGivesNothing) {
  EXPECT_EQ(MyPushAdInfo::localizedValueInDict(nullptr), std::nullopt);
  EXPECT_EQ(log_->lines(), Lines{kLanguageLine});
}

TEST_F(LanguageChoiceTest, anEmptyDefaultIsReturnedAndLogged) {
  prefer({"de"});
  EXPECT_EQ(choose({{"default", ""}}), "");
  EXPECT_EQ(log_->lines(), Lines{kLanguageLine});
}

TEST_F(LanguageChoiceTest, aCodeServesEveryLanguageThatBeginsWithIt) {
  const LocalizedTexts texts = {
      {"en", "en"}, {"zh-Hans", "zh-Hans"}, {"pt-BR", "pt-BR"}, {"default", "default"}};
  const std::vector<std::pair<std::string, std::string>> expectations = {{"en", "en"},
                                                                         {"en-US", "en"},
                                                                         {"en-GB", "en"},
                                                                         {"zh-Hans-CN", "zh-Hans"},
                                                                         {"zh-Hant-TW", "default"},
                                                                         {"zh", "default"},
                                                                         {"pt-BR", "pt-BR"},
                                                                         {"pt-PT", "default"},
                                                                         {"EN-US", "default"},
                                                                         {"eng", "en"},
                                                                         {"default-x", "default"}};
  for (const auto& [language, expected] : expectations) {
    prefer({language});
    EXPECT_EQ(choose(texts), expected) << language;
  }
}

TEST_F(LanguageChoiceTest, codesAreTriedInTheDocumentsOrder) {
  prefer({"zh-Hans-CN"});
  EXPECT_EQ(choose({{"zh", "short"}, {"zh-Hans", "long"}}), "short");
  EXPECT_EQ(choose({{"zh-Hans", "long"}, {"zh", "short"}}), "long");
  prefer({"default-x"});
  EXPECT_EQ(choose({{"default", "Default"}, {"default-x", "Exact"}}), "Default");
}

TEST_F(LanguageChoiceTest, titleAndPageAreChosenFromTheirOwnTexts) {
  const auto info = MyPushAdInfo::createInstance();
  EXPECT_EQ(info->localizedTitle(), std::nullopt);
  EXPECT_EQ(info->localizedHtmlString(), std::nullopt);
  EXPECT_EQ(log_->lines(), (Lines{kLanguageLine, kLanguageLine}));
  info->setTitleDict(LocalizedTexts{{"en", "title"}});
  info->setHtmlContentsDict(LocalizedTexts{{"en", "page"}});
  EXPECT_EQ(info->localizedTitle(), "title");
  EXPECT_EQ(info->localizedHtmlString(), "page");
}

}  // namespace
}  // namespace qorix
