#include <string>
#include <utility>
#include <vector>

#include "tools/adcheck/AdcheckTest.h"

namespace qorix::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class TextReportTest : public AdcheckTest {
 protected:
  std::string textOf(const AdDocument& document, std::vector<std::string> arguments = {}) {
    const auto result = report(document.text(), std::move(arguments));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    return result.output;
  }
};

TEST_F(TextReportTest, tellsTheTableLineAndTheAdvertisement) {
  AdDocument document;
  EXPECT_THAT(textOf(document), AllOf(HasSubstr("as the host \"com.example.editor\" reads it"),
                                      HasSubstr("table          no line names this host\n"),
                                      HasSubstr("advertisement  adid \"11\" at " +
                                                placeOf("<push_ad>", document.text()) +
                                                ", the first of the document")));
  document.table = tableLine("com.example.other", "1") + "\n" + tableLine(kEditor, "11");
  document.behind = "<push_ad><adid>1</adid></push_ad>";
  EXPECT_THAT(textOf(document),
              AllOf(HasSubstr("table          the line at 6:1 names this host: adid \"11\"\n"),
                    HasSubstr(", which the table line names\n")));
  EXPECT_THAT(run({write(document.text())}).output,
              AllOf(HasSubstr("as a host without identifier reads it"),
                    HasSubstr("customisation  none, as this host has no identifier"),
                    HasSubstr("go to pre-defined condition. (this host has no identifier)\n")));
}

TEST_F(TextReportTest, tellsWhatTheCustomisationChanges) {
  AdDocument document;
  const auto expectNone = [&](const std::string& advance, const std::string& why) {
    document.advance = "<advance>" + advance + "</advance>";
    EXPECT_THAT(textOf(document), HasSubstr("customisation  " + why + "\n"));
  };
  expectNone("{}", "none for this host");
  expectNone("none", "none: advance is not JSON");
  expectNone("[]", "none: advance is no JSON object");
  expectNone("{\"com.example.editor\": {\"count\": 3}}", "for this host, changes nothing");
  document.advance =
      "<advance>{\"com.example.editor\": {\"enable\": 0, \"version\": \"3\", \"embed\": 2,"
      " \"width\": 300, \"height\": 60, \"offsetx\": 1, \"offsety\": 2, \"count\": 4, \"delay\": 5,"
      " \"notes\": \"other\"}}</advance>";
  const std::string text = textOf(document);
  EXPECT_THAT(
      text, HasSubstr("customisation  by the advance at " + placeOf("<advance>", document.text())));
  for (const auto* change :
       {"enable: on becomes off", "version: \"2a1\" becomes \"3\"", "embed: 1 becomes 2",
        "height: 50 becomes 60", "offsetx: 0 becomes 1", "offsety: 0 becomes 2",
        "count: 3 becomes 4", "delay: 0 becomes 5", "notes: \"autumn offer\" becomes \"other\""}) {
    EXPECT_THAT(text, HasSubstr(std::string("                   ") + change + "\n"));
  }
  EXPECT_THAT(text, Not(HasSubstr("width: ")));  // it says the same
}

TEST_F(TextReportTest, tellsWhichLanguagesUsersGet) {
  AdDocument document;
  document.title = "<title><de>D</de><default>T</default></title>";
  document.pages = "<html_contents><en>E</en><default>T</default></html_contents>";
  EXPECT_THAT(
      textOf(document, {"--languages", "de-AT"}),
      AllOf(HasSubstr("titles         de, default\n"), HasSubstr("pages          en, default\n"),
            HasSubstr("prefers \"de-AT\" and gets the title of de, the page of default\n"),
            HasSubstr("of no language listed get the title of default, the page of default\n")));
  document.title = "<title><de>D</de></title>";
  for (const auto& none : std::vector<std::vector<std::string>>{{}, {"--languages", " , "}}) {
    EXPECT_THAT(
        textOf(document, none),
        HasSubstr("this user      has no preference, which means \"en\", and gets no title, "
                  "the page of en\n"));
  }
  EXPECT_THAT(textOf(document, {"--languages", " de-AT , en"}),
              HasSubstr("prefers \"de-AT\" and gets the title of de"));
}

