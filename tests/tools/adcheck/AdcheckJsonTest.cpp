#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <qorix/MyPushAdInfo.h>
#include <qorix/platform/Platform.h>

#include "support/CheckLines.h"
#include "support/Repeated.h"
#include "tools/adcheck/AdcheckTest.h"
#include "tools/adcheck/HostRun.h"

namespace qorix::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Json = nlohmann::json;

const std::string kLanguageLine =
    checkLine("+[MyPushAdInfo localizedValueInDict:]", 130, kVerifyFailedMessage);
const std::string kNoIdentifierLine =
    checkLine("-[MyPushAdInfo doParseCustomizationAndMerge]", 147, kFatalMessage);

std::string fieldLine(int line) {
  return checkLine("-[MyPushAdInfo doCheck]", line, kVerifyFailedMessage);
}

class AdcheckJsonTest : public AdcheckTest {
 protected:
  /// "due, reason", as decided for the document.
  std::string decision(const AdDocument& document, std::vector<std::string> arguments = {}) {
    arguments.insert(arguments.end(), {"--app", kEditor});
    const Json result = json(document.text(), arguments)["decision"];
    return (result["due"].get<bool>() ? "due, " : "not due, ") +
           result["reason"].get<std::string>();
  }
};

TEST_F(AdcheckJsonTest, everyMemberIsThereAsTheRecordHasIt) {
  AdDocument document;
  document.advance =
      "<advance>{\"com.example.editor\": {\"offsetx\": -3, \"offsety\": 12, \"list\": [1, 2.5, "
      "null,"
      " true, {\"a\": \"b\"}]}}</advance>";
  document.title = "<title><zh>\xE8\xAF\x95</zh><default>Try</default></title>";
  const Json result = json(document.text(), {"--app", kEditor});
  EXPECT_EQ(run_.status, 0);
  EXPECT_THAT(run_.errors, IsEmpty());
  EXPECT_EQ(result, Json::parse(R"json({
    "adId": 11, "enable": true, "version": "2a1", "embed": 1, "width": 300, "height": 50,
    "offsetx": -3, "offsety": 12, "count": 3, "delay": 0, "notes": "autumn offer",
    "advance":
      "{\"com.example.editor\": {\"offsetx\": -3, \"offsety\": 12, \"list\": [1, 2.5, null, true, {\"a\": \"b\"}]}}",
    "advanceDict": {"offsetx": -3, "offsety": 12, "list": [1, 2.5, null, true, {"a": "b"}]},
    "titleDict": {"zh": "试", "default": "Try"},
    "htmlContentsDict": {"default": "<p>page</p>"},
    "localizedTitle": "Try", "localizedHtmlString": "<p>page</p>",
    "decision": {"due": true, "reason": "due-first", "storedVersion": "2a1", "storedCount": 1}
  })json"));
}

TEST_F(AdcheckJsonTest, membersStandInTheDocumentsOrder) {
  AdDocument document;
  document.title = "<title><zh>1</zh><de>2</de><default>3</default><ar>4</ar></title>";
  json(document.text());
  EXPECT_LT(run_.output.find("\"zh\""), run_.output.find("\"de\""));
  EXPECT_LT(run_.output.find("\"default\""), run_.output.find("\"ar\""));
  EXPECT_LT(run_.output.find("\"adId\""), run_.output.find("\"enable\""));
}

TEST_F(AdcheckJsonTest, aRefusedDocumentIsNull) {
  AdDocument document;
  document.count = "";
  EXPECT_EQ(json(document.text()), Json());
  EXPECT_EQ(run_.output, "null\n");
  EXPECT_EQ(run_.status, 1);
  EXPECT_EQ(run_.errors,
            checkLine("+[MyPushAdUtil parseXMLWithString:]", 133, kFatalMessage) + "\n");
}

TEST_F(AdcheckJsonTest, garbageIsRefused) {
  for (const std::string& text :
       {std::string(), std::string("\0\xFF\x00\x7F\x45\x4C\x46", 7), std::string(4096, '\0'),
        std::string("\xC3\x28 <rootcfg/>"), AdDocument().text() + '\0'}) {
    EXPECT_EQ(json(text), Json());
    EXPECT_EQ(run_.status, 1);
    EXPECT_EQ(run_.errors,
              checkLine("+[MyPushAdUtil parseXMLWithString:]", 91, kFatalMessage) + "\n");
  }
}

