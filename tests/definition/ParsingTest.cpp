#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <qorix/MyPushAdUtil.h>

#include "support/CheckLines.h"
#include "support/DefinitionTest.h"
#include "support/Documents.h"
#include "support/Locale.h"

namespace qorix {
namespace {

const std::string kAllInstalled = "ZAM: All po-apps installed, Disable it.";

const std::string kFolderLine =
    checkLine("+[MyPushAdUtil fetchUserInstalledAppNamesSet]", 257, kFatalMessage);

Lines parserLine(int line) {
  return {checkLine("+[MyPushAdUtil parseXMLWithString:]", line, kFatalMessage)};
}

class ParsingTest : public DefinitionTest {
 protected:
  static std::shared_ptr<const MyPushAdInfo> parse(const std::string& document) {
    return MyPushAdUtil::parseXMLWithString(document);
  }

  static std::shared_ptr<const MyPushAdInfo> parseAd(const AdElements& ad) {
    return parse(documentText("", ad.text()));
  }

  /// The identifier of the advertisement that `host` shows; nothing when the parse fails.
  std::optional<std::int64_t> adIdFor(const std::optional<std::string>& host,
                                      const std::string& document) {
    installHost(host);
    const auto info = parse(document);
    return info == nullptr ? std::nullopt : std::optional(info->adId());
  }

  void expectDefect(int line, const std::string& document) {
    EXPECT_EQ(parse(document), nullptr);
    EXPECT_EQ(log_->takeLines(), parserLine(line)) << document;
  }

