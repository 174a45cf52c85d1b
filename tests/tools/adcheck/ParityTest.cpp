#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <qorix/MyPushAdOperator.h>
#include <qorix/MyPushAdUtil.h>

#include "fakes/FakePlatform.h"
#include "platform/linux/LinuxApplicationsFolder.h"
#include "presentation/StoredShownState.h"
#include "support/Locale.h"
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
  std::vector<std::string> installed = {};  // packages in the applications folder
};

constexpr const char* kFractions =
    "<advance>{\"com.example.editor\":{\"enable\":0.9,\"delay\":2.7,\"offsetx\":-1.5,"
    "\"offsety\":1.25e2,\"embed\":1e400}}</advance>";

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
      {"fractions", with(&AdDocument::advance, kFractions)},
  };
}

/// Documents of which more than one thing is at fault.
std::vector<Case> casesOfOrder() {
  AdDocument sound;
  sound.table = tableLine(kEditor, "11");
  const std::string brokenLine = "<push_ad_config/>";
  std::vector<Case> cases;
  const auto add = [&](const std::string& name, const AdDocument& document) {
    cases.push_back({name, document.text()});
  };
  const auto withoutAds = [](const std::string& table) {
    return "<rootcfg><data><file_version>1</file_version>" + table + "</data></rootcfg>";
  };
  AdDocument document = sound;
  document.fileVersion = "<file_version/>";
  document.table = brokenLine;
  add("file version and table", document);
  cases.push_back({"table and no advertisement", withoutAds(brokenLine)});
  cases.push_back({"no advertisement", withoutAds(tableLine(kEditor, "11"))});
  document = sound;
  document.table = brokenLine;
  document.ahead = "<push_ad/>";
  add("table and advertisement", document);
  for (const auto& [promoted, name] : {std::pair("A", "promoted"), std::pair("B", "not there")}) {
    document = sound;
    document.others = std::string("<promo_app_name>") + promoted + "</promo_app_name>";
    document.advance = "<advance>no JSON</advance>";
    cases.push_back(
        {std::string("customisation and ") + name, document.text(), kEditor, {}, {}, 0, {"A.app"}});
    document.title = "<title/>";
    cases.push_back(
        {std::string("languages and ") + name, document.text(), kEditor, {}, {}, 0, {"A.app"}});
  }
  return cases;
}

/// Documents with blanks where other texts are expected.
std::vector<Case> casesOfBlanks() {
  AdDocument sound;
  sound.table = tableLine(kEditor, "11");
  std::vector<Case> cases;
  const auto add = [&](const std::string& name, std::string AdDocument::*part,
                       const std::string& text) {
    AdDocument document = sound;
    document.*part = text;
    cases.push_back({name, document.text(), kEditor, {}, {}, 0, {"A.app", " .app"}});
  };
  add("in the version of the file", &AdDocument::fileVersion, "<file_version> </file_version>");
  add("in the appid", &AdDocument::table, tableLine(" ", "12") + tableLine(kEditor, "11"));
  add("around the appid", &AdDocument::table, tableLine(std::string(" ") + kEditor, "12"));
  add("in the adid of the table", &AdDocument::table, tableLine(kEditor, " "));
  add("around the adid of the table", &AdDocument::table, tableLine(kEditor, "11 "));
  add("around the adid", &AdDocument::adid, "<adid> 11</adid>");
  for (const auto& [name, part] :
       {std::pair("enable", &AdDocument::enable), std::pair("version", &AdDocument::version),
        std::pair("embed", &AdDocument::embed), std::pair("width", &AdDocument::width),
        std::pair("height", &AdDocument::height), std::pair("count", &AdDocument::count),
        std::pair("delay", &AdDocument::delay), std::pair("advance", &AdDocument::advance),
        std::pair("notes", &AdDocument::notes)}) {
    add(name, part, std::string("<") + name + "> \n</" + name + ">");
  }
  for (const auto* name : {"A", " A", "A ", " ", "  "}) {
    add(std::string("promoted '") + name + "'", &AdDocument::others,
        std::string("<promo_app_name>") + name + "</promo_app_name>");
  }
  return cases;
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
    if (!each.installed.empty()) {
      arguments.insert(arguments.end(), {"--applications", applicationsOf(each)});
    }
    return json(each.document, arguments);
  }

  /// The folder of what is installed; made when it is asked for.
  std::string applicationsOf(const Case& each) {
    const std::filesystem::path folder = folder_ / "applications";
    for (const auto& package : each.installed) {
      std::filesystem::create_directories(folder / package);
    }
    return folder;
  }

  FakePlatform install(const Case& each) {
    FakePlatform fakes;
    if (each.language) {
      fakes.userDefaults->setStringArray({*each.language}, kAppleLanguagesKey);
    }
    if (each.storedVersion) {
      fakes.userDefaults->setString(*each.storedVersion, kShownVersionKey);
      fakes.userDefaults->setInteger(each.storedCount, kShownCountKey);
    }
    Platform services = fakes.services(each.app);
    if (!each.installed.empty()) {
      services.applicationsFolder = std::make_shared<LinuxApplicationsFolder>(applicationsOf(each));
    }
    installPlatform(services);
    return fakes;
  }

  void expectParity(const Case& each);
};

void ParityTest::expectParity(const Case& each) {
  SCOPED_TRACE(each.name);
  const Json told = runCase(each);
  const FakePlatform fakes = install(each);
  const auto record = MyPushAdUtil::parseXMLWithString(each.document);
  ASSERT_EQ(told.is_null(), record == nullptr);
  EXPECT_EQ(run_.status, record == nullptr ? 1 : 0);
  if (record == nullptr) {
    EXPECT_EQ(linesOf(run_.errors), fakes.log->lines());
    return;
  }
  const auto host = std::make_shared<FakeView>();
  const auto presenter = MyPushAdOperator::createInstanceWithHostView(std::shared_ptr<View>(host));
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

TEST_F(ParityTest, theProgramTellsWhatTheLibraryReadsAndAPresenterDoes) {
  for (const Case& each : cases()) {
    expectParity(each);
  }
}

TEST_F(ParityTest, ofSeveralFaultsBothTellTheSame) {
  for (const Case& each : casesOfOrder()) {
    expectParity(each);
  }
}

TEST_F(ParityTest, bothTakeBlanksAsTheyAre) {
  for (const Case& each : casesOfBlanks()) {
    expectParity(each);
  }
}

TEST_F(ParityTest, theHostsLocaleMakesNoDifference) {
  const LocaleInUse locale("ps_AF");
  for (const Case& each : cases()) {
    expectParity(each);
  }
}

}  // namespace
}  // namespace qorix::test