TEST_F(AdcheckJsonTest, theHostChoosesTheAdvertisementAndItsCustomisation) {
  AdDocument document;
  document.table = tableLine(kEditor, "12");
  document.behind =
      "<push_ad><adid>12</adid><enable>1</enable><version>1</version><embed>0</embed>"
      "<width>1</width><height>1</height><count>1</count><delay>0</delay>"
      "<advance>{\"com.example.editor\":{\"width\":700}}</advance><notes>n</notes>"
      "<title><default>T</default></title><html_contents><default>H</default></html_contents>"
      "</push_ad>";
  const Json editor = json(document.text(), {"--app", kEditor});
  EXPECT_EQ(editor["adId"], 12);
  EXPECT_EQ(editor["width"], 700);
  const Json other = json(document.text(), {"--app", "com.example.other"});
  EXPECT_EQ(other["adId"], 11);
  EXPECT_EQ(other["advanceDict"], Json::object());
  EXPECT_THAT(run_.errors, IsEmpty());
  EXPECT_EQ(json(document.text())["adId"], 11);
  EXPECT_EQ(run_.errors, kNoIdentifierLine + "\n");
  EXPECT_EQ(json(document.text(), {"--app", ""})["adId"], 11);
  EXPECT_EQ(run_.errors, kNoIdentifierLine + "\n");
}

TEST_F(AdcheckJsonTest, onlyTheFirstLanguageCounts) {
  AdDocument document;
  document.title = "<title><en>English</en><de>Deutsch</de><default>Default</default></title>";
  const auto titleFor = [&](const std::string& languages) {
    return json(document.text(), {"--languages", languages})["localizedTitle"];
  };
  EXPECT_EQ(titleFor("de-AT,en"), "Deutsch");
  EXPECT_EQ(titleFor("fr,de"), "Default");
  EXPECT_EQ(titleFor(""), "English");
  EXPECT_EQ(json(document.text())["localizedTitle"], "English");
}

TEST_F(AdcheckJsonTest, anAbsentTextIsNull) {
  AdDocument document;
  document.title = "<title><de>Deutsch</de></title>";
  const Json result = json(document.text(), {"--app", kEditor, "--languages", "fr"});
  EXPECT_EQ(result["localizedTitle"], Json());
  EXPECT_EQ(result["localizedHtmlString"], "<p>page</p>");
  EXPECT_EQ(run_.errors, kLanguageLine + "\n");
}

TEST_F(AdcheckJsonTest, promotedApplicationsAreLookedForInTheFolder) {
  AdDocument document;
  document.others = "<promo_app_name>Example Viewer</promo_app_name>";
  const std::vector<std::string> withFolder = {"--app", kEditor, "--applications",
                                               folder_.path().string()};
  EXPECT_EQ(json(document.text(), {"--app", kEditor})["enable"], true);
  EXPECT_THAT(run_.errors, IsEmpty());
  EXPECT_EQ(json(document.text(), withFolder)["enable"], true);
  std::filesystem::create_directory(folder_ / "Example Viewer.app");
  EXPECT_EQ(json(document.text(), withFolder)["enable"], false);
  EXPECT_EQ(run_.errors, "ZAM: All po-apps installed, Disable it.\nZAM Disabled.\n");
  EXPECT_THAT(
      run({"--app", kEditor, "--applications", folder_.path().string(), folder_ / "ad.xml"}).output,
      testing::HasSubstr("all of them are installed, which switches it off"));
}

TEST_F(AdcheckJsonTest, everyReasonIsGiven) {
  AdDocument document;
  EXPECT_EQ(decision(document), "due, due-first");
  EXPECT_EQ(decision(document, {"--stored-version", "2a1", "--stored-count", "2"}),
            "due, due-counted");
  EXPECT_EQ(decision(document, {"--stored-version", "2a1"}), "due, due-counted");
  EXPECT_EQ(decision(document, {"--stored-version", "2a1", "--stored-count", "3"}),
            "not due, used-up");
  EXPECT_EQ(decision(document, {"--stored-version", "1", "--stored-count", "3"}),
            "due, due-new-version");
  EXPECT_EQ(decision(document, {"--stored-count", "99"}), "due, due-first");
  document.embed = "<embed>-1</embed>";
  EXPECT_EQ(decision(document), "due, nothing-to-show");
  EXPECT_EQ(decision(document, {"--stored-version", "2a1", "--stored-count", "3"}),
            "not due, used-up");
  document.delay = "<delay>-1</delay>";
  EXPECT_EQ(decision(document), "due, parked");
  document.enable = "<enable>0</enable>";
  EXPECT_EQ(decision(document), "not due, disabled");
}

