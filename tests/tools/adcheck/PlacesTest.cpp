#include <cstddef>
#include <string>

#include "tools/adcheck/AdcheckTest.h"

namespace qorix::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class PlacesTest : public AdcheckTest {};

TEST_F(PlacesTest, elementsAreFoundBehindAnything) {
  AdDocument document;
  document.count =
      "<!-- \xC3\xA9 --><notes_too><![CDATA[\xE8\xAF\x95]]>&amp;</notes_too><count>0</count>";
  const std::string text = document.text();
  // Characters, not bytes: three of the letters above take three, two and three bytes.
  const auto begin = text.find("<!-- \xC3\xA9");
  const auto column = text.find("<count>0") - begin + 1 - 1 - 2;
  EXPECT_THAT(warnings(text), ElementsAre(StartsWith(placeOf("<!-- ", text).substr(0, 3) +
                                                     std::to_string(column) + ": count is 0")));
}

TEST_F(PlacesTest, carriageReturnsAndAByteOrderMarkCountAsEditorsSay) {
  AdDocument document;
  document.count = "<count>0</count>";
  const std::string plain = document.text();
  const std::string place = placeOf("<count>", plain);
  std::string text = "\xEF\xBB\xBF";
  for (const char c : plain) {
    text += c == '\n' ? "\r\n" : std::string(1, c);
  }
  EXPECT_THAT(warnings(text), ElementsAre(StartsWith(place + ": count is 0")));
  EXPECT_THAT(warnings("\xEF\xBB\xBF" + plain), ElementsAre(StartsWith(place + ": count is 0")));
}

// Counting each time from the line's beginning would outlast the program's minute.
TEST_F(PlacesTest, manyFindingsInOneLineTakeNoLonger) {
  constexpr int kLanguages = 150'000;
  AdDocument document;
  document.title = "<title>";
  for (int index = 0; index < kLanguages; ++index) {
    const std::string code = "E" + std::to_string(index);
    document.title.append("<").append(code).append(">x</").append(code).append(">");
  }
  document.title += "<default>T</default></title>";
  const auto result = report(document.text());
  EXPECT_EQ(result.status, 0);
  EXPECT_GE(linesOf(result.output).size(), std::size_t{kLanguages});
}

TEST_F(PlacesTest, aPlaceInACdataSectionIsFound) {
  AdDocument document;
  document.page = "<p>\n<a href=\"https://x.example/?tools=12\">x</a>";
  const std::string text = document.text();
  EXPECT_THAT(warnings(text), ElementsAre(StartsWith(placeOf("https://x.example", text))));
}

TEST_F(PlacesTest, aPlaceInEscapedTextIsFound) {
  AdDocument document;
  document.pages =
      "<html_contents><default>&lt;p>&#233;\r\n&lt;a href=\"https://x.example/?tools=12\">x&lt;/a>"
      "</default></html_contents>";
  const std::string text = document.text();
  // The line break of two bytes ends one line.
  EXPECT_THAT(warnings(text), ElementsAre(StartsWith(placeOf("https://x.example", text))));
}

TEST_F(PlacesTest, whatAnEntityHoldsLiesWhereItIsNamed) {
  AdDocument document;
  document.declaration =
      "<!DOCTYPE rootcfg [<!ENTITY link '&#60;a href=\"https://x.example/?tools=12\">x&#60;/a>'>"
      "<!ENTITY counted '<count>0</count>'>]>";
  document.count = "&counted;";
  document.page = "]]>&link;<![CDATA[";
  const std::string text = document.text();
  // The entity's own text is markup to XML, so the link is written as a reference once more.
  EXPECT_THAT(warnings(text), testing::Contains(StartsWith(placeOf("&counted;", text))));
}

TEST_F(PlacesTest, aBrokenCustomisationIsFoundInItself) {
  AdDocument document;
  document.advance = "<advance>{\"com.example.editor\":\n  {\"width\": 1,}}</advance>";
  std::string text = document.text();
  EXPECT_THAT(warnings(text), ElementsAre(StartsWith(placeOf("}}</advance>", text))));
  // The same with references in place of the quotes, which are six bytes each.
  document.advance =
      "<advance>{&quot;com.example.editor&quot;:\n  {&quot;width&quot;: 1,}}</advance>";
  text = document.text();
  EXPECT_THAT(warnings(text), ElementsAre(StartsWith(placeOf("}}</advance>", text))));
  EXPECT_THAT(report(text).output, HasSubstr("advance is not JSON ("));
}

}  // namespace
}  // namespace qorix::test
