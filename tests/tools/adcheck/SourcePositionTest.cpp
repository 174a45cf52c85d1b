#include <cstddef>
#include <string>

#include "tools/adcheck/AdcheckTest.h"
#include "tools/common/SourcePosition.h"

namespace qorix::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using tools::SourceLines;
using tools::SourcePosition;

TEST(SourceLinesTest, linesEndInEachWay) {
  const SourceLines lines("a\nb\r\nc\rd");
  EXPECT_EQ(lines.positionOf(0), (SourcePosition{1, 1}));
  EXPECT_EQ(lines.positionOf(1), (SourcePosition{1, 2}));
  EXPECT_EQ(lines.positionOf(2), (SourcePosition{2, 1}));
  EXPECT_EQ(lines.positionOf(5), (SourcePosition{3, 1}));
  EXPECT_EQ(lines.positionOf(7), (SourcePosition{4, 1}));
  EXPECT_EQ(lines.positionOf(8), (SourcePosition{4, 2}));
  EXPECT_EQ(lines.positionOf(99), (SourcePosition{4, 2}));
}

TEST(SourceLinesTest, columnsCountCharacters) {
  const SourceLines lines("\xC3\xA9\xE8\xAF\x95\xF0\x9D\x84\x9Ex\n\xC3\xA9y");
  EXPECT_EQ(lines.positionOf(9), (SourcePosition{1, 4}));
  EXPECT_EQ(lines.positionOf(13), (SourcePosition{2, 2}));
}

TEST(SourceLinesTest, aByteOrderMarkIsNoCharacter) {
  const SourceLines lines("\xEF\xBB\xBF<r>\n<a>");
  EXPECT_EQ(lines.positionOf(0), (SourcePosition{1, 1}));
  EXPECT_EQ(lines.positionOf(3), (SourcePosition{1, 1}));
  EXPECT_EQ(lines.positionOf(4), (SourcePosition{1, 2}));
  EXPECT_EQ(lines.positionOf(7), (SourcePosition{2, 1}));
  EXPECT_EQ(SourceLines("\xEF\xBB\xBF").positionOf(0), (SourcePosition{1, 1}));
  EXPECT_EQ(SourceLines("").positionOf(0), (SourcePosition{1, 1}));
}

TEST(SourceLinesTest, longLinesAreCountedInPieces) {
  constexpr std::size_t kLetters = 200'000;
  std::string text = "x\n";
  for (std::size_t index = 0; index < kLetters; ++index) {
    text += "\xC3\xA9";
  }
  const SourceLines lines(text);
  for (std::size_t index = 0; index < kLetters; ++index) {
    ASSERT_EQ(lines.positionOf(2 + 2 * index), (SourcePosition{2, index + 1}));
  }
  EXPECT_EQ(lines.positionOf(text.size()), (SourcePosition{2, kLetters + 1}));
}

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