  /// The same, if the applications folder cannot be opened.
  void expectDefectBehindTheFolder(int line, const std::string& document) {
    EXPECT_EQ(parse(document), nullptr);
    EXPECT_EQ(log_->takeLines(), (Lines{kFolderLine, parserLine(line).front()})) << document;
  }
};

constexpr const char* kExample = R"(<?xml version="1.0" encoding="UTF-8"?>
<rootcfg>
  <data>
    <file_version>1</file_version>
    <push_ad_config>
      <appid>com.example.editor</appid>
      <adid>12</adid>
    </push_ad_config>
  </data>
  <push_ad>
    <adid>11</adid> <enable>1</enable> <version>2a1</version> <embed>0</embed>
    <width>600</width> <height>400</height> <count>3</count> <delay>5</delay>
    <advance>{}</advance> <notes>autumn offer</notes>
    <title><en>Try our viewer</en><default>Try our viewer</default></title>
    <html_contents>
      <en><![CDATA[<html>en</html>]]></en> <default><![CDATA[<html>default</html>]]></default>
    </html_contents>
    <promo_app_name>Example Viewer</promo_app_name>
  </push_ad>
  <push_ad>
    <adid>12</adid> <enable>1</enable> <version>1a4</version> <embed>1</embed>
    <width>728</width> <height>90</height> <count>10</count> <delay>0</delay>
    <advance>{"com.example.editor":{"offsety":12}}</advance> <notes>banner for the editor</notes>
    <title><en>Try our viewer</en><default>Try our viewer</default></title>
    <html_contents>
      <en><![CDATA[<html>en</html>]]></en> <default><![CDATA[<html>default</html>]]></default>
    </html_contents>
    <promo_app_name>Example Viewer</promo_app_name>
    <promo_app_name>Example Converter</promo_app_name>
  </push_ad>
</rootcfg>
)";

TEST_F(ParsingTest, theHostWithATableLineShowsTheAdvertisementThatItNames) {
  const auto info = parse(kExample);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->adId(), 12);
  EXPECT_TRUE(info->enable());
  EXPECT_EQ(info->version(), "1a4");
  EXPECT_EQ(info->embed(), 1);
  EXPECT_EQ(info->width(), 728);
  EXPECT_EQ(info->height(), 90);
  EXPECT_EQ(info->offsetx(), 0);
  EXPECT_EQ(info->offsety(), 12);
  EXPECT_EQ(info->count(), 10);
  EXPECT_EQ(info->delay(), 0);
  EXPECT_EQ(info->advance(), R"({"com.example.editor":{"offsety":12}})");
  EXPECT_EQ(info->advanceDict()->size(), 1U);
  EXPECT_EQ(info->notes(), "banner for the editor");
  EXPECT_EQ(info->titleDict(),
            (LocalizedTexts{{"en", "Try our viewer"}, {"default", "Try our viewer"}}));
  EXPECT_EQ(info->htmlContentsDict(),
            (LocalizedTexts{{"en", "<html>en</html>"}, {"default", "<html>default</html>"}}));
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(ParsingTest, anyOtherHostShowsTheFirstAdvertisement) {
  installHost("com.example.other");
  const auto info = parse(kExample);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->adId(), 11);
  EXPECT_EQ(info->embed(), 0);
  EXPECT_EQ(info->delay(), 5);
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(ParsingTest, anAbsentTextIsRefused) {
  EXPECT_EQ(MyPushAdUtil::parseXMLWithString(std::nullopt), nullptr);
  EXPECT_EQ(log_->lines(), parserLine(87));
}

TEST_F(ParsingTest, aTextThatIsNotWellFormedIsRefused) {
  for (const auto* document : {"", "text", "<rootcfg>", "<rootcfg/>x"}) {
    expectDefect(91, document);
  }
  expectDefect(91, std::string(kExample) + '\0');
  expectDefect(91, std::string(kExample) + "\xFF");
}

TEST_F(ParsingTest, anyFileVersionButAnEmptyOnePasses) {
  const auto document = [](const std::string& data) {
    return "<rootcfg>" + data + adText("1") + "</rootcfg>";
  };
  for (const auto* text : {"1", "abc", " ", "-1", "<x>1</x>"}) {
    EXPECT_NE(
        parse(document("<data><file_version>" + std::string(text) + "</file_version></data>")),
        nullptr)
        << text;
  }
  EXPECT_TRUE(log_->lines().empty());
  expectDefect(94, document("<data><file_version/></data>"));
  expectDefect(94, document("<data/>"));
  expectDefect(94, document(""));
  expectDefect(94, document("<file_version>1</file_version>"));
  expectDefect(94, "<Rootcfg><data><file_version>1</file_version></data></Rootcfg>");
}

TEST_F(ParsingTest, theFirstFileVersionUnderAnyDataCounts) {
  const auto document = [](const std::string& data) {
    return "<rootcfg>" + data + adText("1") + "</rootcfg>";
  };
  EXPECT_NE(parse(document("<data/><data><file_version>1</file_version></data>")), nullptr);
  expectDefect(94, document("<data><file_version/><file_version>1</file_version></data>"));
  expectDefect(94,
               document("<data><file_version/></data><data><file_version>1</file_version></data>"));
}

TEST_F(ParsingTest, theFileVersionIsLookedAtBeforeTheTableAndTheTableBeforeTheAdvertisements) {
  const auto document = [](const std::string& version, const std::string& table,
                           const std::string& ads) {
    return "<rootcfg><data>" + table + version + "</data>" + ads + "</rootcfg>";
  };
  const auto sound = element("file_version", "1");
  const auto brokenLine = tableLine("", "1");
  const auto brokenAd = element("push_ad", "");
  expectDefect(94, document("", brokenLine, ""));
  expectDefect(94, document("", brokenLine, brokenAd));
  expectDefect(103, document(sound, brokenLine, ""));
  expectDefect(103, document(sound, brokenLine, brokenAd));
  expectDefect(104, document(sound, tableLine(kEditor, ""), ""));
  expectDefect(119, document(sound, tableLine(kEditor, "1"), ""));
  expectDefect(122, document(sound, tableLine(kEditor, "1"), brokenAd));
}

TEST_F(ParsingTest, anEmptyTableMakesEveryHostShowTheFirstAdvertisement) {
  const auto document = documentText("", adText("21") + adText("22"));
  EXPECT_EQ(adIdFor(kEditor, document), 21);
  EXPECT_EQ(adIdFor("com.example.other", document), 21);
}

TEST_F(ParsingTest, aHostWithoutIdentifierShowsTheFirstAdvertisement) {
  const auto document = documentText(tableLine(kEditor, "22"), adText("21") + adText("22"));
  EXPECT_EQ(adIdFor(std::nullopt, document), 21);
  EXPECT_EQ(adIdFor("", document), 21);
}

TEST_F(ParsingTest, theTableIsReadFromEveryDataElementAndTheFirstMatchingLineCounts) {
  const auto document = "<rootcfg><data><file_version>1</file_version></data><data>" +
                        tableLine("com.example.other", "21") + "</data><data>" +
                        tableLine(kEditor, "22") + tableLine(kEditor, "21") + "</data>" +
                        adText("21") + adText("22") + "</rootcfg>";
  EXPECT_EQ(adIdFor(kEditor, document), 22);
  EXPECT_EQ(adIdFor("com.example.other", document), 21);
}

// What may be left out while the document is read is known only behind them.
TEST_F(ParsingTest, theOrderOfTableAndAdvertisementsMakesNoDifference) {
  const auto ad = [](const std::string& adid) {
    const std::string page = element("html_contents", element("en", "page " + adid));
    return AdElements{.adid = page + element("adid", adid), .htmlContents = {}}.text();
  };
  const std::string ads = adText("20") + ad("21") + ad("22");
  const std::string version = "<data><file_version>1</file_version></data>";
  const std::string table = "<data>" + tableLine(kEditor, "22") + "</data>";
  const std::vector<std::string> documents = {version + table + ads, version + ads + table,
                                              ads + table + version};
  for (const std::string& document : documents) {
    const auto info = parse(element("rootcfg", document));
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->adId(), 22);
    EXPECT_EQ(info->htmlContentsDict(), (LocalizedTexts{{"en", "page 22"}}));
    EXPECT_TRUE(log_->lines().empty());
  }
}

