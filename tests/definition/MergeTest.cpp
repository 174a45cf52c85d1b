#include <cstdint>
#include <limits>

#include <qorix/MyPushAdInfo.h>

#include "support/CheckLines.h"
#include "support/DefinitionTest.h"

namespace qorix {
namespace {

std::string mergeLine(int line) {
  return checkLine("-[MyPushAdInfo doParseCustomizationAndMerge]", line, kFatalMessage);
}

class MergeTest : public DefinitionTest {
 protected:
  MergeTest() {
    info_->setEnable(false);
    info_->setVersion("1a1");
    info_->setEmbed(1);
    info_->setWidth(2);
    info_->setHeight(3);
    info_->setOffsetx(4);
    info_->setOffsety(5);
    info_->setCount(6);
    info_->setDelay(7);
    info_->setNotes("note");
  }

  void merge(const std::optional<std::string>& advance) {
    info_->setAdvance(advance);
    info_->doParseCustomizationAndMerge();
  }

  /// Merges the entry for this host.
  void mergeEntry(const std::string& entry) { merge("{\"com.example.editor\":" + entry + "}"); }

  void expectUnchanged() const {
    EXPECT_FALSE(info_->enable());
    EXPECT_EQ(info_->version(), "1a1");
    EXPECT_EQ(info_->embed(), 1);
    EXPECT_EQ(info_->width(), 2);
    EXPECT_EQ(info_->height(), 3);
    EXPECT_EQ(info_->offsetx(), 4);
    EXPECT_EQ(info_->offsety(), 5);
    EXPECT_EQ(info_->count(), 6);
    EXPECT_EQ(info_->delay(), 7);
    EXPECT_EQ(info_->notes(), "note");
  }

  bool isAdvanceDictEmpty() const { return info_->advanceDict() && info_->advanceDict()->empty(); }

