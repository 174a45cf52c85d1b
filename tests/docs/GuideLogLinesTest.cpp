#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <qorix/MyPushAdManager.h>
#include <qorix/MyPushAdViewController.h>
#include <qorix/platform/Error.h>

#include "definition/AdReader.h"
#include "docs/GuideTest.h"
#include "fakes/FakePlatform.h"

namespace qorix::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kParser = "+[MyPushAdUtil parseXMLWithString:]";
constexpr const char* kMerge = "-[MyPushAdInfo doParseCustomizationAndMerge]";
constexpr const char* kCheck = "-[MyPushAdInfo doCheck]";
constexpr const char* kChoice = "+[MyPushAdInfo localizedValueInDict:]";

/// The numbers that the method has logged, in their order.
std::vector<int> numbersOf(const std::string& method, const Lines& lines) {
  std::vector<int> numbers;
  for (const auto& line : lines) {
    if (line.starts_with(method + " ")) {
      numbers.push_back(std::stoi(line.substr(method.size())));
    }
  }
  return numbers;
}

class GuideLogLinesTest : public GuideTest {
 protected:
  /// The words of the guide by the number that they explain.
  std::map<int, std::string> wordsUnder(const std::string& heading, std::size_t table = 0) const {
    std::map<int, std::string> words;
    for (const auto& row : guide_.table(heading, table)) {
      words[std::stoi(row.at(0))] = row.at(1);
    }
    return words;
  }

  static std::vector<int> numbersIn(const std::map<int, std::string>& words) {
    std::vector<int> numbers;
    numbers.reserve(words.size());
    for (const auto& [number, text] : words) {
      numbers.push_back(number);
    }
    return numbers;
  }

  /// The document is refused with that number, whose words in the guide hold `code`.
  void expectRefused(const std::string& document, int number, const std::string& code) {
    log_->takeLines();
    EXPECT_EQ(parse(document), nullptr) << document;
    EXPECT_THAT(numbersOf(kParser, log_->takeLines()), ElementsAre(number)) << document;
    EXPECT_THAT(codesIn(refusals_[number]), Contains(code)) << number;
    seen_.insert(number);
  }

  std::string minimalWithLine(const std::string& children) const {
    return minimalPlus("data", element("push_ad_config", children));
  }

  std::map<int, std::string> refusals_ = wordsUnder("The document is refused");
  std::set<int> seen_;
};

TEST_F(GuideLogLinesTest, everyRefusalIsExplained) {
  const std::string appid = element("appid", kEditor);
  EXPECT_EQ(MyPushAdUtil::parseXMLWithString(std::nullopt), nullptr);
  EXPECT_THAT(numbersOf(kParser, log_->takeLines()), ElementsAre(refusal::noText));
  EXPECT_EQ(parse(minimal_ + "<"), nullptr);
  EXPECT_THAT(numbersOf(kParser, log_->takeLines()), ElementsAre(refusal::notWellFormed));
  seen_ = {refusal::noText, refusal::notWellFormed};

  expectRefused("<html/>", refusal::noFileVersion, "rootcfg");
  expectRefused(minimalWith("file_version", ""), refusal::noFileVersion, "file_version");
  expectRefused(minimalHolding("file_version", ""), refusal::noFileVersion, "file_version");
  expectRefused(minimalWithLine("<adid>1</adid>"), refusal::tableLineWithoutAppId, "appid");
  expectRefused(minimalWithLine(appid), refusal::tableLineWithoutAdId, "adid");
  expectRefused(minimalWith("push_ad", ""), refusal::noAd, "push_ad");
  expectRefused(minimalWith("adid", ""), refusal::adWithoutId, "adid");
  expectRefused(minimalWith("data", "<data><file_version>1</file_version></data><push_ad/>"),
                refusal::adWithoutId, "push_ad");
  for (std::size_t index = field::enable; index < kFieldNames.size(); ++index) {
    const std::string name(kFieldNames.at(index));
    const int number = refusal::ofField(index);
    expectRefused(minimalWith(name, ""), number, name);
    expectRefused(minimalHolding(name, ""), number, name);
  }
  expectRefused(minimalWith("title", ""), refusal::noTitle, "title");
  expectRefused(minimalWith("html_contents", ""), refusal::noPages, "html_contents");
  expectRefused(minimalWithLine(appid + "<adid>2</adid>"), refusal::unknownAdId, "adid");
  expectRefused(minimalHolding("title", "text"), refusal::noTitleText, "title");
  expectRefused(minimalHolding("html_contents", "<en></en>"), refusal::noPageText, "html_contents");

  // The reader has a number for an advertisement without identifier, but never gets so far.
  const auto document = XmlDocument::parse("<push_ad/>");
  EXPECT_EQ(readAd(document->root()).defect->line, refusal::firstField);
  seen_.insert(refusal::firstField);

  EXPECT_EQ(std::vector<int>(seen_.begin(), seen_.end()), numbersIn(refusals_));
}

