#include "tools/adcheck/report/TextReport.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <qorix/MyPushAdUtil.h>

#include "definition/Json.h"
#include "definition/LanguageChoice.h"
#include "tools/adcheck/HostRun.h"
#include "tools/adcheck/report/Describe.h"
#include "tools/adcheck/report/Problems.h"
#include "tools/adcheck/scan/HtmlPage.h"
#include "tools/common/Placement.h"
#include "tools/common/Refusal.h"
#include "tools/common/Wording.h"

namespace qorix::tools::adcheck {

namespace {

constexpr std::string_view kRed = "\x1B[1;31m";
constexpr std::string_view kYellow = "\x1B[1;33m";
constexpr std::string_view kBold = "\x1B[1m";
constexpr std::string_view kPlain = "\x1B[0m";

/// One value of a record before and after something.
struct Change {
  std::string name;
  std::string before;
  std::string after;
};

std::vector<Change> changesBetween(const MyPushAdInfo& before, const MyPushAdInfo& after) {
  std::vector<Change> changes;
  const auto compare = [&](const char* name, const std::string& old, const std::string& now) {
    if (old != now) {
      changes.push_back({name, old, now});
    }
  };
  const auto compareNumbers = [&](const char* name, std::int64_t old, std::int64_t now) {
    compare(name, std::to_string(old), std::to_string(now));
  };
  const auto text = [](const std::optional<std::string>& each) {
    return inQuotes(each.value_or(""));
  };
  compare("enable", before.enable() ? "on" : "off", after.enable() ? "on" : "off");
  compare("version", text(before.version()), text(after.version()));
  compareNumbers("embed", before.embed(), after.embed());
  compareNumbers("width", before.width(), after.width());
  compareNumbers("height", before.height(), after.height());
  compareNumbers("offsetx", before.offsetx(), after.offsetx());
  compareNumbers("offsety", before.offsety(), after.offsety());
  compareNumbers("count", before.count(), after.count());
  compareNumbers("delay", before.delay(), after.delay());
  compare("notes", text(before.notes()), text(after.notes()));
  return changes;
}

/// What a user of that language gets: "the title of en".
std::string servedWith(const MyPushAdInfo& info, std::string_view language) {
  const auto serve = [&](const char* what, const std::optional<LocalizedTexts>& texts) {
    const auto* entry = texts ? entryForLanguage(*texts, language) : nullptr;
    return entry == nullptr ? std::string("no ") + what
                            : std::string("the ") + what + " of " + printable(entry->first);
  };
  return serve("title", info.titleDict()) + ", " + serve("page", info.htmlContentsDict());
}

/// Why the customisation changes nothing.
std::string whyNotCustomised(XmlElement advance, const std::optional<std::string>& app) {
  const auto value = parseJson(advance.text());
  const auto* hosts = value ? value->as<Dictionary>() : nullptr;
  if (hosts == nullptr) {
    return value ? "none: advance is no JSON object" : "none: advance is not JSON";
  }
  if (!app) {
    return "none, as this host has no identifier";
  }
  return find(*hosts, *app) == nullptr ? "none for this host" : "for this host, changes nothing";
}

/// Writes the report line by line.
class Writer {
 public:
  Writer(const std::string& document, const Options& options, bool isColoured)
      : options_(options),
        name_(nameOfFile(options.file)),
        isColoured_(isColoured),
        source_(document),
        host_(readForHost(source_, options.app)),
        problems_(problemsForHost(source_, options.app)),
        run_(runHost(document, options.app, options,
                     [this](std::string_view line) { log_.emplace_back(line); })) {}

  TextReport write();

 private:
  std::string coloured(std::string_view colour, std::string_view text) const {
    return isColoured_ ? std::string(colour) + std::string(text) + std::string(kPlain)
                       : std::string(text);
  }
  std::string placeOf(std::size_t offset) const {
    const auto [line, column] = source_.positionOf(offset);
    return std::to_string(line) + ":" + std::to_string(column);
  }
  std::string placeOf(XmlElement element) const { return placeOf(source_.map().offsetOf(element)); }

  void line(std::string_view label, std::string_view text);
  void message(std::size_t offset, std::string_view colour, std::string_view kind,
               std::string_view words);
  void writeHead();
  void writeTable();
  void writeAdvertisement();
  void writeCustomisation();
  void writePromoted();
  void writeLanguages();
  void writeDecision();
  void writeLog();
  void writeFindings();

