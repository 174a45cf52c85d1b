#include <string>
#include <vector>

#include <qorix/QORIXInfo.h>

#include "tools/adcheck/AdcheckTest.h"

namespace qorix::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr int kWrongUsage = 2;

class AdcheckOptionsTest : public AdcheckTest {
 protected:
  /// One line that says what is wrong, and where to read more.
  static void expectWrongUsage(const std::vector<std::string>& arguments,
                               const std::string& words) {
    const auto result = run(arguments);
    EXPECT_EQ(result.status, kWrongUsage) << words;
    EXPECT_THAT(result.output, IsEmpty());
    EXPECT_THAT(linesOf(result.errors), ElementsAre(HasSubstr(words), "Try --help."));
  }
};

TEST_F(AdcheckOptionsTest, helpNamesEveryOption) {
  const auto result = run({"--help"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.errors, IsEmpty());
  EXPECT_THAT(result.output, HasSubstr("\nUsage: qorix-adcheck [OPTIONS] FILE\n"));
  for (const auto* option :
       {"--app ID", "--languages LIST", "--applications DIR", "--stored-version TEXT",
        "--stored-count N", "--view-size WxH", "--all-hosts", "--format NAME", "--json", "--strict",
        "--help", "--version"}) {
    EXPECT_THAT(result.output, HasSubstr(std::string("\n  ") + option));
  }
}

TEST_F(AdcheckOptionsTest, versionNeedsNoFile) {
  const auto result = run({"--version"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "qorix-adcheck (QORIX) 2.0\n" + QORIXInfo::frameworkInfoString() + "\n");
  EXPECT_THAT(result.errors, IsEmpty());
}

TEST_F(AdcheckOptionsTest, wrongUsageIsToldInOneLine) {
  const std::string file = write(AdDocument().text());
  expectWrongUsage({}, "FILE is required");
  expectWrongUsage({"--json"}, "FILE is required");
  expectWrongUsage({file, "second.xml"}, "argument was not expected: second.xml");
  expectWrongUsage({"--frob", file}, "argument was not expected: --frob");
  expectWrongUsage({"-x", file}, "argument was not expected: -x");
  expectWrongUsage({"--json=yes", file}, "json was given a disallowed flag override");
  expectWrongUsage({file, "--app"}, "--app: 1 required ID missing");
  expectWrongUsage({"--all-hosts", "--app", kEditor, file}, "--app excludes --all-hosts");
  expectWrongUsage({"--json", "--format", "json", file}, "--format excludes --json");
  for (const auto* format : {"", "xml", "JSON"}) {
    expectWrongUsage({"--format", format, file}, "--format: ");
  }
  for (const auto* count : {"", "x", "1x", " 1", "1.5", "9223372036854775808"}) {
    expectWrongUsage({"--stored-count", count, file}, "--stored-count: cannot be");
  }
  for (const auto* size :
       {"", "800", "800x", "x600", "0x600", "800x-1", "800x600x2", "1000000x1"}) {
    expectWrongUsage({"--view-size", size, file}, "--view-size: cannot be");
  }
}

TEST_F(AdcheckOptionsTest, whatCannotBeReadIsTold) {
  const std::string file = write(AdDocument().text());
  const std::string missing = folder_ / "missing";
  for (const auto& arguments :
       std::vector<std::vector<std::string>>{{missing},
                                             {"--json", missing},
                                             {folder_.path().string()},
                                             {""},
                                             {"--applications", missing, file},
                                             {"--applications", file, file},
                                             {"--all-hosts", missing}}) {
    const auto result = run(arguments);
    EXPECT_EQ(result.status, kWrongUsage);
    EXPECT_THAT(result.output, IsEmpty());
    EXPECT_THAT(result.errors, HasSubstr("cannot be read: "));
  }
}

TEST_F(AdcheckOptionsTest, standardInputThatCannotBeReadIsCalledSo) {
  const auto result = runProgram("/bin/sh", {"-c", "exec '" QORIX_ADCHECK "' - < /"});
  EXPECT_EQ(result.status, kWrongUsage);
  EXPECT_EQ(result.errors, "qorix-adcheck: standard input cannot be read: Is a directory\n");
}

TEST_F(AdcheckOptionsTest, endlessInputIsGivenUp) {
  const auto result = run({"/dev/zero"});
  EXPECT_EQ(result.status, kWrongUsage);
  EXPECT_EQ(result.errors, "qorix-adcheck: /dev/zero cannot be read: File too large\n");
}

TEST_F(AdcheckOptionsTest, optionsMayStandBehindTheFile) {
  const std::string file = write(AdDocument().text());
  const auto result = run({file, "--json", "--app", kEditor});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(nlohmann::json::parse(result.output)["adId"], 11);
}

TEST_F(AdcheckOptionsTest, formatsHaveNames) {
  const std::string file = write(AdDocument().text());
  EXPECT_EQ(run({"--format", "text", file}).output, run({file}).output);
  EXPECT_EQ(run({"--format", "json", file}).output, run({"--json", file}).output);
  EXPECT_EQ(run({"--format", "json", "--all-hosts", file}).output,
            run({"--json", "--all-hosts", file}).output);
}

TEST_F(AdcheckOptionsTest, aDashIsStandardInput) {
  const auto result = run({"--json", "-"}, {.input = AdDocument().text()});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(nlohmann::json::parse(result.output)["adId"], 11);
  const auto report = run({"-"}, {.input = "<r>"});
  EXPECT_EQ(report.status, 1);
  EXPECT_THAT(report.output, HasSubstr("standard input:1:4: refused: "));
}

TEST_F(AdcheckOptionsTest, aFailingWriteIsToldAndNoCrash) {
  AdDocument large;
  large.page = std::string(1'000'000, 'x');
  const std::string file = write(large.text());
  for (const auto output : {Output::fullDevice, Output::goneReader}) {
    for (const auto& arguments : std::vector<std::vector<std::string>>{{"--json", file},
                                                                       {file},
                                                                       {"--all-hosts", file},
                                                                       {"--format", "sarif", file},
                                                                       {"--help"},
                                                                       {"--version"}}) {
      const auto result = run(arguments, {.output = output});
      EXPECT_EQ(result.status, kWrongUsage) << arguments.front();
      EXPECT_THAT(result.errors, HasSubstr("cannot be written: "));
    }
  }
}

TEST_F(AdcheckOptionsTest, colourIsForTerminalsOnly) {
  AdDocument document;
  document.count = "<count>0</count>";
  const std::string file = write(document.text());
  const auto inPipe = run({file});
  EXPECT_THAT(inPipe.output, testing::Not(HasSubstr("\x1B")));
  EXPECT_THAT(inPipe.output, HasSubstr(": warning: count is 0"));
  const auto onTerminal = run({file}, {.output = Output::terminal});
  EXPECT_EQ(onTerminal.status, 0);
  EXPECT_THAT(onTerminal.output, HasSubstr("\x1B[1;33mwarning:\x1B[0m count is 0"));
  const auto json = run({"--json", file}, {.output = Output::terminal});
  EXPECT_THAT(json.output, testing::Not(HasSubstr("\x1B")));
}

TEST_F(AdcheckOptionsTest, theEnvironmentIsNotConsulted) {
  AdDocument document;
  document.title = "<title><en>English</en><de>Deutsch</de></title>";
  const std::string file = write(document.text());
  const auto result = run(
      {"--json", file},
      {.environment = {{"LANG", "de_DE.UTF-8"}, {"LANGUAGE", "de"}, {"LC_ALL", "de_DE.UTF-8"}}});
  EXPECT_EQ(nlohmann::json::parse(result.output)["localizedTitle"], "English");
}

}  // namespace
}  // namespace qorix::test