TEST_F(ParsingTest, identifiersAreComparedExactly) {
  const auto document =
      documentText(tableLine("COM.EXAMPLE.EDITOR", "22") + tableLine(" com.example.editor", "22") +
                       tableLine("com.example.editor.pro", "22"),
                   adText("21") + adText("22"));
  EXPECT_EQ(adIdFor(kEditor, document), 21);
  const auto padded = documentText(tableLine(kEditor, "022"), adText("22") + adText("022"));
  installHost(kEditor);
  const auto info = parse(padded);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->adId(), 22);
  expectDefect(166, documentText(tableLine(kEditor, "022"), adText("22")));
}

TEST_F(ParsingTest, blanksArePartOfAnIdentifier) {
  const auto ads = [](const std::string& first, const std::string& second) {
    AdElements narrow;
    narrow.adid = element("adid", first);
    narrow.width = element("width", "1");
    return narrow.text() + adText(second);
  };
  for (const auto* padded : {" 22", "22 ", "\n22\n"}) {
    // Whichever of the two is named, the other is not taken for it.
    for (const auto& [first, second] : {std::pair(padded, "22"), std::pair("22", padded)}) {
      EXPECT_EQ(parse(documentText(tableLine(kEditor, first), ads(first, second)))->width(), 1);
      EXPECT_EQ(parse(documentText(tableLine(kEditor, second), ads(first, second)))->width(), 600);
    }
    expectDefect(166, documentText(tableLine(kEditor, "22"), adText(padded)));
    expectDefect(166, documentText(tableLine(kEditor, padded), adText("22")));
    const auto hosts = documentText(
        tableLine(std::string(" ") + kEditor, "21") + tableLine(std::string(kEditor) + "\n", "21"),
        adText("22") + adText("21"));
    EXPECT_EQ(adIdFor(kEditor, hosts), 22);
  }
}