  const Options& options_;
  const std::string name_;
  const bool isColoured_;
  const SourceDocument source_;
  const HostReading host_;
  const Problems problems_;
  std::vector<std::string> log_;
  const HostRun run_;
  std::string text_;
};

void Writer::line(std::string_view label, std::string_view text) {
  constexpr std::size_t kWidth = 15;
  std::string start(label);
  start.resize(kWidth, ' ');
  text_ += "  " + coloured(kBold, start) + std::string(text) + "\n";
}

void Writer::message(std::size_t offset, std::string_view colour, std::string_view kind,
                     std::string_view words) {
  text_ += placeInFile(name_, source_, offset) + coloured(colour, std::string(kind) + ":") + " " +
           std::string(words) + "\n";
}

void Writer::writeHead() {
  text_ += coloured(kBold, name_) + ", as " +
           (options_.app ? "the host " + inQuotes(*options_.app) : "a host without identifier") +
           " reads it\n\n";
}

void Writer::writeTable() {
  if (const auto& tableLine = host_.reading.tableLine) {
    line("table", "the line at " + placeOf(*tableLine) + " names this host: adid " +
                      inQuotes(tableLine->firstChildNamed("adid")->text()));
  } else {
    line("table", "no line names this host");
  }
}

void Writer::writeAdvertisement() {
  const AdReading& reading = host_.reading;
  line("advertisement",
       "adid " + inQuotes(reading.text(field::adid)) + " at " + placeOf(*reading.ad) +
           (reading.tableLine ? ", which the table line names" : ", the first of the document"));
  line("version", inQuotes(run_.record->version().value_or("")));
}

void Writer::writeCustomisation() {
  const XmlElement advance = host_.reading.fields[field::advance];
  const auto before = createRecord(host_.reading);
  const auto after = createRecord(host_.reading);
  after->doParseCustomizationAndMerge();
  const auto changes = changesBetween(*before, *after);
  if (changes.empty()) {
    line("customisation", whyNotCustomised(advance, options_.app));
    return;
  }
  line("customisation", "by the advance at " + placeOf(advance));
  for (const auto& [name, old, now] : changes) {
    std::string change = "  ";
    change.append(name).append(": ").append(old).append(" becomes ").append(now);
    line("", change);
  }
}

void Writer::writePromoted() {
  const auto& names = host_.reading.promotedNames;
  if (!names || names->empty()) {
    return;
  }
  std::string list;
  for (const auto& name : *names) {
    list += (list.empty() ? "" : ", ") + printable(name);
  }
  line("promotes", list);
  if (MyPushAdUtil::areAllPromoAppsAlreadyInstalled(names)) {
    line("", "all of them are installed, which switches it off");
  }
}

void Writer::writeLanguages() {
  const MyPushAdInfo& info = *run_.record;
  line("titles", languagesOf(info.titleDict()));
  line("pages", languagesOf(info.htmlContentsDict()));
  const auto holdsScript = [](XmlElement page) { return HtmlPage(page.text()).holdsScript(); };
  if (std::ranges::any_of(host_.reading.pages, holdsScript)) {
    line("scripts", "not run here: qorix-preview runs them and reports what they do");
  }
  const bool hasPreference = !options_.languages.empty();
  const std::string language = hasPreference ? options_.languages.front() : "en";
  std::string user = hasPreference ? "prefers " : "has no preference, which means ";
  user += inQuotes(language);
  user += hasPreference ? " and gets " : ", and gets ";
  line("this user", user + servedWith(info, language));
  line("other users", "of no language listed get " + servedWith(info, ""));
}

void Writer::writeDecision() {
  line("due", decisionOf(run_, options_) + " (" + std::string(nameOf(run_.decision.reason)) + ")");
  const auto& version = run_.decision.storedVersion;
  line("stored then",
       version ? inQuotes(*version) + ", shown " + times(run_.decision.storedCount) : "nothing");
}

void Writer::writeLog() {
  for (std::string each : log_) {
    const bool tellsMissingIdentifier = !options_.app && each.find("] 147:") != each.npos;
    each += tellsMissingIdentifier ? " (this host has no identifier)" : "";
    line("logs", each);
  }
}

void Writer::writeFindings() {
  for (const Finding& finding : problems_.warnings) {
    message(finding.offset, kYellow, "warning", finding.words);
  }
  text_ += warningCount(problems_.warnings.size());
}

TextReport Writer::write() {
  writeHead();
  if (host_.refusal) {
    const auto& [number, offset, words] = *host_.refusal;
    message(offset, kRed, "refused", words + " (a host logs line " + std::to_string(number) + ")");
  } else {
    writeTable();
    writeAdvertisement();
    writeCustomisation();
    writePromoted();
    line("placement", placementOf(*run_.record));
    line("frame", frameOf(*run_.record, options_.viewSize));
    writeLanguages();
    writeDecision();
    writeLog();
  }
  text_ += "\n";
  writeFindings();
  return {std::move(text_), run_.record == nullptr, !problems_.warnings.empty()};
}

}  // namespace

TextReport reportText(const std::string& document, const Options& options, bool isColoured) {
  return Writer(document, options, isColoured).write();
}

}  // namespace qorix::tools::adcheck
