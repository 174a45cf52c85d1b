#include <string>
#include <vector>

#include "tools/adcheck/AdcheckTest.h"

namespace qorix::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Json = nlohmann::json;

class SarifTest : public AdcheckTest {
 protected:
  /// The one run of the log about a document; `arguments` come first.
  Json sarif(const std::string& document, std::vector<std::string> arguments = {},
             const std::string& name = "ad.xml") {
    arguments.insert(arguments.end(), {"--format", "sarif", write(document, name)});
    return sarifOf(run(arguments));
  }

  Json sarifOf(const ProgramRun& result) {
    run_ = result;
    EXPECT_EQ(result.errors, "");
    const Json log = Json::parse(result.output);
    EXPECT_EQ(log["version"], "2.1.0");
    EXPECT_EQ(log["runs"].size(), 1U);
    return log["runs"][0];
  }

  /// Its results as "level rule line:column: message".
  static std::vector<std::string> resultsOf(const Json& run) {
    std::vector<std::string> lines;
    for (const Json& result : run["results"]) {
      const Json& region = result["locations"][0]["physicalLocation"]["region"];
      lines.push_back(result["level"].get<std::string>() + " " +
                      result["ruleId"].get<std::string>() + " " + region["startLine"].dump() + ":" +
                      region["startColumn"].dump() + ": " +
                      result["message"]["text"].get<std::string>());
    }
    return lines;
  }
};

TEST_F(SarifTest, aSoundDocumentHasNoResults) {
  const Json log = sarif(AdDocument().text());
  EXPECT_EQ(log["results"], Json::array());
  EXPECT_EQ(log["invocations"], Json::parse(R"([{"executionSuccessful": true, "exitCode": 0}])"));
  EXPECT_EQ(log["tool"]["driver"]["name"], "qorix-adcheck");
  EXPECT_EQ(log["tool"]["driver"]["version"], "2.0");
  EXPECT_EQ(run_.status, 0);
}

TEST_F(SarifTest, everyWarningOfTheReportIsAResult) {
  AdDocument document;
  document.count = "<count>0</count>";
  document.advance = R"(<advance>{"com.example.editor": {"offset": 1}}</advance>)";
  document.page = "<a href='x#zamopenout=1'>x</a>";
  const std::string text = document.text();
  std::vector<std::string> expected;
  for (const auto& warning : warnings(text)) {
    expected.push_back(warning);
  }
  ASSERT_EQ(expected.size(), 3U);
  const Json log = sarif(text, {"--app", kEditor});
  EXPECT_THAT(resultsOf(log), ElementsAre("warning number-out-of-range " + expected[0],
                                          "warning customisation-member-unknown " + expected[1],
                                          "warning page-mark-misplaced " + expected[2]));
  EXPECT_EQ(run_.status, 0);
}

TEST_F(SarifTest, aRefusalIsAnErrorAndNotAWarningAsWell) {
  AdDocument document;
  document.width = "<width></width>";
  const std::string text = document.text();
  const Json log = sarif(text, {"--app", kEditor});
  EXPECT_THAT(resultsOf(log), ElementsAre("error refused-131 " + placeOf("<width>", text) +
                                          ": width is empty: refused by \"com.example.editor\""));
  EXPECT_EQ(log["invocations"][0]["exitCode"], 1);
  EXPECT_EQ(run_.status, 1);
  EXPECT_THAT(resultsOf(sarif("<r>")),
              ElementsAre(HasSubstr("error refused-91 1:4: not well-formed XML: ")));
  EXPECT_THAT(resultsOf(sarif(text)), ElementsAre(HasSubstr("by a host without identifier")));
}

TEST_F(SarifTest, hostsWithOneReasonShareAResult) {
  AdDocument document;
  document.table = tableLine("com.example.a", "11") + "\n<push_ad_config><appid>x</appid>" +
                   "</push_ad_config>\n" + tableLine("com.example.b", "11");
  const std::string text = document.text();
  const Json log = sarif(text, {"--all-hosts"});
  EXPECT_THAT(
      resultsOf(log),
      ElementsAre("error refused-104 " + placeOf("<push_ad_config><appid>x", text) +
                  ": adid is missing from push_ad_config: refused by \"x\", \"com.example.b\", "
                  "any other host"));
  EXPECT_EQ(run_.status, 1);
}

TEST_F(SarifTest, aResultPointsToItsRule) {
  AdDocument document;
  document.enable = "<enable>no</enable>";
  document.notes = "";
  const Json log = sarif(document.text());
  const Json& rules = log["tool"]["driver"]["rules"];
  ASSERT_EQ(log["results"].size(), 2U);
  for (const Json& result : log["results"]) {
    const Json& rule = rules.at(result["ruleIndex"].get<std::size_t>());
    EXPECT_EQ(rule["id"], result["ruleId"]);
    EXPECT_EQ(rule["defaultConfiguration"]["level"], result["level"]);
  }
}

TEST_F(SarifTest, columnsCountCharacters) {
  AdDocument document;
  document.enable = "<x>\xF0\x9F\x98\x80\xC3\xA4</x><enable>no</enable>";
  const Json log = sarif(document.text());
  EXPECT_EQ(log["columnKind"], "unicodeCodePoints");
  EXPECT_EQ(log["results"][0]["locations"][0]["physicalLocation"]["region"]["startColumn"], 10);
}

TEST_F(SarifTest, theFilesAddressIsEncoded) {
  const Json log = sarif("<r>", {}, "a b%\xC3\xA4.xml");
  const Json& place = log["results"][0]["locations"][0]["physicalLocation"];
  const std::string uri = "file://" + folder_.path().string() + "/a%20b%25%C3%A4.xml";
  EXPECT_EQ(place["artifactLocation"]["uri"], uri);
  EXPECT_EQ(log["artifacts"][0]["location"]["uri"], uri);
}

TEST_F(SarifTest, aRelativeNameStaysRelative) {
  write("<r>", "ad.xml");
  const auto result =
      runProgram("/bin/sh", {"-c", "cd '" + folder_.path().string() +
                                       "' && exec '" QORIX_ADCHECK "' --format sarif ./ad.xml"});
  const Json log = sarifOf(result);
  EXPECT_EQ(log["results"][0]["locations"][0]["physicalLocation"]["artifactLocation"]["uri"],
            "ad.xml");
}

TEST_F(SarifTest, standardInputHasNoAddress) {
  const Json log = sarifOf(run({"--format", "sarif", "-"}, {.input = "<r>"}));
  EXPECT_EQ(log["results"][0]["locations"][0]["physicalLocation"]["artifactLocation"],
            Json::parse(R"({"index": 0})"));
  EXPECT_EQ(log["artifacts"][0]["description"]["text"], "standard input");
  EXPECT_FALSE(log["artifacts"][0].contains("location"));
}

TEST_F(SarifTest, bytesThatAreNotUtf8AreReplaced) {
  const Json log = sarif("<r>", {"--app", "a\xFF"});
  EXPECT_THAT(resultsOf(log), ElementsAre(HasSubstr("refused by \"a\xEF\xBF\xBD\"")));
}

}  // namespace
}  // namespace qorix::test
