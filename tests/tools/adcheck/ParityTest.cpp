#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "fakes/FakePlatform.h"
#include "presentation/StoredShownState.h"
#include "qorix/MyPushAdOperator.h"
#include "qorix/MyPushAdUtil.h"
#include "tools/adcheck/AdcheckTest.h"

namespace qorix::test {
namespace {

using Json = nlohmann::json;

/// A machine and a document.
struct Case {
  std::string name;
  std::string document;
  std::string app = kEditor;
  std::optional<std::string> language = {};
  std::optional<std::string> storedVersion = {};
  std::int64_t storedCount = 0;
};

std::vector<Case> cases() {
  AdDocument sound;
  sound.table = tableLine(kEditor, "11");
  sound.title = "<title><en>Try</en><zh-Hans>\xE8\xAF\x95</zh-Hans><default>T</default></title>";
  const auto with = [&](std::string AdDocument::*part, const std::string& text) {
    AdDocument document = sound;
    document.*part = text;
    return document.text();
  };
  return {
      {"sound", sound.text()},
      {"another host", sound.text(), "com.example.other"},
      {"no identifier", sound.text(), ""},
      {"Chinese", sound.text(), kEditor, "zh-Hans-CN"},
      {"French", sound.text(), kEditor, "fr"},
      {"shown before", sound.text(), kEditor, {}, "2a01", 2},
      {"used up", sound.text(), kEditor, {}, "2a1", 3},
      {"another version", sound.text(), kEditor, {}, "1", 9},
      {"switched off", with(&AdDocument::enable, "<enable>0</enable>")},
      {"pop-up", with(&AdDocument::embed, "<embed>0</embed>")},
      {"nothing to show", with(&AdDocument::embed, "<embed>-2</embed>")},
      {"parked", with(&AdDocument::delay, "<delay>-1</delay>")},
      {"later", with(&AdDocument::delay, "<delay>30</delay>")},
      {"odd numbers", with(&AdDocument::width, "<width>0</width>")},
      {"no count", with(&AdDocument::count, "<count>0</count>")},
      {"no such language", with(&AdDocument::title, "<title><de>D</de></title>")},
      {"customised",
       with(&AdDocument::advance,
            "<advance>{\"com.example.editor\":{\"enable\":true,\"width\":\"1\",\"height\":2.9,"
            "\"version\":\"9\",\"notes\":7,\"offsetx\":-4,\"embed\":99999999999999999999}}"
            "</advance>")},
      {"broken customisation", with(&AdDocument::advance, "<advance>{]</advance>")},
      {"a list for customisation", with(&AdDocument::advance, "<advance>[]</advance>")},
      {"no field", with(&AdDocument::height, "")},
      {"no languages", with(&AdDocument::title, "<title>Try</title>")},
      {"no pages", with(&AdDocument::pages, "<html_contents/>")},
      {"unknown advertisement", with(&AdDocument::table, tableLine(kEditor, "99"))},
      {"broken table", with(&AdDocument::table, "<push_ad_config/>")},
      {"no version", with(&AdDocument::fileVersion, "")},
      {"not XML", "<rootcfg>"},
      {"promoted", with(&AdDocument::others, "<promo_app_name>A</promo_app_name>")},
  };
}

/// Its own wording of the record, to be compared with the program's.
Json jsonOf(const MyPushAdInfo& info) {
  const auto text = [](const auto& value) { return value ? Json(*value) : Json(); };
  const auto texts = [](const std::optional<LocalizedTexts>& all) {
    Json object = Json::object();
    for (const auto& [language, value] : *all) {
      object[language] = value;
    }
    return object;
  };
  return {{"adId", info.adId()},
          {"enable", info.enable()},
          {"version", text(info.version())},
          {"embed", info.embed()},
          {"width", info.width()},
          {"height", info.height()},
          {"offsetx", info.offsetx()},
          {"offsety", info.offsety()},
          {"count", info.count()},
          {"delay", info.delay()},
          {"notes", text(info.notes())},
          {"advance", text(info.advance())},
          {"titleDict", texts(info.titleDict())},
          {"htmlContentsDict", texts(info.htmlContentsDict())}};
}

class ParityTest : public AdcheckTest {
 protected:
  Json runCase(const Case& each) {
    std::vector<std::string> arguments = {"--app", each.app};
    if (each.language) {
      arguments.insert(arguments.end(), {"--languages", *each.language});
    }
    if (each.storedVersion) {
      arguments.insert(arguments.end(), {"--stored-version", *each.storedVersion, "--stored-count",
                                         std::to_string(each.storedCount)});
    }
    return json(each.document, arguments);
  }

  static FakePlatform install(const Case& each) {
    FakePlatform fakes;
    if (each.language) {
      fakes.userDefaults->setStringArray({*each.language}, kAppleLanguagesKey);
    }
    if (each.storedVersion) {
      fakes.userDefaults->setString(*each.storedVersion, kShownVersionKey);
      fakes.userDefaults->setInteger(each.storedCount, kShownCountKey);
    }
    installPlatform(fakes.services(each.app));
    return fakes;
  }
};

TEST_F(ParityTest, theProgramTellsWhatTheLibraryReadsAndAPresenterDoes) {
  for (const Case& each : cases()) {
    SCOPED_TRACE(each.name);
    const Json told = runCase(each);
    const FakePlatform fakes = install(each);
    const auto record = MyPushAdUtil::parseXMLWithString(each.document);
    ASSERT_EQ(told.is_null(), record == nullptr);
    EXPECT_EQ(run_.status, record == nullptr ? 1 : 0);
    if (record == nullptr) {
      EXPECT_EQ(linesOf(run_.errors), fakes.log->lines());
      continue;
    }
    const auto host = std::make_shared<FakeView>();
    const auto presenter =
        MyPushAdOperator::createInstanceWithHostView(std::shared_ptr<View>(host));
    presenter->processShowAdIfNeededWithPushAdInfo(record);
    fakes.runLoop->advance(3600);

    EXPECT_EQ(linesOf(run_.errors), fakes.log->lines());
    const Json expected = jsonOf(*record);
    for (const auto& [name, value] : expected.items()) {
      EXPECT_EQ(told[name], value) << name;
    }
    const auto expectText = [&](const char* name, const std::optional<std::string>& text) {
      EXPECT_EQ(told[name], text ? Json(*text) : Json()) << name;
    };
    expectText("localizedTitle", record->localizedTitle());
    expectText("localizedHtmlString", record->localizedHtmlString());
    const Json& decision = told["decision"];
    EXPECT_EQ(decision["due"], presenter->pushAdViewController() != nullptr);
    const auto stored = fakes.userDefaults->stringForKey(kShownVersionKey);
    EXPECT_EQ(decision["storedVersion"], stored ? Json(*stored) : Json());
    EXPECT_EQ(decision["storedCount"], fakes.userDefaults->integerForKey(kShownCountKey));
    EXPECT_EQ(told["advanceDict"].size(), record->advanceDict()->size());
  }
}

}  // namespace
}  // namespace qorix::test