  const std::shared_ptr<MyPushAdInfo> info_ = MyPushAdInfo::createInstance();
};

TEST_F(MergeTest, anEmptyObjectChangesNothingAndLogsNothing) {
  merge("{}");
  expectUnchanged();
  EXPECT_TRUE(isAdvanceDictEmpty());
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(MergeTest, whatIsNoJsonObjectIsRefused) {
  for (const auto* advance : {"", "[]", "not JSON", "1", "\"text\"", "{} trailing", "{\"a\":1,}"}) {
    merge(advance);
    EXPECT_EQ(log_->takeLines(), Lines{mergeLine(153)}) << advance;
  }
  expectUnchanged();
  EXPECT_TRUE(isAdvanceDictEmpty());
}

TEST_F(MergeTest, anAbsentCustomisationIsReportedBeforeAnAbsentHost) {
  merge(std::nullopt);
  EXPECT_EQ(log_->takeLines(), Lines{mergeLine(146)});
  installHost(std::nullopt);
  merge(std::nullopt);
  EXPECT_EQ(log_->takeLines(), Lines{mergeLine(146)});
  expectUnchanged();
}

TEST_F(MergeTest, aHostWithoutIdentifierIsRefused) {
  for (const auto& host : {std::optional<std::string>(), std::optional<std::string>("")}) {
    installHost(host);
    for (const auto* advance : {"{\"\":{\"embed\":9}}", "", "not JSON", "{\"\xFF\":1}"}) {
      merge(advance);
      EXPECT_EQ(log_->takeLines(), Lines{mergeLine(147)}) << advance;
    }
  }
  expectUnchanged();
}

TEST_F(MergeTest, aTextThatIsNoUnicodeIsRefused) {
  merge("{\"\xFF\":1}");
  EXPECT_EQ(log_->takeLines(), Lines{mergeLine(150)});
  merge("\xED\xA0\x80");
  EXPECT_EQ(log_->takeLines(), Lines{mergeLine(150)});
  expectUnchanged();
}

TEST_F(MergeTest, everyMemberOfTheHostsEntryIsMerged) {
  mergeEntry(R"({"enable":1,"version":"2b2","embed":11,"width":12,"height":13,"offsetx":14,)"
             R"("offsety":15,"count":16,"delay":17,"notes":"other","extra":"kept"})");
  EXPECT_TRUE(info_->enable());
  EXPECT_EQ(info_->version(), "2b2");
  EXPECT_EQ(info_->embed(), 11);
  EXPECT_EQ(info_->width(), 12);
  EXPECT_EQ(info_->height(), 13);
  EXPECT_EQ(info_->offsetx(), 14);
  EXPECT_EQ(info_->offsety(), 15);
  EXPECT_EQ(info_->count(), 16);
  EXPECT_EQ(info_->delay(), 17);
  EXPECT_EQ(info_->notes(), "other");
  EXPECT_EQ(info_->advanceDict()->size(), 11U);
  EXPECT_EQ(*find(*info_->advanceDict(), "extra")->as<std::string>(), "kept");
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(MergeTest, trueSwitchesOnAndFractionsAreTruncatedAndTextsAreNoNumbers) {
  mergeEntry(R"({"enable":true,"width":"320","delay":2.7})");
  EXPECT_TRUE(info_->enable());
  EXPECT_EQ(info_->delay(), 2);
  EXPECT_EQ(info_->width(), 2);
}

TEST_F(MergeTest, theSwitchGoesByTheIntegerValue) {
  const std::vector<std::pair<std::string, bool>> expectations = {
      {"1", true}, {"0", false},   {"-1", true},    {"true", true}, {"false", false},
      {"2", true}, {"0.9", false}, {"-0.5", false}, {"1.9", true},  {"1e400", true}};
  for (const auto& [number, expected] : expectations) {
    info_->setEnable(!expected);
    mergeEntry("{\"enable\":" + number + "}");
    EXPECT_EQ(info_->enable(), expected) << number;
  }
  for (const auto* foreign : {"\"1\"", "null", "[1]", "{}"}) {
    info_->setEnable(false);
    mergeEntry(std::string("{\"enable\":") + foreign + "}");
    EXPECT_FALSE(info_->enable()) << foreign;
    info_->setEnable(true);
    mergeEntry(std::string("{\"enable\":") + foreign + "}");
    EXPECT_TRUE(info_->enable()) << foreign;
  }
}

TEST_F(MergeTest, integersAreTruncatedTowardZeroAndSaturate) {
  mergeEntry(R"({"embed":-0.5,"width":1.9,"height":-1.9,"offsetx":true,"offsety":-1e400,)"
             R"("count":18446744073709551616,"delay":9223372036854775807})");
  EXPECT_EQ(info_->embed(), 0);
  EXPECT_EQ(info_->width(), 1);
  EXPECT_EQ(info_->height(), -1);
  EXPECT_EQ(info_->offsetx(), 1);
  EXPECT_EQ(info_->offsety(), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(info_->count(), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(info_->delay(), std::numeric_limits<std::int64_t>::max());
}

TEST_F(MergeTest, membersOfOtherTypesAndEmptyTextsAreSkipped) {
  mergeEntry(R"({"enable":"1","version":"","embed":"9","width":null,"height":[],"offsetx":{},)"
             R"("offsety":"x","count":"1","delay":"1","notes":""})");
  expectUnchanged();
  EXPECT_EQ(info_->advanceDict()->size(), 10U);
  mergeEntry(R"({"version":2,"notes":3})");
  expectUnchanged();
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(MergeTest, anEntryForAnotherHostChangesNothing) {
  merge(R"({"com.example.viewer":{"embed":9},"COM.EXAMPLE.EDITOR":{"embed":9}})");
  expectUnchanged();
  EXPECT_TRUE(isAdvanceDictEmpty());
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(MergeTest, anEntryThatIsNoObjectChangesNothing) {
  for (const auto* entry : {"1", "[]", "null", "\"text\"", "true"}) {
    mergeEntry(entry);
    EXPECT_TRUE(isAdvanceDictEmpty()) << entry;
  }
  expectUnchanged();
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(MergeTest, anEarlyStopKeepsTheEntryOfAnEarlierMerge) {
  mergeEntry(R"({"embed":9})");
  merge("not JSON");
  EXPECT_EQ(info_->embed(), 9);
  EXPECT_EQ(info_->advanceDict()->size(), 1U);
}

}  // namespace
}  // namespace qorix
