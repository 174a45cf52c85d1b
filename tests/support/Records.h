#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include <qorix/MyPushAdInfo.h>

namespace qorix {

/// The members of a record that tests vary. The others have valid values.
struct RecordOf {
  std::int64_t adId = 12;
  bool enable = true;
  std::string version = "1a4";
  std::int64_t embed = 1;
  std::int64_t width = 300;
  std::int64_t height = 50;
  std::int64_t offsetx = 0;
  std::int64_t offsety = 0;
  std::int64_t count = 3;
  std::int64_t delay = 0;
};

inline std::shared_ptr<MyPushAdInfo> makeRecord(const RecordOf& values = {}) {
  auto record = MyPushAdInfo::createInstance();
  record->setAdId(values.adId);
  record->setEnable(values.enable);
  record->setVersion(values.version);
  record->setEmbed(values.embed);
  record->setWidth(values.width);
  record->setHeight(values.height);
  record->setOffsetx(values.offsetx);
  record->setOffsety(values.offsety);
  record->setCount(values.count);
  record->setDelay(values.delay);
  record->setNotes("notes");
  record->setAdvance("{}");
  record->setTitleDict(LocalizedTexts{{"default", "Title"}});
  record->setHtmlContentsDict(LocalizedTexts{{"default", "<p>page</p>"}});
  return record;
}

}  // namespace qorix
