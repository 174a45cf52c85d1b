#include <qorix/MyPushAdInfo.h>
#include <qorix/MyPushAdUtil.h>
#include <qorix/platform/MemoryUserDefaults.h>
#include <qorix/platform/Platform.h>

#include "definition/Json.h"
#include "definition/XmlDocument.h"
#include "definition/XmlSourceMap.h"
#include "fakes/FakeApplicationsFolder.h"
#include "fakes/RecordingLog.h"
#include "fuzz/Escaped.h"
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
  auto log = std::make_shared<RecordingLog>();
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
  if (reading.record == nullptr) {
    return "";
  }
  tools::adcheck::HostRun run;
  run.record = reading.record;
  return textOf(toJson(run));
}

Reading expectOneReading(const std::string& text, unsigned choice) {
  Reading reading = read(text, choice);
  expect(reading.record != nullptr || reading.lines.size() == 1, "a refusal is logged in one line");
  const Reading again = read(text, choice);
  expect(describe(reading) == describe(again) && reading.lines == again.lines,
         "a document is read in the same way each time");
  if (reading.record != nullptr) {
    const bool wasDue = isDue(decideAndCount(*reading.record));
    expect(reading.record->enable() || !wasDue, "what is switched off is not due");
  }
  return reading;
}

bool isSameTree(XmlElement a, XmlElement b) {
  if (a.name() != b.name() || a.text() != b.text()) {
    return false;
  }
  const auto others = b.children();
  auto other = others.begin();
  for (const XmlElement child : a.children()) {
    if (other == others.end() || !isSameTree(child, *other)) {
      return false;
    }
    ++other;
  }
  return other == others.end();
}

void expectPlaces(XmlElement element, const XmlSourceMap& places, std::size_t size) {
  expect(places.offsetOf(element) < size &&
             places.offsetInText(element, element.text().size()) <= size,
         "an element and its text are found in the document");
  for (const XmlElement child : element.children()) {
    expectPlaces(child, places, size);
  }
}

/// Reads the text at once, in pieces, and with the places of everything.
void expectOneTree(std::string_view text, std::size_t pieceSize) {
  const auto whole = XmlDocument::parse(text);
  const auto inPieces = XmlDocument::parse(text, pieceSize);
  XmlSourceMap places;
  const auto mapped = XmlDocument::parse(text, places);
  expect(whole.has_value() == inPieces.has_value() && whole.has_value() == mapped.has_value(),
         "it does not matter for a refusal how a document is read");
  if (whole) {
    expect(isSameTree(whole->root(), inPieces->root()) && isSameTree(whole->root(), mapped->root()),
           "it does not matter for the elements how a document is read");
    expectPlaces(mapped->root(), places, text.size());
  } else {
    expect(places.error() && places.error()->offset <= text.size(), "a refusal has its place");
  }
}

}  // namespace

void document(std::string_view bytes) {
  const unsigned choice = takeByte(bytes);
  expectOneReading(std::string(bytes), choice);
  expectOneTree(bytes, choice % 16 + 1);
}

void customisation(std::string_view bytes) {
  JsonDefect defect;
  const bool isRead = parseJson(bytes, &defect).has_value();
  expect(isRead || (!defect.message.empty() && defect.offset <= bytes.size()),
         "a defect has its reason and its place");
  const AdElements ad{.adid = element("adid", "11"), .advance = element("advance", escaped(bytes))};
  const std::string text = documentText("", ad.text());
  const Reading reading = expectOneReading(text, 3);
  if (!bytes.empty() && XmlDocument::parse(text)) {
    expect(reading.record != nullptr && reading.record->advance() == bytes,
           "no customisation makes a host refuse the document");
  }
}

}  // namespace qorix::fuzz
