// Every input of the corpus, and so every one that has ever failed.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "fuzz/Targets.h"

namespace qorix::fuzz {
namespace {

namespace fs = std::filesystem;

void replay(const char* name) {
  const auto* target = std::ranges::find(kTargets, std::string_view(name), &Target::name);
  ASSERT_NE(target, std::end(kTargets));
  int count = 0;
  for (const auto& entry : fs::directory_iterator(fs::path(QORIX_FUZZ_CORPUS) / name)) {
    std::printf("%s\n", entry.path().c_str());
    std::fflush(stdout);  // the last one is named even if it ends the process
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(file), {});
    target->run(bytes);
    ++count;
  }
  EXPECT_GT(count, 0);
}

TEST(CorpusTest, document) { replay("document"); }
TEST(CorpusTest, customisation) { replay("customisation"); }
TEST(CorpusTest, links) { replay("links"); }
TEST(CorpusTest, lists) { replay("lists"); }
TEST(CorpusTest, versions) { replay("versions"); }
TEST(CorpusTest, cloudAnswers) { replay("cloudAnswers"); }
TEST(CorpusTest, contentDecoding) { replay("contentDecoding"); }
TEST(CorpusTest, settingsFile) { replay("settingsFile"); }
TEST(CorpusTest, desktopEntries) { replay("desktopEntries"); }
TEST(CorpusTest, localeNames) { replay("localeNames"); }
TEST(CorpusTest, checker) { replay("checker"); }

TEST(CorpusTest, everyTargetIsReplayed) {
  std::set<std::string> replayed;
  const auto& suite = *testing::UnitTest::GetInstance()->current_test_suite();
  for (int i = 0; i < suite.total_test_count(); ++i) {
    replayed.insert(suite.GetTestInfo(i)->name());
  }
  for (const Target& target : kTargets) {
    EXPECT_TRUE(replayed.contains(target.name)) << target.name;
  }
}

}  // namespace
}  // namespace qorix::fuzz
