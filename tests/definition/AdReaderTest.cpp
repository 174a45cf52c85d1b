#include <string>
#include <vector>

#include "definition/AdReader.h"
#include "support/DefinitionTest.h"
#include "support/Documents.h"

namespace qorix {
namespace {

const std::string kAd =
    "<push_ad><adid>12</adid><enable>0</enable><version>1a4</version><embed>1</embed>"
    "<width>728</width><height>90</height><count>10</count><delay>2</delay>"
    "<advance>{\"com.example.editor\":{\"width\":1}}</advance><notes>n</notes>"
    "<title><en>1</en><de/><default>2</default><en>3</en></title>"
    "<html_contents><default>H</default></html_contents>"
    "<promo_app_name>A</promo_app_name><promo_app_name/><promo_app_name>A</promo_app_name></"
    "push_ad>";

class AdReaderTest : public DefinitionTest {};

TEST_F(AdReaderTest, tellsWhichElementsAHostsRecordIsMadeOf) {
  const auto document = XmlDocument::parse(documentText(
      "<push_ad_config><appid>com.example.editor</appid><adid>12</adid></push_ad_config>",
      "<push_ad><adid>11</adid></push_ad>" + kAd));
  ASSERT_TRUE(document);
  const AdReading reading = readAdForHost(*document, kEditor);
  EXPECT_FALSE(reading.defect);
  EXPECT_EQ(reading.tableLine->name(), "push_ad_config");
  EXPECT_EQ(reading.ad->firstChildNamed("adid")->text(), "12");
  ASSERT_EQ(reading.fields.size(), kFieldNames.size());
  for (std::size_t index = 0; index < kFieldNames.size(); ++index) {
    EXPECT_EQ(reading.fields[index].name(), kFieldNames.at(index));
  }
  ASSERT_EQ(reading.titles.size(), 2U);
  EXPECT_EQ(reading.titles[0].text(), "3");  // the place of the first, the text of the last
  EXPECT_EQ(reading.titles[1].text(), "2");
  ASSERT_EQ(reading.pages.size(), 1U);
  EXPECT_EQ(reading.promotedNames, std::set<std::string>{"A"});
}

TEST_F(AdReaderTest, aDefectNamesItsElementAndEndsTheReading) {
  const auto document =
      XmlDocument::parse(documentText("", "<push_ad><adid>1</adid><enable/></push_ad>"));
  ASSERT_TRUE(document);
  const AdReading reading = readAdForHost(*document, kEditor);
  ASSERT_TRUE(reading.defect);
  EXPECT_EQ(reading.defect->line, 128);
  EXPECT_EQ(reading.defect->element.name(), "enable");
  EXPECT_FALSE(reading.tableLine);
  EXPECT_EQ(reading.fields.size(), 1U);
  EXPECT_FALSE(reading.promotedNames);
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(AdReaderTest, aDefectLiesInTheElementAtFaultOrInTheOneThatLacksIt) {
  struct Case {
    int line;
    std::string element;
    std::string document;
  };
  const auto table = [](const std::string& line) {
    return documentText("<push_ad_config>" + line + "</push_ad_config>", kAd);
  };
  const auto changed = [](const std::string& from, const std::string& to) {
    std::string ad = kAd;
    ad.replace(ad.find(from), from.size(), to);
    return documentText("", ad);
  };
  const std::string editor = "<appid>com.example.editor</appid>";
  const std::string page = "<html_contents><default>H</default></html_contents>";
  std::vector<Case> cases = {
      {94, "other", "<other/>"},
      {94, "rootcfg", "<rootcfg><data/></rootcfg>"},
      {94, "file_version", "<rootcfg><data><file_version/></data></rootcfg>"},
      {103, "push_ad_config", table("")},
      {103, "appid", table("<adid>1</adid><appid/>")},
      {104, "push_ad_config", table(editor)},
      {104, "adid", table(editor + "<adid/>")},
      {119, "rootcfg", documentText("", "")},
      {122, "push_ad", documentText("", "<push_ad/>")},
      {122, "adid", documentText("", "<push_ad><adid/></push_ad>")},
      {166, "adid", table(editor + "<adid>13</adid>")},
      {138, "push_ad", documentText("", kAd.substr(0, kAd.find("<title>")) + page + "</push_ad>")},
      {139, "push_ad", changed(page, "")},
      {176, "title", changed("<en>1</en><de/><default>2</default><en>3</en>", "x")},
      {177, "html_contents", changed("<default>H</default>", "x")},
  };
  for (std::size_t index = 1; index < kFieldNames.size(); ++index) {
    const std::string name(kFieldNames.at(index));
    const auto begin = kAd.find("<" + name + ">");
    const auto end = kAd.find("</" + name + ">") + name.size() + 3;
    const auto field = kAd.substr(begin, end - begin);
    const int line = 127 + static_cast<int>(index);
    cases.push_back({line, "push_ad", changed(field, "")});
    std::string emptyFirst = "<" + name + "/>";
    emptyFirst += field;
    cases.push_back({line, name, changed(field, emptyFirst)});
  }
  for (const auto& [line, element, text] : cases) {
    const auto document = XmlDocument::parse(text);
    ASSERT_TRUE(document) << text;
    const AdReading reading = readAdForHost(*document, kEditor);
    ASSERT_TRUE(reading.defect) << text;
    EXPECT_EQ(reading.defect->line, line) << text;
    EXPECT_EQ(reading.defect->element.name(), element) << text;
  }
}

// They may all be installed, which is looked up before such a document is refused.
TEST_F(AdReaderTest, promotedNamesAreReadBeforeLanguagesAreMissed) {
  std::string ad = kAd;
  ad.replace(ad.find("<default>H</default>"), std::string("<default>H</default>").size(), "H");
  const auto document = XmlDocument::parse(documentText("", ad));
  ASSERT_TRUE(document);
  const AdReading reading = readAdForHost(*document, kEditor);
  ASSERT_TRUE(reading.defect);
  EXPECT_EQ(reading.defect->line, 177);
  EXPECT_TRUE(reading.promotedNames);
}

TEST_F(AdReaderTest, anAdvertisementIsNamedThoughItCannotBeRead) {
  const auto document = XmlDocument::parse("<push_ad><adid>1</adid></push_ad>");
  ASSERT_TRUE(document);
  const AdReading reading = readAd(document->root());
  ASSERT_TRUE(reading.defect);
  EXPECT_EQ(reading.defect->line, 128);
  ASSERT_TRUE(reading.ad);
  EXPECT_EQ(reading.ad->name(), "push_ad");
}

TEST_F(AdReaderTest, oneAdvertisementCanBeReadForItself) {
  const auto document = XmlDocument::parse(kAd);
  ASSERT_TRUE(document);
  const AdReading reading = readAd(document->root());
  ASSERT_FALSE(reading.defect);
  EXPECT_EQ(reading.ad->name(), "push_ad");
  const auto record = createRecord(reading);
  EXPECT_EQ(record->adId(), 12);
  EXPECT_FALSE(record->enable());
  EXPECT_EQ(record->width(), 728);  // the customisation is not merged
  EXPECT_EQ(record->titleDict(), (LocalizedTexts{{"en", "3"}, {"default", "2"}}));
  EXPECT_TRUE(record->advanceDict()->empty());
}

}  // namespace
}  // namespace qorix
