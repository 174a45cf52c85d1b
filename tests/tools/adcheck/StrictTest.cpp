#include <string>
#include <vector>

#include "tools/adcheck/AdcheckTest.h"

namespace qorix::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

constexpr int kRecord = 0;
constexpr int kRefused = 1;
constexpr int kWarnings = 3;

/// The exit status with --strict, for each format and with --all-hosts.
class StrictTest : public AdcheckTest {
 protected:
  void expectStatus(const std::string& document, int status, int lenientStatus) {
    const std::string file = write(document);
    for (const auto* format : {"text", "json", "sarif"}) {
      for (const auto* host : {"--app=com.example.editor", "--all-hosts"}) {
        SCOPED_TRACE(std::string(format) + " " + host);
        const std::vector<std::string> arguments = {host, "--format", format, file};
        const auto lenient = run(arguments);
        EXPECT_EQ(lenient.status, lenientStatus);
        auto strictly = arguments;
        strictly.emplace_back("--strict");
        EXPECT_EQ(run(strictly).status, status);
      }
    }
  }
};

TEST_F(StrictTest, aSoundDocumentIsFine) { expectStatus(AdDocument().text(), kRecord, kRecord); }

TEST_F(StrictTest, warningsHaveAStatusOfTheirOwn) {
  AdDocument document;
  document.count = "<count>0</count>";
  expectStatus(document.text(), kWarnings, kRecord);
}

TEST_F(StrictTest, besideJsonTheWarningsGoToStandardError) {
  AdDocument document;
  document.count = "<count>0</count>";
  const std::string file = write(document.text());
  for (const auto* host : {"--app=com.example.editor", "--all-hosts"}) {
    EXPECT_THAT(run({host, "--format=json", "--strict", file}).errors,
                testing::ContainsRegex(":[0-9]+:[0-9]+: warning: "));
    EXPECT_THAT(run({host, "--format=json", file}).errors, testing::Not(HasSubstr("warning: ")));
  }
}

TEST_F(StrictTest, aRefusalOutweighsWarnings) {
  AdDocument document;
  document.count = "<count>0</count>";
  document.fileVersion = "";
  expectStatus(document.text(), kRefused, kRefused);
}

TEST_F(StrictTest, theReportItselfStaysTheSame) {
  AdDocument document;
  document.count = "<count>0</count>";
  const std::string text = document.text();
  EXPECT_EQ(report(text, {"--strict"}).output, report(text).output);
}

TEST_F(StrictTest, theTableOfHostsIsFollowedByWhatCounts) {
  AdDocument document;
  document.count = "<count>0</count>";
  const std::string text = document.text();
  const std::string file = write(text);
  const auto table = run({"--all-hosts", file}).output;
  const auto strictly = run({"--all-hosts", "--strict", file}).output;
  EXPECT_THAT(table, testing::Not(HasSubstr("warning")));
  EXPECT_EQ(strictly.substr(0, table.size()), table);
  EXPECT_THAT(strictly,
              HasSubstr("\n" + file + ":" + placeOf("<count>", text) + ": warning: count is 0"));
  EXPECT_THAT(strictly, EndsWith("\n1 warning\n"));
  EXPECT_THAT(run({"--all-hosts", "--strict", write(AdDocument().text())}).output,
              EndsWith("\n\nno warnings\n"));
}

}  // namespace
}  // namespace qorix::test
