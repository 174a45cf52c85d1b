#include <cstdint>
#include <limits>

#include <qorix/MyPushAdInfo.h>

#include "support/CheckLines.h"
#include "support/DefinitionTest.h"

namespace qorix {
namespace {

std::string fieldLine(int line) {
  return checkLine("-[MyPushAdInfo doCheck]", line, kVerifyFailedMessage);
}

Lines fieldLines(const std::vector<int>& numbers) {
  Lines lines;
  for (const int number : numbers) {
    lines.push_back(fieldLine(number));
  }
  return lines;
}

class MyPushAdInfoTest : public DefinitionTest {
 protected:
  /// A record that no rule finds fault with.
  template <class Self = MyPushAdInfo>
  static std::shared_ptr<Self> soundRecord() {
    auto info = MyPushAdInfo::createInstance<Self>();
    info->setAdId(1);
    info->setEnable(true);
    info->setVersion("1a1");
    info->setWidth(1);
    info->setHeight(1);
    info->setCount(1);
    info->setAdvance("{}");
    info->setNotes("note");
    info->setTitleDict(LocalizedTexts{});
    info->setHtmlContentsDict(LocalizedTexts{});
    return info;
  }
};

TEST_F(MyPushAdInfoTest, aFreshRecordFailsMostRulesInOrder) {
  MyPushAdInfo::createInstance()->doCheck();
  EXPECT_EQ(log_->lines(), fieldLines({97, 99, 101, 102, 103, 105, 107, 108, 109}));
}

TEST_F(MyPushAdInfoTest, aSoundRecordWithEmptyDictionariesLogsNothing) {
  soundRecord()->doCheck();
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(MyPushAdInfoTest, eachRuleHasItsOwnLine) {
  const std::vector<std::pair<int, void (*)(MyPushAdInfo&)>> defects = {
      {97, [](MyPushAdInfo& info) { info.setAdId(0); }},
      {97, [](MyPushAdInfo& info) { info.setAdId(-1); }},
      {99, [](MyPushAdInfo& info) { info.setVersion(""); }},
      {99, [](MyPushAdInfo& info) { info.setVersion(std::nullopt); }},
      {100, [](MyPushAdInfo& info) { info.setEmbed(-1); }},
      {101, [](MyPushAdInfo& info) { info.setWidth(0); }},
      {102, [](MyPushAdInfo& info) { info.setHeight(0); }},
      {103, [](MyPushAdInfo& info) { info.setCount(0); }},
      {104, [](MyPushAdInfo& info) { info.setDelay(-1); }},
      {105, [](MyPushAdInfo& info) { info.setAdvance(""); }},
      {105, [](MyPushAdInfo& info) { info.setAdvance(std::nullopt); }},
      {106, [](MyPushAdInfo& info) { info.setAdvanceDict(std::nullopt); }},
      {107, [](MyPushAdInfo& info) { info.setNotes(""); }},
      {107, [](MyPushAdInfo& info) { info.setNotes(std::nullopt); }},
      {108, [](MyPushAdInfo& info) { info.setTitleDict(std::nullopt); }},
      {109, [](MyPushAdInfo& info) { info.setHtmlContentsDict(std::nullopt); }},
  };
  for (const auto& [line, spoil] : defects) {
    const auto info = soundRecord();
    spoil(*info);
    info->doCheck();
    EXPECT_EQ(log_->takeLines(), Lines{fieldLine(line)});
  }
}

class WaveringInfo : public MyPushAdInfo {
 public:
  bool enable() const override { return readings_++ % 2 == 1; }

 private:
  mutable int readings_ = 0;
};

TEST_F(MyPushAdInfoTest, aSwitchThatReadsOffAndThenOnIsReported) {
  soundRecord<WaveringInfo>()->doCheck();
  EXPECT_EQ(log_->lines(), Lines{fieldLine(98)});
}

TEST_F(MyPushAdInfoTest, allThirteenRulesAreToldInTheirOrder) {
  const auto info = MyPushAdInfo::createInstance<WaveringInfo>();
  info->setEmbed(-1);
  info->setDelay(-1);
  info->setAdvanceDict(std::nullopt);
  info->doCheck();
  EXPECT_EQ(log_->lines(),
            fieldLines({97, 98, 99, 100, 101, 102, 103, 104, 105, 106, 107, 108, 109}));
}

TEST_F(MyPushAdInfoTest, aSwitchedOffRecordIsNoDefect) {
  const auto info = soundRecord();
  info->setEnable(false);
  info->doCheck();
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(MyPushAdInfoTest, aFreshRecordIsSwitchedOffAndEmpty) {
  const auto info = MyPushAdInfo::createInstance();
  EXPECT_FALSE(info->enable());
  for (const auto number : {info->adId(), info->embed(), info->width(), info->height(),
                            info->offsetx(), info->offsety(), info->count(), info->delay()}) {
    EXPECT_EQ(number, 0);
  }
  EXPECT_EQ(info->version(), "");
  EXPECT_EQ(info->advance(), "");
  EXPECT_EQ(info->notes(), "");
  EXPECT_TRUE(info->advanceDict() && info->advanceDict()->empty());
  EXPECT_FALSE(info->titleDict());
  EXPECT_FALSE(info->htmlContentsDict());
}

}  // namespace
}  // namespace qorix
