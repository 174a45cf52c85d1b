#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "definition/XmlDocument.h"
#include "support/Documents.h"
#include "support/Repeated.h"

namespace qorix {
namespace {

using namespace std::string_literals;

/// The whole text of the root, or "<refused>".
std::string textOf(const std::string& document) {
  const auto read = XmlDocument::parse(document);
  return read ? std::string(read->root().text()) : "<refused>";
}

struct TextCase {
  std::string document;
  std::string text;
};

const std::vector<TextCase> kWellFormed = {
    {"<r/>", ""},
    {"<r></r>", ""},
    {" \n<r> a </r>\n ", " a "},
    {"\xEF\xBB\xBF<r>a</r>", "a"},
    {"<?xml version=\"1.0\"?><r>a</r>", "a"},
    {"<?xml version='1.1' encoding='UTF-8' standalone='yes'?><r>a</r>", "a"},
    {"<?xml version='1.0' encoding='ISO-8859-1'?><r>\xC3\xA9</r>", "\xC3\xA9"},
    {"<r>\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E</r>", "\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E"},
    {"<r>&lt;&gt;&amp;&apos;&quot;</r>", "<>&'\""},
    {"<r>&#65;&#x42;&#x1D11E;</r>", "AB\xF0\x9D\x84\x9E"},
    {"<r>&amp;lt;</r>", "&lt;"},
    {"<r>a\r\nb\rc\n</r>", "a\nb\nc\n"},
    {"<r><![CDATA[a\r\nb\rc\n\r]]></r>", "a\nb\nc\n\n"},
    {"<r>a&#13;&#10;b</r>", "a\r\nb"},
    {"<r><![CDATA[<b>&amp;</b>]]></r>", "<b>&amp;</b>"},
    {"<r><![CDATA[]]></r>", ""},
    {"<r>a<![CDATA[b]]>c<![CDATA[d]]></r>", "abcd"},
    {"<r><![CDATA[a]]]]><![CDATA[>b]]></r>", "a]]>b"},
    {"<r><![CDATA[]]]]]]></r>", "]]]]"},
    {"<r><![CDATA[ <![CDATA[ ]]></r>", " <![CDATA[ "},
    {"<r>a<!-- <![CDATA[ no ]]> -->b</r>", "ab"},
    {"<r>a<?pi <![CDATA[ no ]]> ?>b</r>", "ab"},
    {"<r>a<b>c<d>e</d></b>f</r>", "acef"},
    {"<r>]]</r>", "]]"},
    {"<r>\x7F\xC2\x80\xEF\xBF\xBD</r>", "\x7F\xC2\x80\xEF\xBF\xBD"},
    {"<r a='&lt;' b=\"x>y\">a</r>", "a"},
    {"<!-- c --><?p?><r>a</r><!-- c --><?p?>", "a"},
    {"<!DOCTYPE r><r>a</r>", "a"},
    {"<!DOCTYPE r [<!ELEMENT r ANY><!ATTLIST r a CDATA 'x'><!NOTATION n SYSTEM 'n'>]><r>a</r>",
     "a"},
    {"<!DOCTYPE r [<!ENTITY e 'inside'>]><r>&e;</r>", "inside"},
    {"<!DOCTYPE r [<!ENTITY e '<b>x</b>'>]><r>1&e;2</r>", "1x2"},
    {"<!DOCTYPE r [<!ENTITY e '<![CDATA[<x>]]>'>]><r>&e;</r>", "<x>"},
    {"<!DOCTYPE r [<!ENTITY a 'A'><!ENTITY b '&a;B'>]><r a='&b;'>&b;&b;</r>", "ABAB"},
    {"<!DOCTYPE r [<!ENTITY e 'first'><!ENTITY e 'second'>]><r>&e;</r>", "first"},
    {"<!DOCTYPE r [<!ENTITY e '<![CDATA[<!-- ]]>'>]><r>&e;<![CDATA[x]]>&e;</r>", "<!-- x<!-- "},
    {"<!DOCTYPE r [<!ENTITY % p '<!ENTITY e \"made\">'>%p;]><r>&e;</r>", "made"},
    {"<x:r xmlns:x='urn:x'>a</x:r>", "a"},
    {"<x:r>an undeclared prefix is no matter</x:r>", "an undeclared prefix is no matter"},
};

TEST(XmlDocumentTest, readsTheTextOfWellFormedDocuments) {
  for (const auto& [document, text] : kWellFormed) {
    EXPECT_EQ(textOf(document), text) << document;
  }
}

TEST(XmlDocumentTest, whereTheTextIsCutIntoPiecesMakesNoDifference) {
  for (const auto& [document, text] : kWellFormed) {
    for (std::size_t pieceSize = 1; pieceSize < document.size(); ++pieceSize) {
      const auto read = XmlDocument::parse(document, pieceSize);
      ASSERT_TRUE(read) << pieceSize << ": " << document;
      EXPECT_EQ(read->root().text(), text) << pieceSize << ": " << document;
    }
  }
}

const std::vector<std::string> kNotWellFormed = {
    "",
    " ",
    "text",
    "{}",
    "<",
    "<r",
    "<r>",
    "</r>",
    "<r></R>",
    "<r/><r/>",
    "<r/>garbage",
    "garbage<r/>",
    "<r/>&amp;",
    "<r/><![CDATA[]]>",
    "<r><a></r></a>",
    "<r a=1/>",
    "<r a/>",
    "<r a='1' a='2'/>",
    "<r a='1'b='2'/>",
    "<r a='<'/>",
    "<1/>",
    "<r>&</r>",
    "<r>&amp</r>",
    "<r>&undefined;</r>",
    "<r a='&undefined;'/>",
    "<r>&#0;</r>",
    "<r>&#x1F;</r>",
    "<r>&#xD800;</r>",
    "<r>&#xFFFE;</r>",
    "<r>&#x110000;</r>",
    "<r>&#;</r>",
    "<r>]]></r>",
    "<r><![CDATA[</r>",
    "<r><![CDATA[ ]]</r>",
    "<r><![CDATA[ ]] ></r>",
    "<r><![cdata[ ]]></r>",
    "<r><![CDATA[\x01]]></r>",
    "<r><![CDATA[\x80]]></r>",
    "<r><![CDATA[\xC3]]></r>",
    "<r><![CDATA[\xC3",
    "<r><![CDATA[\xC0\x80]]></r>",
    "<r><![CDATA[\xE0\x80\x80]]></r>",
    "<r><![CDATA[\xED\xA0\x80]]></r>",
    "<r><![CDATA[\xEF\xBF\xBE]]></r>",
    "<r><![CDATA[a\xEF\xBF\xBF]]></r>",
    "<r><![CDATA[\xF4\x90\x80\x80]]></r>",
    "<r><!-- -- --></r>",
    "<r><!-- </r>",
    "<r><?xml version='1.0'?></r>",
    " <?xml version='1.0'?><r/>",
    "<?xml?><r/>",
    "<?xml version='2.0'?><r/>",
    "<?xml version='1.'?><r/>",
    "<?xml version='1.x'?><r/>",
    "<?xml version='11'?><r/>",
    "<?xml version='1.0' encoding=''?><r/>",
    "<?xml encoding='UTF-8'?><r/>",
    "<r>\x01</r>",
    "<r>\x0B</r>",
    "<r>\x1F</r>",
    "<r>\x80</r>",
    "<r>\xC3</r>",
    "<r>\xC3(</r>",
    "<r>\xC0\x80</r>",
    "<r>\xED\xA0\x80</r>",
    "<r>\xEF\xBF\xBF</r>",
    "<r>\xF8\x88\x80\x80\x80</r>",
    "<r>\xFF</r>",
    "\xFE\xFF<r/>",
    "\xFF\xFE<r/>",
    "<!DOCTYPE r",
    "<!DOCTYPE r [<!ENTITY e '&e;'>]><r>&e;</r>",
    "<!DOCTYPE r [<!ENTITY a '&b;'><!ENTITY b '&a;'>]><r>&a;</r>",
    "<!DOCTYPE r [<!ENTITY e '<b>'>]><r>&e;</b></r>",
    "<!DOCTYPE r [<!ENTITY e '<![CDATA['>]><r>&e;]]></r>",
    "<!DOCTYPE r [<!ENTITY e SYSTEM 'x'>]><r a='&e;'/>",
    "<!DOCTYPE r [<!ENTITY % p 'x'> %q; ]><r/>",
    "<!DOCTYPE r [%p;]><r/>",
    "<!DOCTYPE r [<!ELEMENT r ANY]><r/>",
};

TEST(XmlDocumentTest, refusesDocumentsThatAreNotWellFormed) {
  for (const auto& document : kNotWellFormed) {
    EXPECT_FALSE(XmlDocument::parse(document)) << document;
    EXPECT_FALSE(XmlDocument::parse(document, 3)) << document;
  }
}

TEST(XmlDocumentTest, refusesZeroBytesAndOtherEncodings) {
  for (const auto& document : {"<r>\0</r>"s, "<r/>\0"s, "\0<r/>"s, "<r><![CDATA[\0]]></r>"s,
                               "<\0r\0/\0>\0"s, "\xFF\xFE<\0r\0/\0>\0"s, "\xFE\xFF\0<\0r\0/\0>"s}) {
    EXPECT_FALSE(XmlDocument::parse(document));
  }
}

TEST(XmlDocumentTest, refusesEveryTruncationOfADocument) {
  const std::string whole =
      "<?xml version='1.0'?><!DOCTYPE r [<!ENTITY e 'x'>]><r a='1'>&e;<!-- c --><b><![CDATA[<>]]>"
      "</b></r>";
  ASSERT_TRUE(XmlDocument::parse(whole));
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_FALSE(XmlDocument::parse(whole.substr(0, size))) << size;
  }
}

/// A CDATA section too long for the parser to see its inside.
std::string longSection(const std::string& inside) {
  return "<![CDATA[" + inside + std::string(2000, '.') + "]]>";
}

TEST(XmlDocumentTest, theInsideOfALongSectionIsReadLikeThatOfAShortOne) {
  const std::string dots(2000, '.');
  const std::vector<TextCase> sections = {
      {"a\r\nb\rc\n\r", "a\nb\nc\n\n"},
      {"\r", "\n"},
      {"\t\x7F", "\t\x7F"},
      {"<b>&amp;&undefined;</b> ]] ]> <![CDATA[ <!-- ]]",
       "<b>&amp;&undefined;</b> ]] ]> <![CDATA[ <!-- ]]"},
      {"\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E\xEF\xBF\xBD!",
       "\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E\xEF\xBF\xBD!"},
  };
  for (const auto& [inside, text] : sections) {
    const auto document = XmlDocument::parse("<r><a>2" + longSection(inside) + "3</a>" +
                                             longSection(inside) + "4</r>");
    ASSERT_TRUE(document) << inside;
    const std::string expected = text + dots;
    const auto root = document->root();
    EXPECT_EQ(root.firstChildNamed("a")->text(), std::string("2").append(expected).append("3"));
    EXPECT_EQ(root.text(), std::string("2").append(expected).append("3").append(expected) += "4");
  }
  for (const auto* inside :
       {"\x01", "\x1F", "\x80", "\xC3", "\xC3(", "\xC0\x80", "\xE0\x80\x80", "\xED\xA0\x80",
        "\xEF\xBF\xBE", "\xC3\xA9\xEF\xBF\xBF\xC3\xA9", "\xF4\x90\x80\x80", "\xFF", "]]>"}) {
    EXPECT_EQ(textOf("<r>" + longSection(inside) + "</r>"), "<refused>") << inside;
  }
  EXPECT_EQ(textOf("<r>" + longSection("\0"s) + "</r>"), "<refused>");
  EXPECT_EQ(textOf("<r/>" + longSection("")), "<refused>");
  EXPECT_EQ(textOf(longSection("") + "<r/>"), "<refused>");
  EXPECT_EQ(textOf("<r>" + longSection("")), "<refused>");
}

TEST(XmlDocumentTest, whatOnlyLooksLikeALongSectionIsNone) {
  const std::string section = longSection("no");
  EXPECT_EQ(textOf("<r>a<!--" + section + "-->b</r>"), "ab");
  EXPECT_EQ(textOf("<r>a<?p " + section + "?>b" + longSection("") + "</r>"),
            "ab" + std::string(2000, '.'));
  EXPECT_EQ(textOf("<r>[CDATA[" + std::string(2000, '.') + "]]</r>"),
            "[CDATA[" + std::string(2000, '.') + "]]");
  EXPECT_EQ(textOf("<r>[CDATA[" + std::string(2000, '.') + "]]></r>"), "<refused>");
  EXPECT_EQ(textOf("<!DOCTYPE r [<!ENTITY e '" + section + "'>]><r>&e;</r>"),
            "no" + std::string(2000, '.'));
  EXPECT_EQ(textOf("<r a='[CDATA[" + std::string(2000, '.') + "]]>'>b</r>"), "b");
}

TEST(XmlDocumentTest, aLongTextBetweenTagsIsReadLikeAShortOne) {
  const std::string dots(2000, '.');
  const std::vector<TextCase> texts = {
      {"a\r\nb\rc\n\r", "a\nb\nc\n\n"},
      {"&lt;p&gt;&amp;amp;&quot;&apos;", "<p>&amp;\"'"},
      {"\t\x7F > ]] ]> \xC3\xA9\xF0\x9D\x84\x9E", "\t\x7F > ]] ]> \xC3\xA9\xF0\x9D\x84\x9E"},
      {"&#65;&#x42;&#0067;&#39;&lt;&#x20ac;&#x20AC;", "ABC'<\xE2\x82\xAC\xE2\x82\xAC"},
      {"&#9;&#10;&#13;\n&#x7F;&#x80;&#55295;", "\t\n\r\n\x7F\xC2\x80\xED\x9F\xBF"},
      {"&#57344;&#xFFFD;&#65536;&#x10FFFF;",
       "\xEE\x80\x80\xEF\xBF\xBD\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
      {"&e;&lt;", "<e><"},
  };
  const std::string declarations = "<!DOCTYPE r [<!ENTITY e '&#38;lt;e>'>]>";
  for (const auto& [written, text] : texts) {
    const std::string between = element("a", written + dots);
    EXPECT_EQ(textOf(declarations + element("r", repeated(between, 3))), repeated(text + dots, 3))
        << written;
  }
  for (const auto* between :
       {"\x01",   "\x80",      "\xC3(",    "\xEF\xBF\xBF", "]]>",      "&",
        "& ",     "&unknown;", "&lt",      "&LT;",         "&#0;",     "&amp ;",
        "&#8;",   "&#31;",     "&#xD800;", "&#57343;",     "&#xFFFE;", "&#x110000;",
        "&#",     "&#;",       "&#x;",     "&#65",         "&#65 ;",   "&# 65;",
        "&#+65;", "&#-65;",    "&#X41;",   "&#x4G;",       "&#6A;",    "&#4294967361;"}) {
    EXPECT_EQ(textOf("<r>" + dots + between + "</r>"), "<refused>") << between;
    EXPECT_EQ(textOf("<r>" + (between + dots) + "</r>"), "<refused>") << between;
  }
}

TEST(XmlDocumentTest, whatOnlyLooksLikeALongTextBetweenTagsIsNone) {
  const std::string bad = "& ]]> " + std::string(2000, '.');
  EXPECT_EQ(textOf("<r>a<!-- <b>" + bad + "<c> -->b</r>"), "ab");
  EXPECT_EQ(textOf("<r>a<!-- <b>" + bad + "<c>" + bad + "<c> -->b<b>c</b></r>"), "abc");
  EXPECT_EQ(textOf("<r>a<?p <b>" + bad + "<c> ?>b</r>"), "ab");
  const std::string dots(2000, '.');
  EXPECT_EQ(textOf("<r>a<!-- <b>" + dots + "<c> -->b</r>"), "ab");
  EXPECT_EQ(textOf("<r>a<?p <b>" + dots + "<c> ?>b</r>"), "ab");
  EXPECT_EQ(textOf("<r a='>" + dots + "&lt;'>b</r>"), "b");
  EXPECT_EQ(textOf("<r a='>" + dots + "&'>b</r>"), "<refused>");
  EXPECT_EQ(textOf("<!DOCTYPE r [<!ENTITY e '<b>" + dots + "</b>'>]><r>&e;</r>"), dots);
  EXPECT_EQ(textOf("<r></r>" + dots + "<!-- c -->"), "<refused>");
  EXPECT_EQ(textOf("<?p?>" + dots + "<r></r>"), "<refused>");
  EXPECT_EQ(textOf("<r" + dots + "<"), "<refused>");
  EXPECT_EQ(textOf("<" + dots + "<r/>"), "<refused>");
}

/// The pages of the advertisements, but for the one that is "wanted".
XmlOmission unwantedPages() {
  return {"ad", "pages", [](XmlElement root, XmlElement ad) {
            EXPECT_EQ(root.name(), "list");
            const auto id = ad.firstChildNamed("id");
            return id && id->text() == "wanted";
          }};
}

/// A list in which `pages` stand where they can be left out and where they cannot.
std::string listWithPages(const std::string& pages) {
  return element("list", element("ad", "<id>other</id>" + pages + "<notes>n</notes>") +
                             element("ad", "<id>wanted</id>" + pages) + pages +
                             "<x><pages>kept</pages></x>" + element("ad", element("y", pages)) +
                             element("ad", pages));
}

TEST(XmlDocumentTest, textsThatAreNotNeededAreLeftOut) {
  const std::string dots(2000, '.');
  for (const std::string& page : {std::string("page"), "<en>&lt;" + dots + "</en>",
                                  "<en>" + longSection("") + "</en>", "&#65;" + dots}) {
    const std::string pages = element("pages", page);
    const auto document = XmlDocument::parse(listWithPages(pages), unwantedPages());
    ASSERT_TRUE(document);
    const std::string text = textOf(pages);
    EXPECT_EQ(document->root().text(),
              std::string("othernwanted").append(text).append(text).append("kept").append(text))
        << page;
    std::vector<bool> areWhole;
    for (const XmlElement child : document->root().children()) {
      areWhole.push_back(child.isWhole());
    }
    EXPECT_EQ(areWhole, (std::vector<bool>{false, true, true, true, true, false}));
    EXPECT_FALSE(document->root().isWhole());
  }
}

TEST(XmlDocumentTest, whetherTextsAreNeededIsAskedOnceForEachParent) {
  int asked = 0;
  const XmlOmission omission = {"ad", "pages", [&asked](XmlElement root, XmlElement ad) {
                                  ++asked;
                                  return ad == root.firstChildNamed("ad");
                                }};
  const std::string ad = element("ad", "<pages>a</pages><id>b</id><pages>c</pages>");
  const auto document = XmlDocument::parse(element("list", ad + "<x/>" + ad), omission);
  ASSERT_TRUE(document);
  EXPECT_EQ(document->root().text(), "abcb");
  EXPECT_EQ(asked, 2);
}

TEST(XmlDocumentTest, textsThatAreLeftOutAreCheckedAllTheSame) {
  const std::string dots(2000, '.');
  for (const std::string& text :
       std::vector<std::string>{"]]>", "\x01", "&", "&unknown;", "</x>", "<en>"}) {
    for (const std::string& page : {text, text + dots, dots + text}) {
      EXPECT_FALSE(
          XmlDocument::parse("<list><ad><pages>" + page + "</pages></ad></list>", unwantedPages()))
          << page;
    }
  }
  EXPECT_FALSE(XmlDocument::parse(
      "<list><ad><pages>" + longSection("\x01") + "</pages></ad></list>", unwantedPages()));
}

std::vector<std::string> names(const XmlElement::Children& children) {
  std::vector<std::string> result;
  for (const XmlElement child : children) {
    result.emplace_back(child.name());
  }
  return result;
}

TEST(XmlDocumentTest, childrenAreTheDirectOnesInDocumentOrder) {
  const auto document = XmlDocument::parse(
      "<r>t<a>1<c>deep</c></a><!-- x --><b/><?p?><c/><a>2</a><![CDATA[<a/>]]><A>3</A></r>");
  ASSERT_TRUE(document);
  const auto root = document->root();
  EXPECT_EQ(root.name(), "r");
  EXPECT_EQ(names(root.children()), (std::vector<std::string>{"a", "b", "c", "a", "A"}));
  EXPECT_EQ(names(root.childrenNamed("a")), (std::vector<std::string>{"a", "a"}));
  EXPECT_TRUE(root.childrenNamed("deep").empty());
  EXPECT_EQ(root.firstChildNamed("a")->text(), "1deep");
  EXPECT_EQ(root.firstChildNamed("c")->text(), "");
  EXPECT_EQ(root.firstChildNamed("A")->text(), "3");
  EXPECT_FALSE(root.firstChildNamed("d"));
  EXPECT_TRUE(root.firstChildNamed("b")->children().empty());
  EXPECT_EQ(root.text(), "t1deep2<a/>3");
}

TEST(XmlDocumentTest, prefixesArePartOfTheName) {
  const auto document = XmlDocument::parse("<r xmlns='urn:d' xmlns:p='urn:p'><p:a/><a/></r>");
  ASSERT_TRUE(document);
  EXPECT_EQ(names(document->root().children()), (std::vector<std::string>{"p:a", "a"}));
}

TEST(XmlDocumentTest, aMovedDocumentKeepsItsContents) {
  auto document = XmlDocument::parse("<r><a>some text that is longer than a short string</a></r>");
  const XmlDocument moved = std::move(*document);
  EXPECT_EQ(moved.root().firstChildNamed("a")->text(),
            "some text that is longer than a short string");
}

TEST(XmlDocumentTest, aMillionNestedElementsAreRead) {
  constexpr std::size_t kDepth = 1'000'000;
  std::string text;
  for (std::size_t i = 0; i < kDepth; ++i) {
    text += "<a>";
  }
  text += "x";
  for (std::size_t i = 0; i < kDepth; ++i) {
    text += "</a>";
  }
  const auto document = XmlDocument::parse(text);
  ASSERT_TRUE(document);
  XmlElement element = document->root();
  std::size_t depth = 1;
  while (const auto child = element.firstChildNamed("a")) {
    element = *child;
    ++depth;
  }
  EXPECT_EQ(depth, kDepth);
  EXPECT_EQ(element.text(), "x");
}

TEST(XmlDocumentTest, aPageOfTwentyMegabytesInOneSectionIsRead) {
  std::string page;
  while (page.size() < 20'000'000) {
    page += "<p class=\"x\">Fast, small &amp; friendly: \xE6\x97\xA5\xE6\x9C\xAC.</p>\n";
  }
  const auto document = XmlDocument::parse("<r><en><![CDATA[" + page + "]]></en></r>");
  ASSERT_TRUE(document);
  EXPECT_TRUE(document->root().firstChildNamed("en")->text() == page);
  const auto inPieces = XmlDocument::parse("<r><en><![CDATA[" + page + "]]></en></r>", 1 << 20);
  ASSERT_TRUE(inPieces);
  EXPECT_TRUE(inPieces->root().text() == page);
}

}  // namespace
}  // namespace qorix