TEST_F(ParsingTest, blanksAreATextInATableLine) {
  const auto document = [](const std::string& line) {
    return documentText(line + tableLine(kEditor, "22"), adText("21") + adText("22"));
  };
  EXPECT_EQ(adIdFor(kEditor, document(tableLine(" ", "21"))), 22);
  EXPECT_EQ(adIdFor(kEditor, document(tableLine("\n\t", "21"))), 22);
  EXPECT_EQ(adIdFor(kEditor, document(tableLine("com.example.other", " "))), 22);
  EXPECT_EQ(adIdFor(" ", document(tableLine(" ", "22"))), 22);
  EXPECT_TRUE(log_->lines().empty());
  installHost(kEditor);
  expectDefect(166, documentText(tableLine(kEditor, " "), adText("22")));
  const auto info = parse(documentText(tableLine(kEditor, " "), adText("22") + adText(" ")));
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->adId(), 0);
}

TEST_F(ParsingTest, aTableLineWithoutAdidSpoilsTheDocumentForHostsBehindItAndWithoutALine) {
  const auto document =
      documentText(tableLine("com.example.first", "22") +
                       "<push_ad_config><appid>com.example.broken</appid></push_ad_config>" +
                       tableLine(kEditor, "22"),
                   adText("21") + adText("22"));
  EXPECT_EQ(adIdFor("com.example.first", document), 22);
  EXPECT_TRUE(log_->lines().empty());
  EXPECT_EQ(adIdFor(kEditor, document), std::nullopt);
  EXPECT_EQ(log_->takeLines(), parserLine(104));
  EXPECT_EQ(adIdFor("com.example.other", document), std::nullopt);
  EXPECT_EQ(log_->takeLines(), parserLine(104));
  EXPECT_EQ(adIdFor(std::nullopt, document), std::nullopt);
  EXPECT_EQ(log_->takeLines(), parserLine(104));
}

TEST_F(ParsingTest, aTableLineWithoutAppidIsRefusedFirst) {
  expectDefect(103, documentText("<push_ad_config/>", adText("1")));
  expectDefect(103, documentText(tableLine("", "1"), adText("1")));
  expectDefect(103, documentText("<push_ad_config><adid>1</adid></push_ad_config>", adText("1")));
  expectDefect(104, documentText(tableLine(kEditor, ""), adText("1")));
}

TEST_F(ParsingTest, theFirstAppidAndAdidOfALineCount) {
  const auto document = documentText(
      "<push_ad_config><appid>com.example.editor</appid><appid>com.example.other</appid>"
      "<adid>22</adid><adid>21</adid></push_ad_config>",
      adText("21") + adText("22"));
  EXPECT_EQ(adIdFor(kEditor, document), 22);
  EXPECT_EQ(adIdFor("com.example.other", document), 21);
}

TEST_F(ParsingTest, aDocumentWithoutAdvertisementsIsRefused) {
  expectDefect(119, documentText("", ""));
  expectDefect(119, documentText("<push_ad/>", "<Push_ad/>"));
}

TEST_F(ParsingTest, anAdvertisementWithoutAdidSpoilsTheDocumentOnlyAheadOfTheChosenOne) {
  AdElements broken;
  broken.adid = "";
  const std::string table = tableLine(kEditor, "22");
  expectDefect(122, documentText(table, broken.text() + adText("22")));
  expectDefect(122, documentText(table, adText("21") + broken.text() + adText("22")));
  broken.adid = "<adid/><adid>22</adid>";
  expectDefect(122, documentText(table, broken.text()));
  EXPECT_EQ(adIdFor(kEditor, documentText(table, adText("22") + broken.text())), 22);
  EXPECT_EQ(adIdFor("com.example.other", documentText(table, adText("21") + broken.text())), 21);
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(ParsingTest, aTableLineThatNamesNoAdvertisementDoesNotFallBackToTheFirst) {
  expectDefect(166, documentText(tableLine(kEditor, "99"), adText("21") + adText("22")));
}

TEST_F(ParsingTest, theFirstOfSeveralAdvertisementsOfOneIdentifierIsChosen) {
  AdElements second;
  second.adid = "<adid>22</adid>";
  second.width = "<width>1</width>";
  const auto info = parse(documentText(tableLine(kEditor, "22"), adText("22") + second.text()));
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->width(), 600);
}