TEST_F(GuideLogLinesTest, theLineInTheGuideIsTheOneOfATableLineWithoutAdid) {
  parse(minimalWithLine(element("appid", kEditor)));
  EXPECT_EQ(log_->lines().at(0) + "\n", guide_.block("text"));
}

TEST_F(GuideLogLinesTest, everyRefusedCustomisationIsExplained) {
  EXPECT_NE(parse(minimalHolding("advance", "[]")), nullptr);
  EXPECT_NE(parse(minimalHolding("advance", "none")), nullptr);
  EXPECT_THAT(numbersOf(kMerge, log_->takeLines()), ElementsAre(153, 153));
  const auto info = parse(minimal_);
  info->setAdvance(std::nullopt);
  info->doParseCustomizationAndMerge();
  info->setAdvance("\xFF");
  info->doParseCustomizationAndMerge();
  installHost(std::nullopt);
  info->doParseCustomizationAndMerge();
  EXPECT_THAT(numbersOf(kMerge, log_->takeLines()), ElementsAre(146, 150, 147));
  EXPECT_THAT(numbersIn(wordsUnder("The customisation is left out")),
              ElementsAre(146, 147, 150, 153));
}

TEST_F(GuideLogLinesTest, everyOddValueIsExplained) {
  const auto words = wordsUnder("A value is odd", 0);
  const auto worst = MyPushAdInfo::createInstance();
  worst->setEmbed(-1);
  worst->setDelay(-1);
  worst->setAdvanceDict(std::nullopt);
  worst->doCheck();
  EXPECT_EQ(numbersOf(kCheck, log_->takeLines()), numbersIn(words));

  // What a document can bring about.
  std::string document = minimal_;
  const std::map<int, std::pair<std::string, std::string>> values = {
      {97, {"adid", "0"}},    {100, {"embed", "-1"}}, {101, {"width", "0"}},
      {102, {"height", "0"}}, {103, {"count", "0"}},  {104, {"delay", "-1"}}};
  std::vector<int> expected;
  for (const auto& [number, value] : values) {
    const auto& [name, text] = value;
    document = with(document, name, element(name, text));
    expected.push_back(number);
    EXPECT_EQ(codeIn(words.at(number)), name);
  }
  parse(document)->doCheck();
  EXPECT_EQ(numbersOf(kCheck, log_->takeLines()), expected);
  for (const auto& [number, text] : words) {
    EXPECT_TRUE(values.contains(number) || number == 99 || number >= 105) << number;
  }
}

TEST_F(GuideLogLinesTest, aMissingLanguageIsExplained) {
  parse(minimalHolding("title", "<de>Hallo</de>"))->localizedTitle();
  EXPECT_EQ(numbersOf(kChoice, log_->takeLines()), numbersIn(wordsUnder("A value is odd", 1)));
  // An empty element is left out, blanks are a text.
  EXPECT_EQ(parse(minimalHolding("title", "<en></en><default>Hello</default>"))->localizedTitle(),
            "Hello");
  EXPECT_EQ(parse(minimalHolding("title", "<en> </en><default>Hello</default>"))->localizedTitle(),
            " ");
  EXPECT_THAT(log_->lines(), IsEmpty());
}

}  // namespace
}  // namespace qorix::test
