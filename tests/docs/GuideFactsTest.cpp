#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "definition/AdReader.h"
#include "definition/LanguageChoice.h"
#include "docs/GuideTest.h"
#include "presentation/AdFrameLayout.h"
#include "presentation/ShowDecision.h"
#include "presentation/VersionRule.h"

namespace qorix::test {
namespace {

using testing::IsEmpty;

std::string nameIn(const std::string& path) { return path.substr(path.rfind('/') + 1); }

/// What the document's paths are: "rootcfg/push_ad/adid". Languages are no names of the format.
void addPaths(XmlElement element, const std::string& parent, std::set<std::string>& paths) {
  const std::string path = parent + std::string(element.name());
  paths.insert(path);
  if (path.ends_with("/title") || path.ends_with("/html_contents")) {
    return;
  }
  for (const XmlElement child : element.children()) {
    addPaths(child, path + "/", paths);
  }
}

class GuideFactsTest : public GuideTest {
 protected:
  /// The paths of the elements whose column about being required says `required`.
  std::set<std::string> pathsOf(std::string_view required) const {
    std::set<std::string> paths;
    for (const auto& row : guide_.table("Elements")) {
      if (required.empty() || row.at(1) == required) {
        paths.insert(codeIn(row.at(0)));
      }
    }
    return paths;
  }
};

TEST_F(GuideFactsTest, theSmallestDocumentIsTheSampleFile) {
  EXPECT_EQ(minimal_, textOfFile(QORIX_MINIMAL_DOCUMENT));
  const auto info = parse(minimal_);
  ASSERT_NE(info, nullptr);
  EXPECT_TRUE(info->enable());
  EXPECT_EQ(info->localizedTitle(), "Hello");
  EXPECT_EQ(info->localizedHtmlString(), "Hello!");
  EXPECT_THAT(log_->lines(), IsEmpty());
}

TEST_F(GuideFactsTest, everyLinkLeadsSomewhere) {
  const std::string text = textOfFile(QORIX_GUIDE);
  std::set<std::string> targets;
  const std::regex heading("\\n#+ ([^\\n]+)");
  for (std::sregex_iterator each(text.begin(), text.end(), heading), end; each != end; ++each) {
    std::string target = "#" + (*each)[1].str();
    std::ranges::transform(target, target.begin(), [](char c) {
      return c == ' ' ? '-' : c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    targets.insert(target);
  }
  const auto folder = std::filesystem::path(QORIX_GUIDE).parent_path();
  const std::regex link("\\]\\(([^)\\s]+)\\)");
  std::size_t links = 0;
  for (std::sregex_iterator each(text.begin(), text.end(), link), end; each != end; ++each) {
    const std::string target = (*each)[1];
    ++links;
    EXPECT_TRUE(targets.contains(target) || std::filesystem::exists(folder / target)) << target;
  }
  EXPECT_GT(links, 15U);
}

// Elements.

TEST_F(GuideFactsTest, theRequiredElementsMakeADocumentAndNoneOfThemCanBeLeftOut) {
  std::set<std::string> paths;
  addPaths(XmlDocument::parse(minimal_)->root(), "", paths);
  EXPECT_EQ(paths, pathsOf("yes"));
  for (const auto& path : paths) {
    const std::string name = nameIn(path);
    EXPECT_EQ(parse(minimalWith(name, "<other>text</other>")), nullptr) << "without " << path;
    EXPECT_EQ(parse(minimalHolding(name, "")), nullptr) << "with an empty " << path;
  }
}

TEST_F(GuideFactsTest, anElementThatIsNotRequiredDoesSomething) {
  const std::string appid = element("appid", kEditor);
  const auto tableLine = [](const std::string& children) {
    return element("push_ad_config", children);
  };
  EXPECT_NE(parse(minimalPlus("data", tableLine(appid + "<adid>1</adid>"))), nullptr);
  EXPECT_EQ(parse(minimalPlus("data", tableLine(appid))), nullptr);
  EXPECT_EQ(parse(minimalPlus("data", tableLine("<adid>1</adid>"))), nullptr);
  installPackages({"Example Viewer.app"});
  const auto promoting = parse(minimalPlus("push_ad", element("promo_app_name", "Example Viewer")));
  ASSERT_NE(promoting, nullptr);
  EXPECT_FALSE(promoting->enable());
  EXPECT_EQ(pathsOf("no"), (std::set<std::string>{"rootcfg/data/push_ad_config",
                                                  "rootcfg/push_ad/promo_app_name"}));
  EXPECT_EQ(pathsOf("yes, in a line"), (std::set<std::string>{"rootcfg/data/push_ad_config/appid",
                                                              "rootcfg/data/push_ad_config/adid"}));
  EXPECT_EQ(pathsOf("").size(),
            pathsOf("yes").size() + pathsOf("no").size() + pathsOf("yes, in a line").size());
}

TEST_F(GuideFactsTest, everyElementThatTheReaderLooksForIsInTheGuide) {
  std::set<std::string> inGuide;
  for (const auto& path : pathsOf("")) {
    inGuide.insert(nameIn(path));
  }
  std::set<std::string> inReader(kFieldNames.begin(), kFieldNames.end());
  inReader.insert(tag::kAll.begin(), tag::kAll.end());
  EXPECT_EQ(inReader, inGuide);
}

// That the list holds all names can only be seen in the reader itself: it spells none of its own.
TEST_F(GuideFactsTest, theReaderTakesItsNamesFromTheList) {
  const std::string source = textOfFile(QORIX_READER_SOURCE);
  EXPECT_NE(source.find("tag::kRoot"), std::string::npos);
  EXPECT_FALSE(std::regex_search(source, std::regex(R"re("[a-z_]+")re")));
}

TEST_F(GuideFactsTest, aTextThatIsNotZeroSwitchesOn) {
  for (const auto& row : guide_.table("Elements")) {
    if (codeIn(row.at(0)) != "rootcfg/push_ad/enable") {
      continue;
    }
    const auto texts = codesIn(row.at(3));
    ASSERT_EQ(texts.size(), 5U);
    EXPECT_FALSE(parse(minimalHolding("enable", texts.front()))->enable());
    for (std::size_t index = 1; index < 4; ++index) {
      EXPECT_TRUE(parse(minimalHolding("enable", texts[index]))->enable()) << texts[index];
    }
    EXPECT_TRUE(parse(minimalHolding("enable", " " + texts.back() + " "))->enable());
    return;
  }
  FAIL() << "the guide says nothing about enable";
}

TEST_F(GuideFactsTest, numbersAreReadAsTheGuideSays) {
  for (const auto& [text, value] : std::map<std::string, std::string>{
           {"  +5px", "5"}, {"+-5", "0"}, {"-99999999999999999999", "-9223372036854775808"}}) {
    EXPECT_EQ(std::to_string(parse(minimalHolding("width", text))->width()), value);
  }
  for (const auto& row : guide_.table("Numbers")) {
    const std::string text = codeIn(row.at(0));
    EXPECT_EQ(std::to_string(parse(minimalHolding("width", text))->width()), row.at(1)) << text;
  }
}

// Languages.

TEST_F(GuideFactsTest, languagesAreServedAsTheGuideSays) {
  for (const auto& row : guide_.table("Languages")) {
    const std::string language = codeIn(row.at(0));
    LocalizedTexts texts;
    std::string elements;
    for (const auto& code : codesIn(row.at(1))) {
      texts.emplace_back(code, code);
      elements += element(code, code);
    }
    const auto* entry = entryForLanguage(texts, language);
    const std::string expected = row.at(2) == "nothing" ? "" : codeIn(row.at(2));
    EXPECT_EQ(entry == nullptr ? "" : entry->second, expected) << language << " of " << row.at(1);
    userDefaults_->setStringArray({language, "en"}, kAppleLanguagesKey);
    const auto info = parse(minimalHolding("title", elements));
    EXPECT_EQ(info->localizedTitle().value_or(""), expected) << language << " of " << row.at(1);
  }
}

// Markup.

TEST_F(GuideFactsTest, markupInTitlesAndPagesIsReadAsTheGuideSays) {
  std::set<std::string> outcomes;
  for (const auto& row : guide_.table("Markup")) {
    const std::string entry = element("default", codeIn(row.at(0)));
    const auto page = parse(minimalHolding("html_contents", entry));
    const auto title = parse(minimalHolding("title", entry));
    if (row.at(1) == "refused") {
      EXPECT_EQ(page, nullptr) << entry;
      EXPECT_EQ(title, nullptr) << entry;
      outcomes.insert("refused");
    } else {
      ASSERT_NE(page, nullptr) << entry;
      ASSERT_NE(title, nullptr) << entry;
      EXPECT_EQ(page->localizedHtmlString(), codeIn(row.at(1)));
      EXPECT_EQ(title->localizedTitle(), codeIn(row.at(1)));
      outcomes.insert(entry.find(codeIn(row.at(1))) == entry.npos ? "other text" : "the same text");
    }
  }
  EXPECT_EQ(outcomes.size(), 3U);
}

// Versions and counts.

struct Memory : ShownState {
  std::optional<std::string> version() override { return storedVersion; }
  std::int64_t count() override { return storedCount; }
  void restart(const std::string& version, std::int64_t count) override {
    storedVersion = version;
    storedCount = count;
  }
  void setCount(std::int64_t count) override { storedCount = count; }

  std::optional<std::string> storedVersion;
  std::int64_t storedCount = 0;
};

TEST_F(GuideFactsTest, showingsAreDecidedAsTheGuideSays) {
  for (const auto& row : guide_.table("Versions and counts", 0)) {
    Memory memory;
    if (row.at(0) != "none") {
      memory.storedVersion = codeIn(row.at(0));
      memory.storedCount = std::stoll(row.at(1));
    }
    const ShowReason reason = decideShow({true, codeIn(row.at(2)), std::stoll(row.at(3))}, memory);
    EXPECT_EQ(isDue(reason) ? "yes" : "no", row.at(4)) << testing::PrintToString(row);
    EXPECT_EQ("`" + memory.storedVersion.value_or("") + "`, " + std::to_string(memory.storedCount),
              row.at(5));
  }
}

TEST_F(GuideFactsTest, versionsAreComparedAsTheGuideSays) {
  for (const auto& row : guide_.table("Versions and counts", 1)) {
    EXPECT_EQ(isSameAdVersion(codeIn(row.at(0)), codeIn(row.at(1))) ? "same" : "different",
              row.at(2))
        << testing::PrintToString(row);
  }
}

TEST_F(GuideFactsTest, theLimitsOfAVersionsNumberAreThoseOfTheLibrary) {
  std::smatch limits;
  const std::string text = guide_.prose();
  ASSERT_TRUE(std::regex_search(
      text, limits, std::regex(R"(above (\d+) count as \1, those below (-\d+) as that)")));
  const auto isSame = [](std::int64_t one, std::int64_t other) {
    return isSameAdVersion("1a" + std::to_string(one), "1a" + std::to_string(other));
  };
  for (const auto& [limit, outwards] :
       {std::pair(std::stoll(limits[1]), 1), std::pair(std::stoll(limits[2]), -1)}) {
    EXPECT_TRUE(isSame(limit, limit + outwards)) << limit;
    EXPECT_FALSE(isSame(limit, limit - outwards)) << limit;
  }
}

TEST_F(GuideFactsTest, offsetsHaveNoElements) {
  const auto info = parse(minimalPlus("push_ad", "<offsetx>7</offsetx><offsety>7</offsety>"));
  EXPECT_EQ(info->offsetx(), 0);
  EXPECT_EQ(info->offsety(), 0);
}

// Placement.

/// The value of a sum such as "W/2 - w/2 - ox".
double evaluate(const std::string& sum, const std::map<std::string, double>& variables) {
  static const std::regex kTerm(R"(\s*([+-]?)\s*(\w+)(/2)?)");
  double value = 0;
  for (std::sregex_iterator each(sum.begin(), sum.end(), kTerm), end; each != end; ++each) {
    const auto known = variables.find((*each)[2]);
    const double term = known == variables.end() ? std::stod((*each)[2]) : known->second;
    value += ((*each)[1] == "-" ? -1 : 1) * ((*each)[3].matched ? term / 2 : term);
  }
  return value;
}

TEST_F(GuideFactsTest, bannersLieWhereTheGuideSays) {
  const Size host{901, 603};
  const BannerPlacement banner{.embed = 0, .size = {310, 52}, .offsetx = 17, .offsety = 23};
  const std::map<std::string, double> variables = {
      {"W", host.width},         {"H", host.height},     {"w", banner.size.width},
      {"h", banner.size.height}, {"ox", banner.offsetx}, {"oy", banner.offsety}};
  std::vector<std::string> anchors;
  for (const auto& row : guide_.table("Placement")) {
    anchors.push_back(row.at(0));
    const std::string x = codeIn(row.at(2));
    if (x.empty()) {
      continue;
    }
    const bool isAbove = row.at(0) == "above 8";
    for (const std::int64_t embed : isAbove ? std::vector<std::int64_t>{9, 100}
                                            : std::vector<std::int64_t>{std::stoll(row.at(0))}) {
      BannerPlacement placement = banner;
      placement.embed = embed;
      const Rect frame = bannerFrame(host, placement);
      EXPECT_DOUBLE_EQ(frame.origin.x, evaluate(x, variables)) << row.at(0);
      EXPECT_DOUBLE_EQ(frame.origin.y, evaluate(codeIn(row.at(3)), variables)) << row.at(0);
    }
  }
  EXPECT_EQ(anchors, (std::vector<std::string>{"below 0", "0", "1", "2", "3", "4", "5", "6", "7",
                                               "8", "above 8"}));
}

}  // namespace
}  // namespace qorix::test
