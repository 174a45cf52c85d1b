#include <filesystem>
#include <string>
#include <vector>

#include "tools/adcheck/AdcheckTest.h"

namespace qorix::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

std::vector<std::string> exampleDocuments() {
  std::vector<std::string> documents;
  for (const auto& entry : std::filesystem::directory_iterator(QORIX_EXAMPLE_DOCUMENTS)) {
    if (entry.path().extension() == ".xml") {
      documents.push_back(entry.path().string());
    }
  }
  return documents;
}

TEST(ExampleDocumentsTest, everyHostReadsThemWithoutAWarning) {
  const auto documents = exampleDocuments();
  ASSERT_FALSE(documents.empty());
  int namedHosts = 0;
  for (const auto& document : documents) {
    SCOPED_TRACE(document);
    const auto all = runProgram(QORIX_ADCHECK, {"--all-hosts", "--json", document});
    EXPECT_EQ(all.status, 0);
    EXPECT_EQ(all.errors, "");
    const auto rows = nlohmann::json::parse(all.output);
    ASSERT_FALSE(rows.empty());  // the last is for a host that is not named
    for (const auto& row : rows) {
      std::vector<std::string> arguments = {document};
      if (row["host"].is_string()) {
        ++namedHosts;
        arguments.insert(arguments.end(), {"--app", row["host"].get<std::string>()});
      }
      const auto report = runProgram(QORIX_ADCHECK, arguments);
      EXPECT_EQ(report.status, 0);
      EXPECT_THAT(report.output, EndsWith("\nno warnings\n"));
      EXPECT_THAT(report.output, Not(HasSubstr("warning:")));
    }
  }
  EXPECT_GT(namedHosts, 0);
}

}  // namespace
}  // namespace qorix::test
