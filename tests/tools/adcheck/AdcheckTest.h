#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "support/TemporaryFolder.h"
#include "tools/adcheck/ProgramRun.h"

namespace qorix::test {

inline constexpr const char* kEditor = "com.example.editor";

/// The parts of a sound document that tests vary, one line each. Lines and columns of findings are
/// told by `placeOf`, which looks the text up.
struct AdDocument {
  std::string declaration = "<?xml version=\"1.0\"?>";
  std::string fileVersion = "<file_version>1</file_version>";
  std::string table = {};
  std::string ahead = {};  // of the advertisement
  std::string adid = "<adid>11</adid>";
  std::string enable = "<enable>1</enable>";
  std::string version = "<version>2a1</version>";
  std::string embed = "<embed>1</embed>";
  std::string width = "<width>300</width>";
  std::string height = "<height>50</height>";
  std::string count = "<count>3</count>";
  std::string delay = "<delay>0</delay>";
  std::string advance = "<advance>{}</advance>";
  std::string notes = "<notes>autumn offer</notes>";
  std::string title = "<title><default>Try</default></title>";
  std::string pages = {};  // in place of the one page
  std::string page = "<p>page</p>";
  std::string others = {};  // further elements of the advertisement
  std::string behind = {};  // the advertisement

  /// The push_ad element alone.
  std::string advertisement() const {
    const std::string html =
        pages.empty() ? "<html_contents><default><![CDATA[" + page + "]]></default></html_contents>"
                      : pages;
    std::string ad = "<push_ad>\n";
    for (const auto& element : {adid, enable, version, embed, width, height, count, delay, advance,
                                notes, title, html, others}) {
      ad += element + "\n";
    }
    return ad + "</push_ad>\n";
  }

  std::string text() const {
    return declaration + "\n<rootcfg>\n<data>\n" + fileVersion + "\n" + table + "\n</data>\n" +
           ahead + "\n" + advertisement() + behind + "\n</rootcfg>\n";
  }
};

inline std::string tableLine(const std::string& appid, const std::string& adid) {
  return "<push_ad_config><appid>" + appid + "</appid><adid>" + adid + "</adid></push_ad_config>";
}

/// "line:column" of the first `part` in an ASCII document whose lines end in LF.
inline std::string placeOf(std::string_view part, std::string_view document) {
  const auto offset = document.find(part);
  EXPECT_NE(offset, document.npos) << part;
  const auto before = document.substr(0, offset);
  const auto line = std::count(before.begin(), before.end(), '\n') + 1;
  const auto start = before.rfind('\n') == before.npos ? 0 : before.rfind('\n') + 1;
  return std::to_string(line) + ":" + std::to_string(offset - start + 1);
}

/// Runs the program on documents of its own folder.
class AdcheckTest : public testing::Test {
 protected:
  std::string write(const std::string& document, const std::string& name = "ad.xml") {
    std::string path = folder_ / name;
    std::ofstream(path, std::ios::binary) << document;
    return path;
  }

  static ProgramRun run(const std::vector<std::string>& arguments, const ProgramSetup& setup = {}) {
    return runProgram(QORIX_ADCHECK, arguments, setup);
  }

  /// The report on a document, as the host com.example.editor reads it.
  ProgramRun report(const std::string& document, std::vector<std::string> arguments = {}) {
    arguments.insert(arguments.end(), {"--app", kEditor, write(document)});
    return run(arguments);
  }

  /// The JSON about a document; `arguments` come first.
  nlohmann::json json(const std::string& document, std::vector<std::string> arguments = {}) {
    arguments.insert(arguments.end(), {"--json", write(document)});
    run_ = run(arguments);
    return nlohmann::json::parse(run_.output, nullptr, false);
  }

  /// The warnings on a document without the file's name: "line:column: words".
  std::vector<std::string> warnings(const std::string& document) {
    std::vector<std::string> found;
    const std::string start = (folder_ / "ad.xml") + ":";
    for (const auto& line : linesOf(report(document).output)) {
      const auto mark = line.find(": warning: ");
      if (line.starts_with(start) && mark != line.npos) {
        found.push_back(line.substr(start.size(), mark - start.size()) + ": " +
                        line.substr(mark + std::string_view(": warning: ").size()));
      }
    }
    return found;
  }

  TemporaryFolder folder_;
  ProgramRun run_;  // the last one for JSON
};

}  // namespace qorix::test