struct FieldCase {
  std::string AdElements::*member;
  std::string name;
  int line;
};

const std::vector<FieldCase> kFields = {
    {&AdElements::enable, "enable", 128}, {&AdElements::version, "version", 129},
    {&AdElements::embed, "embed", 130},   {&AdElements::width, "width", 131},
    {&AdElements::height, "height", 132}, {&AdElements::count, "count", 133},
    {&AdElements::delay, "delay", 134},   {&AdElements::advance, "advance", 135},
    {&AdElements::notes, "notes", 136}};

TEST_F(ParsingTest, eachFieldMustBeThereWithSomeText) {
  for (const auto& [member, name, line] : kFields) {
    for (const auto& defect : {std::string(), element(name, ""), element(name, "<!-- no text -->"),
                               element(name, "") += element(name, "1")}) {
      AdElements ad;
      ad.*member = defect;
      expectDefect(line, documentText("", ad.text()));
    }
  }
}

TEST_F(ParsingTest, blanksAreATextInAField) {
  for (const auto& [member, name, line] : kFields) {
    for (const auto* blanks : {" ", "\n\t ", "<x> </x>", "<![CDATA[ ]]>"}) {
      AdElements ad;
      ad.*member = element(name, blanks);
      EXPECT_NE(parseAd(ad), nullptr) << name;
    }
  }
  log_->takeLines();  // a customisation of blanks is no JSON
  AdElements ad;
  ad.adid = element("adid", " ");
  ad.version = element("version", " ");
  ad.notes = element("notes", "\n");
  const auto info = parseAd(ad);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->adId(), 0);
  EXPECT_EQ(info->version(), " ");
  EXPECT_EQ(info->notes(), "\n");
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(ParsingTest, ofSeveralDefectsTheFirstFieldsIsLogged) {
  for (std::size_t index = 0; index + 1 < kFields.size(); ++index) {
    AdElements ad;
    ad.*kFields[index].member = "";
    ad.*kFields[index + 1].member = "";
    ad.title = "";
    expectDefect(kFields[index].line, documentText("", ad.text()));
  }
}

TEST_F(ParsingTest, titleAndPageMustBeThere) {
  AdElements ad;
  ad.htmlContents = "";
  expectDefect(139, documentText("", ad.text()));
  ad.title = "";
  expectDefect(138, documentText("", ad.text()));
}

TEST_F(ParsingTest, aTitleOrPageOfTextWithoutChildElementsIsRefused) {
  AdElements ad;
  ad.htmlContents = "<html_contents>a page</html_contents>";
  expectDefect(177, documentText("", ad.text()));
  ad.title = "<title>a title</title>";
  expectDefect(176, documentText("", ad.text()));
  ad.title = "<title><en/><!-- c --><?pi text?></title>";
  expectDefect(176, documentText("", ad.text()));
}

TEST_F(ParsingTest, anEmptyLanguageIsLeftOutAndTheOthersCount) {
  AdElements ad;
  ad.title = "<title>text<en/><!-- c --><?pi x?><ja>J</ja> <default> </default></title>";
  const auto info = parseAd(ad);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->titleDict(), (LocalizedTexts{{"ja", "J"}, {"default", " "}}));
}

TEST_F(ParsingTest, theLastOfSeveralTextsOfOneLanguageWinsInTheFirstOnesPlace) {
  AdElements ad;
  ad.title = "<title><en>1</en><ja>J</ja><en>2</en><en/><EN>E</EN></title>";
  const auto info = parseAd(ad);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->titleDict(), (LocalizedTexts{{"en", "2"}, {"ja", "J"}, {"EN", "E"}}));
}

