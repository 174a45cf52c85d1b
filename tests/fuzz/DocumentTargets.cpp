#include <qorix/MyPushAdInfo.h>
#include <qorix/MyPushAdUtil.h>
#include <qorix/platform/MemoryUserDefaults.h>
#include <qorix/platform/Platform.h>

#include "definition/Json.h"
#include "fakes/FakeApplicationsFolder.h"
#include "fakes/RecordingLog.h"
#include "fuzz/Expect.h"
#include "fuzz/Input.h"
#include "fuzz/Targets.h"
#include "presentation/ShowDecision.h"
#include "presentation/StoredShownState.h"
#include "support/Documents.h"
#include "tools/adcheck/HostRun.h"
#include "tools/adcheck/report/JsonReport.h"

namespace qorix::fuzz {

namespace {

/// Installs a platform for one reading. Returns its log.
std::shared_ptr<RecordingLog> installHost(unsigned choice) {
  static const char* const kHosts[] = {"com.example.editor", "com.example.viewer", ""};
  static const std::vector<std::string> kLanguages[] = {
      {}, {"en"}, {"de-AT", "fr"}, {"zh-Hant-TW"}, {"sr-Latn-RS", "de"}};
  Platform services;
  const auto log = std::make_shared<RecordingLog>();
  services.log = log;
  services.standardUserDefaults = std::make_shared<MemoryUserDefaults>();
  services.standardUserDefaults->setStringArray(kLanguages[choice / 3 % 5], kAppleLanguagesKey);
  const auto applications = std::make_shared<FakeApplicationsFolder>();
  applications->contents = {{{true, "Editor.desktop"}, {true, "a.app"}, {false, "b"}}};
  services.applicationsFolder = applications;
  services.mainBundle = std::make_shared<const Bundle>(std::string(kHosts[choice % 3]),
                                                       Url::fileUrl("/opt/editor/bin/editor"));
  installPlatform(services);
  return log;
}

struct Reading {
  std::shared_ptr<MyPushAdInfo> record;
  std::vector<std::string> lines;
};

Reading read(const std::string& text, unsigned choice) {
  const auto log = installHost(choice);
  auto record = MyPushAdUtil::parseXMLWithString(text);
  return {std::move(record), log->takeLines()};
}

std::string describe(const Reading& reading) {
  using namespace tools::adcheck;
  if (reading.record == nullptr) {
    return "";
  }
  HostRun run;
  run.record = reading.record;
  return textOf(toJson(run));
}

void expectOneReading(const std::string& text, unsigned choice) {
  const Reading reading = read(text, choice);
  expect(reading.record != nullptr || !reading.lines.empty(), "a refusal is logged");
  const Reading again = read(text, choice);
  expect(describe(reading) == describe(again) && reading.lines == again.lines,
         "a document is read in the same way each time");
  if (reading.record != nullptr) {
    const bool wasDue = isDue(decideAndCount(*reading.record));
    expect(reading.record->enable() || !wasDue, "what is switched off is not due");
  }
}

std::string escaped(std::string_view text) {
  std::string result;
  for (const char c : text) {
    result += c == '<' ? "&lt;" : c == '&' ? "&amp;" : std::string(1, c);
  }
  return result;
}

}  // namespace

void document(std::string_view bytes) {
  const unsigned choice = takeByte(bytes);
  expectOneReading(std::string(bytes), choice);
}

void customisation(std::string_view bytes) {
  JsonDefect defect;
  const bool isRead = parseJson(bytes, &defect).has_value();
  expect(isRead || (!defect.message.empty() && defect.offset <= bytes.size()),
         "a defect has its reason and its place");
  const AdElements ad{.adid = element("adid", "11"), .advance = element("advance", escaped(bytes))};
  expectOneReading(documentText("", ad.text()), 3);
}

}  // namespace qorix::fuzz