TEST_F(TextReportTest, tellsWhetherItIsDueAndWhy) {
  AdDocument document;
  const auto expectDue = [&](const std::string& words, const std::vector<std::string>& arguments) {
    EXPECT_THAT(textOf(document, arguments), HasSubstr("due            " + words));
  };
  expectDue("yes, nothing was shown on this machine yet, so count is not looked at (due-first)",
            {});
  expectDue("yes, this version was shown once and count is 3 (due-counted)",
            {"--stored-version", "2a1", "--stored-count", "1"});
  expectDue("no, this version was shown 3 times and count is 3 (used-up)",
            {"--stored-version", "2a1", "--stored-count", "3"});
  expectDue("yes, \"1\" was shown, which is another version: counted from 0 (due-new-version)",
            {"--stored-version", "1", "--stored-count", "1"});
  document.embed = "<embed>-1</embed>";
  expectDue("a showing is counted, but nothing is shown: embed is -1 (nothing-to-show)", {});
  document.delay = "<delay>-9</delay>";
  expectDue("a showing is counted, but never seen: delay is -9 (parked)", {});
  document.enable = "<enable>0</enable>";
  expectDue("no, it is switched off (disabled)", {});
  EXPECT_THAT(textOf(document), HasSubstr("stored then    nothing\n"));
  document.enable = "<enable>1</enable>";
  EXPECT_THAT(textOf(document), HasSubstr("stored then    \"2a1\", shown once\n"));
}

TEST_F(TextReportTest, tellsWhereTheFrameLies) {
  AdDocument document;
  document.advance =
      "<advance>{\"com.example.editor\": {\"offsetx\": 8, \"offsety\": 4}}</advance>";
  const auto expectFrame = [&](const std::string& embed, const std::string& placement,
                               const std::string& frame) {
    document.embed = "<embed>" + embed + "</embed>";
    EXPECT_THAT(textOf(document), AllOf(HasSubstr("placement      " + placement + "\n"),
                                        HasSubstr("frame          " + frame + "\n")));
  };
  const std::string in = " from the lower left, 300 x 50, in a host view of ";
  expectFrame("1", "banner, top right", "x 492, y 546" + in + "800 x 600");
  expectFrame("2", "banner, right edge, middle", "x 492, y 271" + in + "800 x 600");
  expectFrame("3", "banner, bottom right", "x 492, y 4" + in + "800 x 600");
  expectFrame("4", "banner, bottom edge, middle", "x 242, y 4" + in + "800 x 600");
  expectFrame("5", "banner, bottom left", "x 8, y 4" + in + "800 x 600");
  expectFrame("6", "banner, left edge, middle", "x 8, y 271" + in + "800 x 600");
  expectFrame("7", "banner, top left", "x 8, y 546" + in + "800 x 600");
  expectFrame("8", "banner, top edge, middle", "x 242, y 546" + in + "800 x 600");
  expectFrame("9", "banner, lower left, without offsets", "x 0, y 0" + in + "800 x 600");
}

TEST_F(TextReportTest, theViewsSizeIsAsGiven) {
  AdDocument document;
  EXPECT_THAT(textOf(document, {"--view-size", "301x100"}),
              HasSubstr("x 1, y 50 from the lower left, 300 x 50, in a host view of 301 x 100\n"));
  EXPECT_THAT(
      textOf(document, {"--view-size", "200x100"}),
      HasSubstr("x -100, y 50 from the lower left, 300 x 50, in a host view of 200 x 100; it "
                "passes the view's edges\n"));
  document.embed = "<embed>0</embed>";
  EXPECT_THAT(textOf(document), AllOf(HasSubstr("placement      pop-up\n"),
                                      HasSubstr("frame          300 x 50, in the middle")));
  document.width = "<width>0</width>";
  EXPECT_THAT(textOf(document), HasSubstr("frame          the size of the window, in the middle"));
  document.embed = "<embed>-1</embed>";
  EXPECT_THAT(textOf(document),
              AllOf(HasSubstr("placement      nothing\n"), HasSubstr("frame          none\n")));
}

TEST_F(TextReportTest, tellsWhatAHostLogs) {
  AdDocument document;
  EXPECT_THAT(textOf(document), Not(HasSubstr("logs ")));
  document.height = "<height>0</height>";
  EXPECT_THAT(
      textOf(document),
      HasSubstr("logs           -[MyPushAdInfo doCheck] 102: ZAM <=> ZAM Verify failed!\n"));
}

TEST_F(TextReportTest, whatATerminalWouldObeyIsNotPrinted) {
  AdDocument document;
  document.table = tableLine(
      "x\xC2\x9B"
      "31m\x7F",
      "11");
  document.notes =
      "<notes>\xC2\x9B"
      "2J</notes>";
  document.version =
      "<version>1\xC2\x9B"
      "2J\x7F</version>";
  for (const auto& result : {report(document.text()), run({"--all-hosts", folder_ / "ad.xml"})}) {
    EXPECT_THAT(result.output, Not(HasSubstr("\xC2\x9B")));
    EXPECT_THAT(result.output, Not(HasSubstr("\x7F")));
  }
}

}  // namespace
}  // namespace qorix::test
