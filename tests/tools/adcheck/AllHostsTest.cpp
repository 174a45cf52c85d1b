#include <string>
#include <vector>

#include "tools/adcheck/AdcheckTest.h"

namespace qorix::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Json = nlohmann::json;

class AllHostsTest : public AdcheckTest {
 protected:
  ProgramRun allHosts(const std::string& document, std::vector<std::string> arguments = {}) {
    arguments.insert(arguments.end(), {"--all-hosts", write(document)});
    return run(arguments);
  }

  static std::string secondAd(const std::string& advance) {
    return "<push_ad><adid>12</adid><enable>0</enable><version>1</version><embed>0</embed>"
           "<width>640</width><height>480</height><count>1</count><delay>0</delay><advance>" +
           advance +
           "</advance><notes>n</notes><title><de>T</de><default>T</default></title><html_contents>"
           "<de>H</de><default>H</default></html_contents></push_ad>";
  }
};

TEST_F(AllHostsTest, everyHostNamedHasARowInOrderOfAppearance) {
  AdDocument document;
  document.table = tableLine("com.example.b", "11") + tableLine("com.example.a", "12") +
                   tableLine("com.example.b", "12");
  document.advance =
      "<advance>{\"com.example.c\": {\"embed\": 3}, \"com.example.a\": {}}</advance>";
  document.behind = secondAd("{\"com.example.d\": {}, \"\": {}}");
  const auto result = allHosts(document.text());
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.errors, IsEmpty());
  EXPECT_THAT(
      linesOf(result.output),
      ElementsAre(
          "host              gets     placement             size       due             languages",
          "com.example.b     adid 11  banner, top right     300 x 50   yes, due-first  default",
          "com.example.a     adid 12  pop-up                640 x 480  no, disabled    de, default",
          "com.example.c     adid 11  banner, bottom right  300 x 50   yes, due-first  default",
          "com.example.d     adid 11  banner, top right     300 x 50   yes, due-first  default",
          "(any other host)  adid 11  banner, top right     300 x 50   yes, due-first  default"));
}

TEST_F(AllHostsTest, aRowTellsWhyAHostIsRefused) {
  AdDocument document;
  document.table = tableLine("com.example.a", "11") + "\n<push_ad_config><appid>x</appid>" +
                   "</push_ad_config>\n" + tableLine("com.example.b", "11");
  const auto result = allHosts(document.text());
  EXPECT_EQ(result.status, 1);
  const auto lines = linesOf(result.output);
  ASSERT_EQ(lines.size(), 5U);
  EXPECT_THAT(lines[1], HasSubstr("com.example.a     adid 11"));
  for (std::size_t index = 2; index < lines.size(); ++index) {
    EXPECT_THAT(lines[index],
                HasSubstr("refused, line 104: adid is missing from push_ad_config (6:1)"));
  }
}

TEST_F(AllHostsTest, aTextThatIsNotXmlHasOneRow) {
  const auto result = allHosts("<rootcfg>");
  EXPECT_EQ(result.status, 1);
  const auto lines = linesOf(result.output);
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_THAT(lines[1], HasSubstr("(any other host)  refused, line 91: not well-formed XML"));
  const auto json = allHosts("<rootcfg>", {"--json"});
  EXPECT_EQ(json.status, 1);
  EXPECT_EQ(Json::parse(json.output), (Json::array({{{"host", nullptr}, {"record", nullptr}}})));
}

TEST_F(AllHostsTest, asJsonEachRowHoldsTheHostsRecord) {
  AdDocument document;
  document.table = tableLine(kEditor, "11");
  document.advance =
      "<advance>{\"com.example.editor\": {\"width\": 728}, \"com.example.unnamed\": {}}</advance>";
  const auto result = allHosts(document.text(), {"--json"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.errors, IsEmpty());
  const Json rows = Json::parse(result.output);
  ASSERT_EQ(rows.size(), 3U);
  EXPECT_EQ(rows[0],
            (Json{{"host", kEditor}, {"record", json(document.text(), {"--app", kEditor})}}));
  EXPECT_EQ(rows[0]["record"]["width"], 728);
  EXPECT_EQ(rows[1]["host"], "com.example.unnamed");
  EXPECT_EQ(rows[2]["host"], nullptr);
  EXPECT_EQ(rows[2]["record"]["width"], 300);
}

TEST_F(AllHostsTest, asJsonTheLogsOfAllHostsComeOnStandardError) {
  AdDocument document;
  document.table = tableLine(kEditor, "11");
  document.enable = "<enable>0</enable>";
  EXPECT_EQ(allHosts(document.text(), {"--json"}).errors, "ZAM Disabled.\nZAM Disabled.\n");
  EXPECT_THAT(allHosts(document.text()).errors, IsEmpty());
}

TEST_F(AllHostsTest, everyHostHasTheMachineToItself) {
  AdDocument document;
  document.table = tableLine("com.example.a", "11") + tableLine("com.example.b", "11");
  const auto result =
      allHosts(document.text(), {"--json", "--stored-version", "2a1", "--stored-count", "2"});
  for (const Json& row : Json::parse(result.output)) {
    EXPECT_EQ(row["record"]["decision"]["reason"], "due-counted");
    EXPECT_EQ(row["record"]["decision"]["storedCount"], 3);
  }
}

TEST_F(AllHostsTest, columnsAreAlignedByCharacters) {
  AdDocument document;
  document.table = tableLine("com.example.\xC3\xA9\xC3\xA9", "11");
  const auto lines = linesOf(allHosts(document.text()).output);
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_EQ(lines[1].find("adid"), lines[2].find("adid") + 2);  // two letters of two bytes
}

}  // namespace
}  // namespace qorix::test
