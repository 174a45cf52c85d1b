#include <cstdint>
#include <limits>

#include <qorix/MyPushAdInfo.h>

#include "definition/DefinitionTest.h"
#include "definition/LanguageChoice.h"
#include "support/CheckLines.h"

namespace qorix {
namespace {

const std::string kLanguageLine =
    checkLine("+[MyPushAdInfo localizedValueInDict:]", 130, kVerifyFailedMessage);

std::string fieldLine(int line) {
  return checkLine("-[MyPushAdInfo doCheck]", line, kVerifyFailedMessage);
}

Lines fieldLines(const std::vector<int>& numbers) {
  Lines lines;
  for (const int number : numbers) {
    lines.push_back(fieldLine(number));
  }
  return lines;
}

std::string mergeLine(int line) {
  return checkLine("-[MyPushAdInfo doParseCustomizationAndMerge]", line, kFatalMessage);
}

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

class CheckTest : public DefinitionTest {
 protected:
  /// A record that no rule finds fault with.
  template <class Self = MyPushAdInfo>
  static std::shared_ptr<Self> soundRecord() {
    auto info = MyPushAdInfo::createInstance<Self>();
    info->setAdId(1);
    info->setEnable(true);
    info->setVersion("1a1");
    info->setWidth(1);
    info->setHeight(1);
    info->setCount(1);
    info->setAdvance("{}");
    info->setNotes("note");
    info->setTitleDict(LocalizedTexts{});
    info->setHtmlContentsDict(LocalizedTexts{});
    return info;
  }
};

TEST_F(CheckTest, aFreshRecordFailsMostRulesInOrder) {
  MyPushAdInfo::createInstance()->doCheck();
  EXPECT_EQ(log_->lines(), fieldLines({97, 99, 101, 102, 103, 105, 107, 108, 109}));
}

TEST_F(CheckTest, aSoundRecordWithEmptyDictionariesLogsNothing) {
  soundRecord()->doCheck();
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(CheckTest, eachRuleHasItsOwnLine) {
  const std::vector<std::pair<int, void (*)(MyPushAdInfo&)>> defects = {
      {97, [](MyPushAdInfo& info) { info.setAdId(0); }},
      {97, [](MyPushAdInfo& info) { info.setAdId(-1); }},
      {99, [](MyPushAdInfo& info) { info.setVersion(""); }},
      {99, [](MyPushAdInfo& info) { info.setVersion(std::nullopt); }},
      {100, [](MyPushAdInfo& info) { info.setEmbed(-1); }},
      {101, [](MyPushAdInfo& info) { info.setWidth(0); }},
      {102, [](MyPushAdInfo& info) { info.setHeight(0); }},
      {103, [](MyPushAdInfo& info) { info.setCount(0); }},
      {104, [](MyPushAdInfo& info) { info.setDelay(-1); }},
      {105, [](MyPushAdInfo& info) { info.setAdvance(""); }},
      {105, [](MyPushAdInfo& info) { info.setAdvance(std::nullopt); }},
      {106, [](MyPushAdInfo& info) { info.setAdvanceDict(std::nullopt); }},
      {107, [](MyPushAdInfo& info) { info.setNotes(""); }},
      {107, [](MyPushAdInfo& info) { info.setNotes(std::nullopt); }},
      {108, [](MyPushAdInfo& info) { info.setTitleDict(std::nullopt); }},
      {109, [](MyPushAdInfo& info) { info.setHtmlContentsDict(std::nullopt); }},
  };
  for (const auto& [line, spoil] : defects) {
    const auto info = soundRecord();
    spoil(*info);
    info->doCheck();
    EXPECT_EQ(log_->takeLines(), Lines{fieldLine(line)});
  }
}

class WaveringInfo : public MyPushAdInfo {
 public:
  bool enable() const override { return readings_++ % 2 == 1; }

 private:
  mutable int readings_ = 0;
};

TEST_F(CheckTest, aSwitchThatReadsOffAndThenOnIsReported) {
  soundRecord<WaveringInfo>()->doCheck();
  EXPECT_EQ(log_->lines(), Lines{fieldLine(98)});
}

TEST_F(CheckTest, allThirteenRulesAreToldInTheirOrder) {
  const auto info = MyPushAdInfo::createInstance<WaveringInfo>();
  info->setEmbed(-1);
  info->setDelay(-1);
  info->setAdvanceDict(std::nullopt);
  info->doCheck();
  EXPECT_EQ(log_->lines(),
            fieldLines({97, 98, 99, 100, 101, 102, 103, 104, 105, 106, 107, 108, 109}));
}

TEST_F(CheckTest, aSwitchedOffRecordIsNoDefect) {
  const auto info = soundRecord();
  info->setEnable(false);
  info->doCheck();
  EXPECT_TRUE(log_->lines().empty());
}

class MergeTest : public DefinitionTest {
 protected:
  MergeTest() {
    info_->setEnable(false);
    info_->setVersion("1a1");
    info_->setEmbed(1);
    info_->setWidth(2);
    info_->setHeight(3);
    info_->setOffsetx(4);
    info_->setOffsety(5);
    info_->setCount(6);
    info_->setDelay(7);
    info_->setNotes("note");
  }

  void merge(const std::optional<std::string>& advance) {
    info_->setAdvance(advance);
    info_->doParseCustomizationAndMerge();
  }

  /// Merges the entry for this host.
  void mergeEntry(const std::string& entry) { merge("{\"com.example.editor\":" + entry + "}"); }

  void expectUnchanged() const {
    EXPECT_FALSE(info_->enable());
    EXPECT_EQ(info_->version(), "1a1");
    EXPECT_EQ(info_->embed(), 1);
    EXPECT_EQ(info_->width(), 2);
    EXPECT_EQ(info_->height(), 3);
    EXPECT_EQ(info_->offsetx(), 4);
    EXPECT_EQ(info_->offsety(), 5);
    EXPECT_EQ(info_->count(), 6);
    EXPECT_EQ(info_->delay(), 7);
    EXPECT_EQ(info_->notes(), "note");
  }

  bool isAdvanceDictEmpty() const { return info_->advanceDict() && info_->advanceDict()->empty(); }

  const std::shared_ptr<MyPushAdInfo> info_ = MyPushAdInfo::createInstance();
};

TEST_F(MergeTest, anEmptyObjectChangesNothingAndLogsNothing) {
  merge("{}");
  expectUnchanged();
  EXPECT_TRUE(isAdvanceDictEmpty());
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(MergeTest, whatIsNoJsonObjectIsRefused) {
  for (const auto* advance : {"", "[]", "not JSON", "1", "\"text\"", "{} trailing", "{\"a\":1,}"}) {
    merge(advance);
    EXPECT_EQ(log_->takeLines(), Lines{mergeLine(153)}) << advance;
  }
  expectUnchanged();
  EXPECT_TRUE(isAdvanceDictEmpty());
}

TEST_F(MergeTest, anAbsentCustomisationIsReportedBeforeAnAbsentHost) {
  merge(std::nullopt);
  EXPECT_EQ(log_->takeLines(), Lines{mergeLine(146)});
  installHost(std::nullopt);
  merge(std::nullopt);
  EXPECT_EQ(log_->takeLines(), Lines{mergeLine(146)});
  expectUnchanged();
}

TEST_F(MergeTest, aHostWithoutIdentifierIsRefused) {
  for (const auto& host : {std::optional<std::string>(), std::optional<std::string>("")}) {
    installHost(host);
    for (const auto* advance : {"{\"\":{\"embed\":9}}", "", "not JSON", "{\"\xFF\":1}"}) {
      merge(advance);
      EXPECT_EQ(log_->takeLines(), Lines{mergeLine(147)}) << advance;
    }
  }
  expectUnchanged();
}

TEST_F(MergeTest, aTextThatIsNoUnicodeIsRefused) {
  merge("{\"\xFF\":1}");
  EXPECT_EQ(log_->takeLines(), Lines{mergeLine(150)});
  merge("\xED\xA0\x80");
  EXPECT_EQ(log_->takeLines(), Lines{mergeLine(150)});
  expectUnchanged();
}

TEST_F(MergeTest, everyMemberOfTheHostsEntryIsMerged) {
  mergeEntry(R"({"enable":1,"version":"2b2","embed":11,"width":12,"height":13,"offsetx":14,)"
             R"("offsety":15,"count":16,"delay":17,"notes":"other","extra":"kept"})");
  EXPECT_TRUE(info_->enable());
  EXPECT_EQ(info_->version(), "2b2");
  EXPECT_EQ(info_->embed(), 11);
  EXPECT_EQ(info_->width(), 12);
  EXPECT_EQ(info_->height(), 13);
  EXPECT_EQ(info_->offsetx(), 14);
  EXPECT_EQ(info_->offsety(), 15);
  EXPECT_EQ(info_->count(), 16);
  EXPECT_EQ(info_->delay(), 17);
  EXPECT_EQ(info_->notes(), "other");
  EXPECT_EQ(info_->advanceDict()->size(), 11U);
  EXPECT_EQ(*find(*info_->advanceDict(), "extra")->as<std::string>(), "kept");
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(MergeTest, trueSwitchesOnAndFractionsAreTruncatedAndTextsAreNoNumbers) {
  mergeEntry(R"({"enable":true,"width":"320","delay":2.7})");
  EXPECT_TRUE(info_->enable());
  EXPECT_EQ(info_->delay(), 2);
  EXPECT_EQ(info_->width(), 2);
}

TEST_F(MergeTest, theSwitchGoesByTheIntegerValue) {
  const std::vector<std::pair<std::string, bool>> expectations = {
      {"1", true}, {"0", false},   {"-1", true},    {"true", true}, {"false", false},
      {"2", true}, {"0.9", false}, {"-0.5", false}, {"1.9", true},  {"1e400", true}};
  for (const auto& [number, expected] : expectations) {
    info_->setEnable(!expected);
    mergeEntry("{\"enable\":" + number + "}");
    EXPECT_EQ(info_->enable(), expected) << number;
  }
  for (const auto* foreign : {"\"1\"", "null", "[1]", "{}"}) {
    info_->setEnable(false);
    mergeEntry(std::string("{\"enable\":") + foreign + "}");
    EXPECT_FALSE(info_->enable()) << foreign;
    info_->setEnable(true);
    mergeEntry(std::string("{\"enable\":") + foreign + "}");
    EXPECT_TRUE(info_->enable()) << foreign;
  }
}

TEST_F(MergeTest, integersAreTruncatedTowardZeroAndSaturate) {
  mergeEntry(R"({"embed":-0.5,"width":1.9,"height":-1.9,"offsetx":true,"offsety":-1e400,)"
             R"("count":18446744073709551616,"delay":9223372036854775807})");
  EXPECT_EQ(info_->embed(), 0);
  EXPECT_EQ(info_->width(), 1);
  EXPECT_EQ(info_->height(), -1);
  EXPECT_EQ(info_->offsetx(), 1);
  EXPECT_EQ(info_->offsety(), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(info_->count(), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(info_->delay(), std::numeric_limits<std::int64_t>::max());
}

TEST_F(MergeTest, membersOfOtherTypesAndEmptyTextsAreSkipped) {
  mergeEntry(R"({"enable":"1","version":"","embed":"9","width":null,"height":[],"offsetx":{},)"
             R"("offsety":"x","count":"1","delay":"1","notes":""})");
  expectUnchanged();
  EXPECT_EQ(info_->advanceDict()->size(), 10U);
  mergeEntry(R"({"version":2,"notes":3})");
  expectUnchanged();
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(MergeTest, anEntryForAnotherHostChangesNothing) {
  merge(R"({"com.example.viewer":{"embed":9},"COM.EXAMPLE.EDITOR":{"embed":9}})");
  expectUnchanged();
  EXPECT_TRUE(isAdvanceDictEmpty());
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(MergeTest, anEntryThatIsNoObjectChangesNothing) {
  for (const auto* entry : {"1", "[]", "null", "\"text\"", "true"}) {
    mergeEntry(entry);
    EXPECT_TRUE(isAdvanceDictEmpty()) << entry;
  }
  expectUnchanged();
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(MergeTest, anEarlyStopKeepsTheEntryOfAnEarlierMerge) {
  mergeEntry(R"({"embed":9})");
  merge("not JSON");
  EXPECT_EQ(info_->embed(), 9);
  EXPECT_EQ(info_->advanceDict()->size(), 1U);
}

TEST(RecordTest, aFreshRecordIsSwitchedOffAndEmpty) {
  const auto info = MyPushAdInfo::createInstance();
  EXPECT_FALSE(info->enable());
  for (const auto number : {info->adId(), info->embed(), info->width(), info->height(),
                            info->offsetx(), info->offsety(), info->count(), info->delay()}) {
    EXPECT_EQ(number, 0);
  }
  EXPECT_EQ(info->version(), "");
  EXPECT_EQ(info->advance(), "");
  EXPECT_EQ(info->notes(), "");
  EXPECT_TRUE(info->advanceDict() && info->advanceDict()->empty());
  EXPECT_FALSE(info->titleDict());
  EXPECT_FALSE(info->htmlContentsDict());
}

}  // namespace
}  // namespace qorix