TEST_F(ParsingTest, anEmptyTextIsNotTheFirstOfItsLanguage) {
  AdElements ad;
  ad.title = "<title><en/><ja>J</ja><en>2</en><de/></title>";
  const auto info = parseAd(ad);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->titleDict(), (LocalizedTexts{{"ja", "J"}, {"en", "2"}}));
}

TEST_F(ParsingTest, onlyTheFirstTitleAndPageAreRead) {
  AdElements ad;
  ad.title = "<title><en>1</en></title><title><en>2</en></title>";
  ad.htmlContents += "<html_contents><ja>2</ja></html_contents>";
  const auto info = parseAd(ad);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->titleDict(), (LocalizedTexts{{"en", "1"}}));
  EXPECT_EQ(info->htmlContentsDict(), (LocalizedTexts{{"en", "<p>"}}));
}

TEST_F(ParsingTest, onlyTheTextZeroDisables) {
  const std::vector<std::pair<std::string, bool>> expectations = {
      {"0", false}, {"1", true},  {"yes", true}, {"false", true}, {"00", true},
      {"-0", true}, {" 0", true}, {"0 ", true},  {"no", true}};
  for (const auto& [text, expected] : expectations) {
    AdElements ad;
    ad.enable = "<enable>" + text + "</enable>";
    const auto info = parseAd(ad);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->enable(), expected) << text;
  }
}

TEST_F(ParsingTest, integersAreTheLeadingOnesAndSaturate) {
  AdElements ad;
  ad.adid = "<adid> 7 </adid>";
  ad.embed = "<embed>abc</embed>";
  ad.width = "<width>12px</width>";
  ad.height = "<height>3.9</height>";
  ad.count = "<count>99999999999999999999</count>";
  ad.delay = "<delay>\n-5</delay>";
  const auto info = parseAd(ad);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->adId(), 7);
  EXPECT_EQ(info->embed(), 0);
  EXPECT_EQ(info->width(), 12);
  EXPECT_EQ(info->height(), 3);
  EXPECT_EQ(info->count(), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(info->delay(), -5);
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(ParsingTest, textsAreTakenAsTheyAre) {
  AdElements ad;
  ad.version = "<version> 2<![CDATA[a]]>&#49;\r\n</version>";
  ad.notes = "<notes><b>bold</b> <!-- c -->note</notes>";
  const auto info = parseAd(ad);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->version(), " 2a1\n");
  EXPECT_EQ(info->notes(), "bold note");
}

TEST_F(ParsingTest, aCustomisationThatIsNotJsonLeavesTheElementsValues) {
  AdElements ad;
  ad.advance = "<advance>not JSON</advance>";
  const auto info = parseAd(ad);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(log_->lines(),
            Lines{checkLine("-[MyPushAdInfo doParseCustomizationAndMerge]", 153, kFatalMessage)});
  EXPECT_EQ(info->advance(), "not JSON");
  EXPECT_EQ(info->width(), 600);
  EXPECT_TRUE(info->advanceDict()->empty());
}

TEST_F(ParsingTest, aHostWithoutIdentifierIsLoggedByTheCustomisation) {
  installHost(std::nullopt);
  EXPECT_NE(parseAd({}), nullptr);
  EXPECT_EQ(log_->lines(),
            Lines{checkLine("-[MyPushAdInfo doParseCustomizationAndMerge]", 147, kFatalMessage)});
}

TEST_F(ParsingTest, onceEveryPromotedApplicationIsInstalledTheAdvertisementIsOff) {
  installPackages({"Example Viewer.app", "Example Converter.app"});
  AdElements ad;
  ad.advance = "<advance>{\"com.example.editor\":{\"enable\":1,\"width\":9}}</advance>";
  ad.promoAppNames =
      "<promo_app_name>Example Viewer</promo_app_name><promo_app_name/>"
      "<promo_app_name>Example Converter</promo_app_name>"
      "<promo_app_name>Example Viewer</promo_app_name>";
  const auto info = parseAd(ad);
  ASSERT_NE(info, nullptr);
  EXPECT_FALSE(info->enable());
  EXPECT_EQ(info->width(), 9);
  EXPECT_EQ(log_->lines(), Lines{kAllInstalled});
  EXPECT_EQ(applicationsFolder_->openedDirectories.size(), 1U);
}