// No document gives a record without a version, so this one is not read from any.
TEST_F(AdcheckJsonTest, aRecordWithoutVersionIsDueEachTime) {
  installPlatform({});
  MyPushAdInfo record;
  record.setEnable(true);
  const auto decision = tools::adcheck::decide(record);
  EXPECT_TRUE(decision.isDue);
  EXPECT_EQ(tools::adcheck::nameOf(decision.reason), "due-uncounted");
  EXPECT_EQ(decision.storedVersion, std::nullopt);
  EXPECT_EQ(decision.storedCount, 0);
}

TEST_F(AdcheckJsonTest, theStoredPairIsTheOneAfterTheDecision) {
  AdDocument document;
  const auto stored = [&](const std::vector<std::string>& arguments) {
    const Json result = json(document.text(), arguments)["decision"];
    return Json{result["storedVersion"], result["storedCount"]};
  };
  EXPECT_EQ(stored({}), (Json{"2a1", 1}));
  EXPECT_EQ(stored({"--stored-version", "2a01", "--stored-count", "1"}), (Json{"2a01", 2}));
  EXPECT_EQ(stored({"--stored-version", "2a1", "--stored-count", "3"}), (Json{"2a1", 3}));
  EXPECT_EQ(stored({"--stored-version", "3", "--stored-count", "3"}), (Json{"2a1", 1}));
  EXPECT_EQ(stored({"--stored-count", "-7"}), (Json{"2a1", 1}));
  document.enable = "<enable>0</enable>";
  EXPECT_EQ(stored({}), (Json{nullptr, 0}));
  EXPECT_EQ(stored({"--stored-count", "9223372036854775807"}),
            (Json{nullptr, 9223372036854775807}));
}

TEST_F(AdcheckJsonTest, theLogGoesAsFarAsAHostDoes) {
  AdDocument document;
  document.title = "<title><de>Deutsch</de></title>";
  document.width = "<width>0</width>";
  document.count = "<count>0</count>";
  const auto log = [&](std::vector<std::string> arguments = {}) {
    arguments.insert(arguments.end(), {"--app", kEditor});
    json(document.text(), arguments);
    return linesOf(run_.errors);
  };
  EXPECT_THAT(log(), ElementsAre(fieldLine(101), fieldLine(103), kLanguageLine));
  EXPECT_THAT(log({"--stored-version", "2a1"}), IsEmpty());
  document.delay = "<delay>-1</delay>";
  EXPECT_THAT(log(), ElementsAre(fieldLine(101), fieldLine(103), fieldLine(104)));
  document.advance = "<advance>no JSON</advance>";
  document.enable = "<enable>0</enable>";
  EXPECT_THAT(log(), ElementsAre(checkLine("-[MyPushAdInfo doParseCustomizationAndMerge]", 153,
                                           kFatalMessage),
                                 "ZAM Disabled."));
}

TEST_F(AdcheckJsonTest, twentyMegabytesAreRead) {
  AdDocument document;
  const std::string text = repeated("Fast, small &amp; friendly: \xE6\x97\xA5. ", 1000);
  while (document.page.size() < 20'000'000) {
    document.page += "<p class=\"x\">" + text + "</p>\n";
  }
  EXPECT_EQ(json(document.text())["localizedHtmlString"], document.page);
  const auto report = run({"-"}, {.input = document.text()});
  EXPECT_EQ(report.status, 0);
  EXPECT_THAT(report.output, testing::HasSubstr("\nno warnings\n"));
}

TEST_F(AdcheckJsonTest, bytesThatAreNoTextAreReplaced) {
  AdDocument document;
  document.enable = "<enable>0</enable>";
  const Json result = json(document.text(), {"--stored-version", "\xFF"});
  EXPECT_EQ(result["decision"]["storedVersion"], "\xEF\xBF\xBD");
}

}  // namespace
}  // namespace qorix::test
