#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstdio>
#include <ctime>
#include <fstream>
#include <functional>
#include <string>

#include "definition/AdReader.h"
#include "definition/XmlDocument.h"
#include "definition/XmlSourceMap.h"
#include "support/Documents.h"
#include "support/Repeated.h"
#include "support/Sanitizer.h"

namespace qorix {
namespace {

constexpr long kMebibytes = test::kIsSanitized ? 512 : 64;
// Of the processor's time, as the tests share the machine.
constexpr double kSeconds = test::kIsSanitized ? 10 : 1;

double processorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

long peakKibibytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

/// Reads the document, as a host does that has a line in its table, and checks what that took.
bool isReadWithinBounds(const std::string& document) {
  const long before = peakKibibytes();
  const double start = processorSeconds();
  const bool isRead = XmlDocument::parse(document, pagesOfOtherAds("com.example.a")).has_value();
  EXPECT_LT(processorSeconds() - start, kSeconds);
  EXPECT_LE(peakKibibytes() - before, kMebibytes * 1024);
  return isRead;
}

/// A document of which each entity holds the one before it ten times.
std::string laughs(const std::string& first, int levels, const std::string& use) {
  std::string document = "<!DOCTYPE r [<!ENTITY e0 '" + first + "'>";
  for (int level = 1; level <= levels; ++level) {
    document += "<!ENTITY e" + std::to_string(level) + " '" +
                repeated("&e" + std::to_string(level - 1) + ";", 10) + "'>";
  }
  return document + "]>" + use;
}

TEST(HostileXmlTest, aBillionLaughsAreRefused) {
  EXPECT_FALSE(isReadWithinBounds(laughs("lol", 9, "<r>&e9;</r>")));
}

TEST(HostileXmlTest, aBillionElementsAreRefused) {
  EXPECT_FALSE(isReadWithinBounds(laughs("<x/>", 9, "<r>&e9;</r>")));
}

TEST(HostileXmlTest, moreElementsThanADocumentOfItsSizeCanHoldAreRefused) {
  // Seven megabytes of elements: few enough bytes to pass for text.
  EXPECT_FALSE(isReadWithinBounds(laughs(repeated("<x/>", 18), 5, "<r>&e5;</r>")));
}

TEST(HostileXmlTest, aBillionEmptyEntitiesAreRefused) {
  EXPECT_FALSE(isReadWithinBounds(laughs("", 9, "<r>&e9;</r>")));
}

TEST(HostileXmlTest, aBillionLaughsInAnAttributeAreRefused) {
  EXPECT_FALSE(isReadWithinBounds(laughs("lol", 9, "<r a='&e9;'/>")));
}

TEST(HostileXmlTest, aQuadraticBlowUpIsRefused) {
  const std::string document = "<!DOCTYPE r [<!ENTITY e '" + std::string(100'000, 'x') + "'>]>";
  EXPECT_FALSE(isReadWithinBounds(document + "<r>" + repeated("&e;", 30'000) + "</r>"));
  EXPECT_FALSE(isReadWithinBounds(document + "<r a='" + repeated("&e;", 30'000) + "'/>"));
}

TEST(HostileXmlTest, aLargeQuadraticBlowUpIsRefused) {
  const std::string document = "<!DOCTYPE r [<!ENTITY e '" + std::string(1'000'000, 'x') + "'>]>";
  EXPECT_FALSE(isReadWithinBounds(document + "<r>" + repeated("&e;", 300'000) + "</r>"));
}

TEST(HostileXmlTest, bombsOfParameterEntitiesAreRefused) {
  std::string document = "<!DOCTYPE r [<!ENTITY % p0 ' '>";
  for (int level = 1; level <= 30; ++level) {
    document += "<!ENTITY % p" + std::to_string(level) + " '" +
                repeated("&#37;p" + std::to_string(level - 1) + ";", 2) + "'>";
  }
  EXPECT_FALSE(isReadWithinBounds(document + "%p30;]><r/>"));
}

TEST(HostileXmlTest, aChainOfEntitiesDoesNotOverflowTheStack) {
  std::string document = "<!DOCTYPE r [<!ENTITY e0 'end'>";
  for (int level = 1; level <= 20'000; ++level) {
    document += "<!ENTITY e" + std::to_string(level) + " '&e" + std::to_string(level - 1) + ";'>";
  }
  isReadWithinBounds(document + "]><r>&e20000;</r>");
  isReadWithinBounds(document + "]><r a='&e20000;'/>");
}

TEST(HostileXmlTest, manyUsesOfExternalEntitiesAreNotQuadratic) {
  std::string document = "<!DOCTYPE r [";
  std::string uses;
  for (int index = 0; index < 15'000; ++index) {
    document += "<!ENTITY e" + std::to_string(index) + " SYSTEM 'x'>";
    uses += "&e" + std::to_string(index) + ";";
  }
  EXPECT_TRUE(isReadWithinBounds(document + "]><r>" + uses + uses + "</r>"));
}

TEST(HostileXmlTest, aBombOfDefaultAttributesIsRefused) {
  std::string document = "<!DOCTYPE r [<!ATTLIST x ";
  for (int index = 0; index < 20'000; ++index) {
    document += "a" + std::to_string(index) + " CDATA 'v' ";
  }
  EXPECT_FALSE(isReadWithinBounds(document + ">]><r>" + repeated("<x/>", 50'000) + "</r>"));
  EXPECT_TRUE(isReadWithinBounds(document + ">]><r>" + repeated("<x/>", 50) + "</r>"));
}

TEST(HostileXmlTest, oneTokenOfManyMegabytesIsNotQuadratic) {
  const std::string filling(8'000'000, 'x');
  for (const auto& document :
       {"<r a='" + filling + "'/>", "<r><!--" + filling + "--></r>", "<r><?p " + filling + "?></r>",
        "<r><!--" + repeated("<![CDATA[", 500'000) + "--></r>",
        "<r><![CDATA[" + repeated("<![CDATA[]]]]", 500'000) + "]]></r>"}) {
    const double start = processorSeconds();
    EXPECT_TRUE(XmlDocument::parse(document));
    EXPECT_TRUE(XmlDocument::parse(document, 1 << 20));
    EXPECT_LT(processorSeconds() - start, kSeconds);
  }
}

TEST(HostileXmlTest, manyPagesOfOneAdAreNotQuadratic) {
  const auto document = [](const std::string& element, const std::string& content) {
    return "<!DOCTYPE r [<!ENTITY a '" + repeated(element, 100) + "'><!ENTITY b '" +
           repeated("&a;", 100) + "'>]>" + content;
  };
  const std::string many = repeated("&b;", 12);
  const std::string table = element("data", tableLine("com.example.a", "7"));
  const std::string ads = element("push_ad", many) + element("push_ad", "<adid>7</adid>" + many);
  EXPECT_TRUE(isReadWithinBounds(document("<html_contents/>", element("r", table + ads))));
  EXPECT_TRUE(isReadWithinBounds(document("<html_contents/>", element("r", ads))));
  EXPECT_TRUE(isReadWithinBounds(document("<push_ad><html_contents/></push_ad>",
                                          element("r", repeated("<x/>", 100'000) + many))));
}

TEST(HostileXmlTest, whatIsReadWithoutTheParserCountsAgainstTheLimitOfEntities) {
  const auto document = [](std::size_t uses) {
    return "<!DOCTYPE r [<!ENTITY e '" + std::string(1024, 'x') + "'>]>" +
           element("r", element("a", std::string(1 << 20, '.')) + repeated("&e;", uses));
  };
  for (const std::size_t uses : {std::size_t{11'000}, std::size_t{11'500}}) {
    XmlSourceMap everyByteIsParsed;
    EXPECT_EQ(XmlDocument::parse(document(uses)).has_value(), uses == 11'000);
    EXPECT_EQ(XmlDocument::parse(document(uses), everyByteIsParsed).has_value(), uses == 11'000);
  }
}

TEST(HostileXmlTest, entitiesThatAddAsMuchAsThePageForSeveralLanguagesAreRead) {
  const std::string page(1'000'000, 'x');
  const auto document = XmlDocument::parse("<!DOCTYPE r [<!ENTITY page '" + page +
                                           "'>]><r>&page;<b>&page;</b>&page;</r>");
  ASSERT_TRUE(document);
  EXPECT_EQ(document->root().text().size(), 3 * page.size());
}

TEST(HostileXmlTest, externalEntitiesAreNeverRead) {
  const std::string path = testing::TempDir() + "qorix-external-entity.txt";
  std::ofstream(path) << "<!ENTITY secret 'secret'>secret";
  const std::string url = "http://127.0.0.1:9/x";
  for (const auto& address : {"file://" + path, path, url}) {
    const auto general =
        XmlDocument::parse("<!DOCTYPE r [<!ENTITY e SYSTEM '" + address + "'>]><r>a&e;b</r>");
    ASSERT_TRUE(general);
    EXPECT_EQ(general->root().text(), "ab");
    const auto parameter = XmlDocument::parse("<!DOCTYPE r [<!ENTITY % p SYSTEM '" + address +
                                              "'>%p;<!ENTITY f 'found'>]><r>&f;&secret;</r>");
    ASSERT_TRUE(parameter);
    EXPECT_EQ(parameter->root().text(), "found");
    const auto subset = XmlDocument::parse("<!DOCTYPE r SYSTEM '" + address + "'><r>a&secret;</r>");
    ASSERT_TRUE(subset);
    EXPECT_EQ(subset->root().text(), "a");
  }
  std::remove(path.c_str());
}

}  // namespace
}  // namespace qorix
