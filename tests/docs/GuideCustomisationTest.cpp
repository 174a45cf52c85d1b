#include <map>
#include <string>
#include <vector>

#include "docs/GuideTest.h"

namespace qorix::test {
namespace {

using testing::IsEmpty;

using Values = std::map<std::string, std::string>;

Values valuesOf(const MyPushAdInfo& info) {
  return {{"adid", std::to_string(info.adId())},
          {"enable", info.enable() ? "1" : "0"},
          {"version", info.version().value_or("")},
          {"embed", std::to_string(info.embed())},
          {"width", std::to_string(info.width())},
          {"height", std::to_string(info.height())},
          {"offsetx", std::to_string(info.offsetx())},
          {"offsety", std::to_string(info.offsety())},
          {"count", std::to_string(info.count())},
          {"delay", std::to_string(info.delay())},
          {"notes", info.notes().value_or("")},
          {"title", info.localizedTitle().value_or("")},
          {"html_contents", info.localizedHtmlString().value_or("")}};
}

class GuideCustomisationTest : public GuideTest {
 protected:
  Values customised(const std::string& name, const std::string& value) {
    const auto info = parse(minimalHolding(
        "advance", "{\"" + std::string(kEditor) + "\": {\"" + name + "\": " + value + "}}"));
    return valuesOf(*info);
  }
};

TEST_F(GuideCustomisationTest, theMembersOfTheGuideReplaceTheirValuesAndNothingElseDoes) {
  const Values plain = valuesOf(*parse(minimal_));
  std::map<std::string, std::string> types;
  for (const auto& row : guide_.table("Customisation for one host")) {
    types[codeIn(row.at(0))] = row.at(1);
  }
  EXPECT_EQ(types.size(), 10U);
  for (const auto& [name, type] : types) {
    EXPECT_TRUE(plain.contains(name)) << name;
  }
  const std::vector<std::string> anything = {"7", "0", "\"seven\"", "true", "{}", "[1]", "null"};
  for (const auto& [name, before] : plain) {
    const bool isNumber = types[name] == "number";
    for (const auto& value : anything) {
      Values expected = plain;
      if (isNumber && (value == "7" || value == "0" || value == "true")) {
        expected[name] = value == "0" ? "0" : value == "7" && name != "enable" ? "7" : "1";
      } else if (types[name] == "string" && value == "\"seven\"") {
        expected[name] = "seven";
      }
      EXPECT_EQ(customised(name, value), expected) << name << " is " << value;
    }
  }
}

TEST_F(GuideCustomisationTest, oddValuesAreReadAsTheGuideSays) {
  EXPECT_EQ(customised("delay", "1.9")["delay"], "1");
  EXPECT_EQ(customised("delay", "-0.5")["delay"], "0");
  EXPECT_EQ(customised("delay", "false")["delay"], "0");
  EXPECT_EQ(customised("version", "\"\"")["version"], "1");
  EXPECT_EQ(customised("width", "5, \"width\": 6")["width"], "6");
  EXPECT_THAT(log_->lines(), IsEmpty());
}

TEST_F(GuideCustomisationTest, theExampleServesItsHosts) {
  const std::string document = minimalHolding("advance", guide_.block("json"));
  Values expected = valuesOf(*parse(minimal_));
  expected["embed"] = "3";
  expected["offsetx"] = "8";
  EXPECT_EQ(valuesOf(*parse(document)), expected);
  installHost("com.example.viewer");
  EXPECT_FALSE(parse(document)->enable());
  installHost("com.example.Editor");
  EXPECT_EQ(valuesOf(*parse(document)), valuesOf(*parse(minimal_)));
}

}  // namespace
}  // namespace qorix::test
