#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>

#include "platform/linux/LinuxBundle.h"

namespace qorix {
namespace {

std::string pathOf(const Bundle& bundle) {
  const std::string text = bundle.executableUrl().absoluteString();
  EXPECT_TRUE(text.starts_with("file:///")) << text;
  return text.substr(std::string("file://").size());
}

TEST(LinuxBundleTest, isTheRunningProgramUnderItsIdentifier) {
  const auto bundle = hostBundle("com.example.editor");
  EXPECT_EQ(bundle->bundleIdentifier(), "com.example.editor");
  EXPECT_EQ(bundle->executableUrl(),
            Url::fileUrl(std::filesystem::read_symlink("/proc/self/exe").string()));
}

TEST(LinuxBundleTest, isTheFileThatHoldsTheLibrary) {
  const auto bundle = libraryBundle();
  EXPECT_EQ(bundle->bundleIdentifier(), std::nullopt);
  const std::filesystem::path path = pathOf(*bundle);
  EXPECT_TRUE(std::filesystem::is_regular_file(path)) << path;
  EXPECT_EQ(path.filename(), "qorix-linux-tests");  // it holds all that it tests
}

TEST(LinuxBundleTest, doesNotDependOnTheCurrentFolder) {
  const std::string before = pathOf(*libraryBundle());
  ASSERT_EQ(::chdir("/"), 0);
  EXPECT_EQ(pathOf(*libraryBundle()), before);
}

}  // namespace
}  // namespace qorix
