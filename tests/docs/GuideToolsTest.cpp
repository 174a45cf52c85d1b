#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>
#include <string>
#include <vector>

#include "docs/Guide.h"
#include "support/TemporaryFolder.h"
#include "tools/adcheck/ProgramRun.h"

namespace qorix::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

std::string folderOf(const std::string& program) {
  return std::filesystem::path(program).parent_path().string();
}

/// The output without what differs from run to run and from machine to machine.
std::string withoutTimes(const std::string& output) {
  static const std::regex kTime(R"((^|\n)\d\d:\d\d:\d\d\.\d{3})");
  static const std::regex kLibrary(R"(file://\S+)");
  return std::regex_replace(std::regex_replace(output, kTime, "$0112:34:56.789"), kLibrary,
                            "file:///usr/lib/libqorix.so.2");
}

/// A folder in which the guide's example is, as its reader would save it.
class GuideToolsTest : public testing::Test {
 protected:
  GuideToolsTest() { std::ofstream(folder_ / "commonad.xml") << guide_.block("example"); }

  /// Runs a command of the guide in that folder, on a machine without a display.
  ProgramRun runCommand(const std::string& command) {
    const std::string folders = folderOf(QORIX_ADCHECK) + ":" + folderOf(QORIX_PREVIEW);
    const std::string whole = "cd '" + folder_.path().string() + "' && unset DISPLAY " +
                              "WAYLAND_DISPLAY && PATH='" + folders + "':$PATH && " + command;
    return runProgram("/bin/sh", {"-c", whole},
                      {.environment = {{"HOME", folder_.path().string()},
                                       {"XDG_CACHE_HOME", folder_ / "cache"},
                                       {"XDG_CONFIG_HOME", folder_ / "config"},
                                       {"XDG_DATA_HOME", folder_ / "data"},
                                       {"XDG_RUNTIME_DIR", folder_.path().string()}}});
  }

  /// Runs the commands of the guide whose first line has `part`; all print what the guide says.
  void expectPrinted(const std::string& part) {
    std::size_t commands = 0;
    for (const auto& block : guide_.blocks("console")) {
      const auto end = block.find('\n');
      const std::string command = block.substr(2, end - 2);
      ASSERT_EQ(block.substr(0, 2), "$ ");
      if (command.find(part) != command.npos) {
        ++commands;
        const auto run = runCommand(command);
        EXPECT_EQ(withoutTimes(run.output), block.substr(end + 1)) << command << "\n" << run.errors;
      }
    }
    EXPECT_GT(commands, 0U);
  }

  const Guide guide_;
  TemporaryFolder folder_;
};

TEST_F(GuideToolsTest, adcheckPrintsWhatTheGuideShows) { expectPrinted("qorix-adcheck"); }

TEST_F(GuideToolsTest, previewPrintsWhatTheGuideShows) {
  expectPrinted("qorix-preview");
  EXPECT_TRUE(std::filesystem::exists(folder_ / "banner.png"));
}

TEST_F(GuideToolsTest, everyCommandIsOfAToolThatIsRunHere) {
  for (const auto& block : guide_.blocks("console")) {
    EXPECT_THAT(block, testing::AnyOf(HasSubstr("qorix-adcheck"), HasSubstr("qorix-preview")));
  }
}

TEST_F(GuideToolsTest, noHostIsWarnedAboutTheExample) {
  const auto all = runProgram(QORIX_ADCHECK, {"--all-hosts", "--json", folder_ / "commonad.xml"});
  EXPECT_EQ(all.status, 0);
  EXPECT_EQ(all.errors, "");
  const auto rows = nlohmann::json::parse(all.output);
  ASSERT_EQ(rows.size(), 3U);
  EXPECT_EQ(rows[0]["host"], "com.example.editor");
  EXPECT_EQ(rows[1]["host"], "com.example.viewer");
  EXPECT_EQ(rows[2]["host"], nullptr);
  for (const auto& row : rows) {
    std::vector<std::string> arguments = {folder_ / "commonad.xml"};
    if (row["host"].is_string()) {
      arguments.insert(arguments.end(), {"--app", row["host"].get<std::string>()});
    }
    const auto report = runProgram(QORIX_ADCHECK, arguments);
    EXPECT_EQ(report.status, 0);
    EXPECT_THAT(report.output, EndsWith("\nno warnings\n"));
  }
}

TEST_F(GuideToolsTest, theExamplesShowingsAreCounted) {
  const auto editorAfter = [&](const std::string& count) {
    const auto run =
        runProgram(QORIX_ADCHECK, {"--app", "com.example.editor", "--json", "--stored-version",
                                   "1a2", "--stored-count", count, folder_ / "commonad.xml"});
    return nlohmann::json::parse(run.output)["decision"];
  };
  EXPECT_EQ(editorAfter("1")["due"], true);
  EXPECT_EQ(editorAfter("1")["storedCount"], 2);
  EXPECT_EQ(editorAfter("2")["due"], false);
}

}  // namespace
}  // namespace qorix::test
