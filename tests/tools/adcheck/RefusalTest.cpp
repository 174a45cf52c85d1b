#include <string>
#include <vector>

#include "support/CheckLines.h"
#include "tools/adcheck/AdcheckTest.h"

namespace qorix::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class RefusalTest : public AdcheckTest {
 protected:
  /// That the document is refused with that line of the log, at that place, in those words.
  void expectRefusal(int line, const std::string& place, const std::string& words,
                     const std::string& document) {
    const auto result = report(document);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output,
                HasSubstr((folder_ / "ad.xml") + ":" + place + ": refused: " + words +
                          " (a host logs line " + std::to_string(line) + ")\n"));
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(json(document, {"--app", kEditor}), nlohmann::json());
    EXPECT_EQ(run_.errors,
              checkLine("+[MyPushAdUtil parseXMLWithString:]", line, kFatalMessage) + "\n");
  }

  /// The same at the first place of `part` in the document.
  void expectRefusalAt(const std::string& part, int line, const std::string& words,
                       const AdDocument& document) {
    expectRefusal(line, placeOf(part, document.text()), words, document.text());
  }
};

TEST_F(RefusalTest, aTextThatIsNotWellFormed) {
  expectRefusal(91, "1:1", "not well-formed XML: no element found", "");
  expectRefusal(91, "1:1", "not well-formed XML: syntax error", "text");
  expectRefusal(91, "2:6", "not well-formed XML: mismatched tag", "<r>\n<a></b></r>");
  expectRefusal(91, "3:1", "not well-formed XML: no element found", "<r>\r\n<a/>\r\n");
  expectRefusal(91, "2:4", "not well-formed XML: undefined entity", "<r>\n<a>&nbsp;</a></r>");
  expectRefusal(91, "1:5", "not well-formed XML: junk after document element", "<r/>\xC3\xA9x");
  expectRefusal(91, "1:1", "not well-formed XML: a version of XML other than 1.x",
                "<?xml version='2.0'?><r/>");
  expectRefusal(91, "1:1", "not well-formed XML: a zero byte near the beginning",
                std::string("<\0r\0", 4));
  expectRefusal(91, "1:14", "not well-formed XML: an unknown parameter entity",
                "<!DOCTYPE r [%p;]><r/>");
}

TEST_F(RefusalTest, aFileVersion) {
  AdDocument document;
  document.fileVersion = "<file_version/>";
  expectRefusalAt("<file_version/>", 94, "file_version is empty", document);
  document.fileVersion = "";
  expectRefusalAt("<rootcfg>", 94, "file_version is missing from rootcfg", document);
  expectRefusal(94, "1:1", "the root element is config, not rootcfg", "<config/>");
}

TEST_F(RefusalTest, aTableLine) {
  AdDocument document;
  document.table = "<push_ad_config><adid>11</adid></push_ad_config>";
  expectRefusalAt("<push_ad_config>", 103, "appid is missing from push_ad_config", document);
  document.table = "<push_ad_config>\n <appid/><adid>11</adid></push_ad_config>";
  expectRefusalAt("<appid/>", 103, "appid is empty", document);
  document.table = "<push_ad_config><appid>x</appid></push_ad_config>";
  expectRefusalAt("<push_ad_config>", 104, "adid is missing from push_ad_config", document);
  document.table = "<push_ad_config><appid>x</appid><adid></adid></push_ad_config>";
  expectRefusalAt("<adid></adid>", 104, "adid is empty", document);
  document.table = tableLine(kEditor, "99");
  expectRefusalAt("<adid>99", 166, "no push_ad has the adid \"99\" that this line names", document);
}

TEST_F(RefusalTest, theAdvertisements) {
  expectRefusal(119, "1:1", "there is no push_ad",
                "<rootcfg><data><file_version>1</file_version></data></rootcfg>");
  AdDocument document;
  document.ahead = "<push_ad><enable>1</enable></push_ad>";
  expectRefusalAt("<push_ad><enable>", 122, "adid is missing from push_ad", document);
  document.ahead = "<push_ad><adid/></push_ad>";
  expectRefusalAt("<adid/>", 122, "adid is empty", document);
}

TEST_F(RefusalTest, theFields) {
  struct Field {
    std::string AdDocument::*part;
    std::string name;
    int line;
  };
  const std::vector<Field> fields = {
      {&AdDocument::enable, "enable", 128}, {&AdDocument::version, "version", 129},
      {&AdDocument::embed, "embed", 130},   {&AdDocument::width, "width", 131},
      {&AdDocument::height, "height", 132}, {&AdDocument::count, "count", 133},
      {&AdDocument::delay, "delay", 134},   {&AdDocument::advance, "advance", 135},
      {&AdDocument::notes, "notes", 136}};
  for (const auto& [part, name, line] : fields) {
    AdDocument document;
    document.*part = "";
    expectRefusalAt("<push_ad>", line, name + " is missing from push_ad", document);
    document.*part = "<" + name + "/>";
    expectRefusalAt("<" + name + "/>", line, name + " is empty", document);
  }
}

TEST_F(RefusalTest, titleAndPage) {
  AdDocument document;
  document.title = "";
  expectRefusalAt("<push_ad>", 138, "title is missing from push_ad", document);
  document.title = "<title>Try</title>";
  expectRefusalAt("<title>", 176, "title has no child element with a text", document);
  document = {};
  document.pages = "<html_content/>";
  expectRefusalAt("<push_ad>", 139, "html_contents is missing from push_ad", document);
  document.pages = "<html_contents><en/></html_contents>";
  expectRefusalAt("<html_contents>", 177, "html_contents has no child element with a text",
                  document);
}

TEST_F(RefusalTest, theReasonIsNotToldAgainAsAWarning) {
  AdDocument document;
  document.table = tableLine(kEditor, "99");
  EXPECT_THAT(report(document.text()).output, Not(HasSubstr("warning: no push_ad has the adid")));
  document.table = tableLine("com.example.other", "99");
  EXPECT_THAT(report(document.text()).output, HasSubstr("warning: no push_ad has the adid"));
}

}  // namespace
}  // namespace qorix::test
