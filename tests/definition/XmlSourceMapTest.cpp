#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "definition/XmlDocument.h"
#include "definition/XmlSourceMap.h"

namespace qorix {
namespace {

/// A document with its map.
struct Mapped {
  explicit Mapped(const std::string& source, std::size_t pieceSize = 1 << 20)
      : document(XmlDocument::parse(source, map, pieceSize)) {}

  XmlSourceMap map;
  std::optional<XmlDocument> document;
};

/// The offset of the character of the root's text that `part` begins with.
std::size_t offsetOf(const Mapped& mapped, std::string_view part) {
  const XmlElement root = mapped.document->root();
  return mapped.map.offsetInText(root, root.text().find(part));
}

void gather(XmlElement element, std::vector<XmlElement>& all) {
  all.push_back(element);
  for (const XmlElement child : element.children()) {
    gather(child, all);
  }
}

TEST(XmlSourceMapTest, elementsStandAtTheirStartTags) {
  const std::string source =
      "\xEF\xBB\xBF<?xml version='1.0'?>\r\n<!-- <a> --><r>\r\n<a "
      "y='1'>&lt;b></a><![CDATA[<b>]]><b/>"
      "\xE8\xAF\x95<c>t</c ></r>";
  const Mapped mapped(source);
  ASSERT_TRUE(mapped.document);
  std::vector<XmlElement> elements;
  gather(mapped.document->root(), elements);
  ASSERT_EQ(elements.size(), 4U);
  EXPECT_EQ(mapped.map.offsetOf(elements[0]), source.find("<r>"));
  EXPECT_EQ(mapped.map.offsetOf(elements[1]), source.find("<a y"));
  EXPECT_EQ(mapped.map.offsetOf(elements[2]), source.find("<b/>"));
  EXPECT_EQ(mapped.map.offsetOf(elements[3]), source.find("<c>"));
  EXPECT_FALSE(mapped.map.error());
}

TEST(XmlSourceMapTest, eachCharacterOfATextHasItsPlace) {
  const std::string source =
      "<r>one &amp; two<![CDATA[ <three>\r\nfour]]><!-- c --> five&#65;six</r>";
  const Mapped mapped(source);
  ASSERT_TRUE(mapped.document);
  EXPECT_EQ(mapped.document->root().text(), "one & two <three>\nfour fiveAsix");
  for (const auto* part : {"one", "ne ", " two", "<three", "four", "ur", " five", "six"}) {
    EXPECT_EQ(offsetOf(mapped, part), source.find(part)) << part;
  }
  EXPECT_EQ(offsetOf(mapped, "& two"), source.find("&amp;"));
  EXPECT_EQ(offsetOf(mapped, "\nfour"), source.find("\r\nfour"));
  EXPECT_EQ(offsetOf(mapped, "Asix"), source.find("&#65;"));
}

TEST(XmlSourceMapTest, theTextOfAnElementBeginsWithItsOwn) {
  const std::string source = "<r>a<b>bb<c/>cc</b><d></d>e</r>";
  const Mapped mapped(source);
  ASSERT_TRUE(mapped.document);
  const XmlElement b = *mapped.document->root().firstChildNamed("b");
  EXPECT_EQ(mapped.map.offsetInText(b, 0), source.find("bb"));
  EXPECT_EQ(mapped.map.offsetInText(b, 2), source.find("cc"));
  EXPECT_EQ(mapped.map.offsetInText(b, 3), source.find("c</b>"));
  EXPECT_EQ(mapped.map.offsetInText(b, 4), source.find("</b>"));
  EXPECT_EQ(mapped.map.offsetInText(b, 99), source.find("</b>"));
  const XmlElement d = *mapped.document->root().firstChildNamed("d");
  EXPECT_EQ(mapped.map.offsetInText(d, 0), source.find("<d>"));
}

TEST(XmlSourceMapTest, whatAnEntityHoldsStandsWhereItIsNamed) {
  const std::string source =
      "<!DOCTYPE r [<!ENTITY i '<i>inner</i>'><!ENTITY e 'text &i; more'>]><r>a&e;b&e;</r>";
  const Mapped mapped(source);
  ASSERT_TRUE(mapped.document);
  EXPECT_EQ(mapped.document->root().text(), "atext inner morebtext inner more");
  const auto first = source.find("&e;b");
  EXPECT_EQ(offsetOf(mapped, "text"), first);
  EXPECT_EQ(offsetOf(mapped, "inner"), first);
  EXPECT_EQ(offsetOf(mapped, "more"), first);
  EXPECT_EQ(offsetOf(mapped, "btext"), first + 3);
  EXPECT_EQ(mapped.map.offsetOf(*mapped.document->root().firstChildNamed("i")), first);
}

TEST(XmlSourceMapTest, whereTheTextIsCutIntoPiecesMakesNoDifference) {
  const std::string source =
      "<r>one &amp; two<![CDATA[ <\xE8\xAF\x95>\r\nfour]]><a>\r\nfive</a>&#65;six</r>";
  const Mapped whole(source);
  ASSERT_TRUE(whole.document);
  const std::size_t length = whole.document->root().text().size();
  for (std::size_t pieceSize = 1; pieceSize < source.size(); ++pieceSize) {
    const Mapped mapped(source, pieceSize);
    ASSERT_TRUE(mapped.document);
    ASSERT_EQ(mapped.document->root().text(), whole.document->root().text());
    for (std::size_t offset = 0; offset <= length; ++offset) {
      EXPECT_EQ(mapped.map.offsetInText(mapped.document->root(), offset),
                whole.map.offsetInText(whole.document->root(), offset))
          << pieceSize << ", " << offset;
    }
  }
}

TEST(XmlSourceMapTest, notingMakesNoDifferenceToTheVerdictAndTheText) {
  const std::string filling(2000, '.');  // long enough to be read past the parser otherwise
  const std::vector<std::string> sources = {
      "",
      "<r/>",
      "<r>",
      "text",
      std::string("\0\0", 2),
      "<r><![CDATA[" + filling + "]]></r>",
      "<r><![CDATA[" + filling + "\r\n]]]]><![CDATA[>\r" + filling + "]]></r>",
      "<r><![CDATA[" + filling + "\x01]]></r>",
      "<r><![CDATA[" + filling + "\xC3]]></r>",
      "<r><![CDATA[" + filling + "\xEF\xBF\xBF]]></r>",
      "<r>a<!--<![CDATA[" + filling + "]]>-->b</r>",
      "<r>[CDATA[" + filling + "]]></r>",
      "<!DOCTYPE r [<!ENTITY e '<![CDATA[" + filling + "]]>'>]><r>&e;</r>",
      "<?xml version='2.0'?><r/>",
      "<!DOCTYPE r [%p;]><r/>",
  };
  for (const auto& source : sources) {
    const auto plain = XmlDocument::parse(source);
    const Mapped mapped(source);
    ASSERT_EQ(mapped.document.has_value(), plain.has_value()) << source;
    EXPECT_EQ(mapped.map.error().has_value(), !plain.has_value()) << source;
    if (plain) {
      EXPECT_EQ(mapped.document->root().text(), plain->root().text());
    }
  }
}

TEST(XmlSourceMapTest, aTextThatIsNotWellFormedHasAPlaceAndAReason) {
  const auto expectError = [](const std::string& source, std::size_t offset,
                              const std::string& message) {
    const Mapped mapped(source);
    ASSERT_TRUE(mapped.map.error()) << source;
    EXPECT_EQ(mapped.map.error()->offset, offset) << source;
    EXPECT_EQ(mapped.map.error()->message, message) << source;
  };
  expectError("", 0, "no element found");
  expectError("<r>\n<a></b></r>", 9, "mismatched tag");
  expectError("<r>\n<a/>", 8, "no element found");
  expectError("<r><![CDATA[a\x01]]></r>", 13, "not well-formed (invalid token)");
  expectError("<r/><r/>", 4, "junk after document element");
  expectError("<?xml version='2.0'?><r/>", 0, "a version of XML other than 1.x");
  expectError("<!DOCTYPE r [%p;]><r/>", 13, "an unknown parameter entity");
}

}  // namespace
}  // namespace qorix