TEST_F(ParsingTest, theLineAboutInstalledApplicationsFollowsTheCustomisations) {
  installPackages({"Example Viewer.app"});
  AdElements ad;
  ad.advance = "<advance>x</advance>";
  ad.promoAppNames = "<promo_app_name>Example Viewer</promo_app_name>";
  parseAd(ad);
  EXPECT_EQ(log_->lines(),
            (Lines{checkLine("-[MyPushAdInfo doParseCustomizationAndMerge]", 153, kFatalMessage),
                   kAllInstalled}));
}

TEST_F(ParsingTest, aMissingPromotedApplicationKeepsTheAdvertisementOn) {
  installPackages({"Example Viewer.app"});
  AdElements ad;
  ad.promoAppNames =
      "<promo_app_name>Example Viewer</promo_app_name>"
      "<promo_app_name>Example Converter</promo_app_name>";
  const auto info = parseAd(ad);
  ASSERT_NE(info, nullptr);
  EXPECT_TRUE(info->enable());
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(ParsingTest, withoutPromotedNamesTheApplicationsFolderIsNotTouched) {
  AdElements ad;
  EXPECT_TRUE(parseAd(ad)->enable());
  ad.promoAppNames = "<promo_app_name/>";
  EXPECT_TRUE(parseAd(ad)->enable());
  EXPECT_EQ(applicationsFolder_->directoryRequests, 0);
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(ParsingTest, blanksArePartOfAPromotedName) {
  installPackages({"Example Viewer.app", "Blank .app", " .app"});
  const auto isEnabledWith = [&](const std::string& name) {
    AdElements ad;
    ad.promoAppNames = element("promo_app_name", name);
    return parseAd(ad)->enable();
  };
  EXPECT_FALSE(isEnabledWith("Example Viewer"));
  EXPECT_TRUE(isEnabledWith(" Example Viewer"));
  EXPECT_TRUE(isEnabledWith("Example Viewer "));
  EXPECT_TRUE(isEnabledWith("\nExample Viewer\n"));
  EXPECT_FALSE(isEnabledWith("Blank "));
  EXPECT_TRUE(isEnabledWith("Blank"));
  EXPECT_FALSE(isEnabledWith(" "));
  EXPECT_TRUE(isEnabledWith("  "));
}

/// An advertisement with a promoted application and a customisation that is not JSON.
AdElements promotingAd() {
  AdElements ad;
  ad.advance = "<advance>not JSON</advance>";
  ad.promoAppNames = "<promo_app_name>Example Viewer</promo_app_name>";
  return ad;
}

TEST_F(ParsingTest, installedApplicationsAreReadBeforeTheLastCheck) {
  applicationsFolder_->contents.reset();
  AdElements ad = promotingAd();
  ad.htmlContents = "<html_contents/>";
  expectDefectBehindTheFolder(177, documentText("", ad.text()));
  ad.title = "<title/>";
  expectDefectBehindTheFolder(176, documentText("", ad.text()));
}

TEST_F(ParsingTest, installedApplicationsAreReadBeforeTheCustomisation) {
  applicationsFolder_->contents.reset();
  EXPECT_NE(parseAd(promotingAd()), nullptr);
  EXPECT_EQ(log_->lines(),
            (Lines{kFolderLine,
                   checkLine("-[MyPushAdInfo doParseCustomizationAndMerge]", 153, kFatalMessage)}));
}

TEST_F(ParsingTest, installedApplicationsAreNotReadWhenAnythingBeforeThemIsAtFault) {
  for (const auto& [member, name, line] : kFields) {
    AdElements ad = promotingAd();
    ad.*member = "";
    expectDefect(line, documentText("", ad.text()));
  }
  AdElements ad = promotingAd();
  ad.htmlContents = "";
  expectDefect(139, documentText("", ad.text()));
  ad.title = "";
  expectDefect(138, documentText("", ad.text()));
  expectDefect(166, documentText(tableLine(kEditor, "99"), promotingAd().text()));
  EXPECT_EQ(applicationsFolder_->directoryRequests, 0);
}

TEST_F(ParsingTest, onlyTheChosenAdvertisementsApplicationsAreLookedFor) {
  AdElements second;
  second.adid = element("adid", "22");
  const auto document =
      documentText(tableLine(kEditor, "22"), promotingAd().text() + second.text());
  EXPECT_EQ(adIdFor(kEditor, document), 22);
  EXPECT_EQ(applicationsFolder_->directoryRequests, 0);
}

TEST_F(ParsingTest, aDocumentIsReadTheSameInEveryLocale) {
  for (const auto* name : {"tr_TR", "de_DE", "ps_AF"}) {
    SCOPED_TRACE(name);
    const LocaleInUse locale(name);
    installPackages({"IMAGE FINDER.app"});
    AdElements ad;
    ad.width = "<width>1234567.5</width>";
    ad.height = "<height>1,5</height>";
    ad.advance = R"(<advance>{"com.example.editor":{"enable":0.9,"delay":2.7,"offsetx":-1.5,)"
                 R"("offsety":1.25e2,"COUNT":1,"embed":1e400}}</advance>)";
    ad.title = "<title><ID>I</ID><id>i</id></title>";
    ad.promoAppNames = "<promo_app_name>image finder</promo_app_name>";
    const auto info = parseAd(ad);
    ASSERT_NE(info, nullptr);
    EXPECT_FALSE(info->enable());
    EXPECT_EQ(info->width(), 1234567);
    EXPECT_EQ(info->height(), 1);
    EXPECT_EQ(info->delay(), 2);
    EXPECT_EQ(info->offsetx(), -1);
    EXPECT_EQ(info->offsety(), 125);
    EXPECT_EQ(info->count(), 3);
    EXPECT_EQ(info->embed(), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(info->titleDict(), (LocalizedTexts{{"ID", "I"}, {"id", "i"}}));
    EXPECT_TRUE(log_->lines().empty());
  }
}

TEST_F(ParsingTest, aPageOfTwentyMegabytesIsRead) {
  std::string page;
  page.resize(20'000'000, 'x');
  AdElements ad;
  ad.htmlContents = "<html_contents><en><![CDATA[" + page + "]]></en></html_contents>";
  const auto info = parseAd(ad);
  ASSERT_NE(info, nullptr);
  EXPECT_TRUE(info->htmlContentsDict()->front().second == page);
}

TEST_F(ParsingTest, aLargeDocumentIsReadForAHostAnywhereInItsTable) {
  constexpr int kCount = 20'000;
  std::string table;
  std::string ads;
  std::string titles;
  for (int index = 1; index <= kCount; ++index) {
    table += tableLine("host" + std::to_string(index), std::to_string(index));
    ads += adText(std::to_string(index));
    titles += "<l" + std::to_string(index) + ">t</l" + std::to_string(index) + ">";
  }
  AdElements last;
  last.adid = "<adid>last</adid>";
  last.title = "<title>" + titles + titles + "</title>";
  const auto document = documentText(table + tableLine("lasthost", "last"), ads + last.text());
  EXPECT_EQ(adIdFor("host1", document), 1);
  EXPECT_EQ(adIdFor("host20000", document), kCount);
  EXPECT_EQ(adIdFor("unknown", document), 1);
  installHost("lasthost");
  EXPECT_EQ(parse(document)->titleDict()->size(), std::size_t{kCount});
}

}  // namespace
}  // namespace qorix
