#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/linux/DesktopEntryRegistry.h"
#include "support/TemporaryFolder.h"

namespace qorix {
namespace {

using ::testing::IsEmpty;

constexpr const char* kApplication = "[Desktop Entry]\nType=Application\nName=Viewer\nExec=true\n";

class DesktopEntryRegistryTest : public ::testing::Test {
 protected:
  DesktopEntryRegistryTest() {
    ::setenv("XDG_DATA_HOME", (folder_.path() / "home").c_str(), 1);
    ::setenv(
        "XDG_DATA_DIRS",
        ((folder_.path() / "first").string() + ":" + (folder_.path() / "second").string()).c_str(),
        1);
  }

  std::filesystem::path write(const std::string& name, const std::string& text = kApplication) {
    auto file = folder_.path() / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file) << text;
    return file;
  }

  /// The file of the application with that identifier; empty when there is none.
  std::string find(const std::string& identifier) {
    const auto urls = registry_.applicationUrlsForBundleIdentifier(identifier);
    return urls.empty() ? "" : urls.front().filePath().value_or("?");
  }

  TemporaryFolder folder_;
  DesktopEntryRegistry registry_;
};

TEST_F(DesktopEntryRegistryTest, findsTheEntryWhoseIdIsTheIdentifier) {
  const auto file = write("second/applications/com.example.viewer.desktop");
  EXPECT_EQ(find("com.example.viewer"), file);
  EXPECT_EQ(find("com.example.view"), "");
  EXPECT_EQ(find("com.example.viewer.desktop"), "");
  EXPECT_EQ(find("COM.example.viewer"), "");
}

TEST_F(DesktopEntryRegistryTest, theUsersOwnFolderComesFirst) {
  write("second/applications/a.desktop");
  EXPECT_EQ(find("a"), folder_.path() / "second/applications/a.desktop");
  write("first/applications/a.desktop");
  EXPECT_EQ(find("a"), folder_.path() / "first/applications/a.desktop");
  write("home/applications/a.desktop");
  EXPECT_EQ(find("a"), folder_.path() / "home/applications/a.desktop");
}

// The machine's own folders, as they are: whatever application is there for all users is found.
TEST_F(DesktopEntryRegistryTest, withoutASettingTheFoldersForAllUsersAreTheUsualOnes) {
  ::unsetenv("XDG_DATA_DIRS");
  std::size_t applications = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/usr/share/applications")) {
    if (entry.path().extension() == ".desktop") {
      ++applications;
      EXPECT_EQ(find(entry.path().stem()), entry.path());
    }
  }
  EXPECT_GT(applications, 0U);
}

TEST_F(DesktopEntryRegistryTest, looksAfreshEachTime) {
  EXPECT_EQ(find("a"), "");
  const auto file = write("first/applications/a.desktop");
  EXPECT_EQ(find("a"), file);
  std::filesystem::remove(file);
  EXPECT_EQ(find("a"), "");
}

TEST_F(DesktopEntryRegistryTest, knowsWhatFlatpakExports) {
  const auto target = write("flatpak/app/entry.desktop");
  const auto exported = folder_.path() / "home/flatpak/exports/share/applications/a.desktop";
  std::filesystem::create_directories(exported.parent_path());
  std::filesystem::create_symlink(target, exported);
  EXPECT_EQ(find("a"), exported);
}

TEST_F(DesktopEntryRegistryTest, dashesMayStandForSubfolders) {
  const auto file = write("first/applications/kde/org.example/my-viewer.desktop");
  EXPECT_EQ(find("kde-org.example-my-viewer"), file);
  EXPECT_EQ(find("kde/org.example/my-viewer"), "");
  EXPECT_EQ(find("-kde-org.example-my-viewer"), "");
}

// Identifiers come from pages, which must not learn what lies elsewhere.
TEST_F(DesktopEntryRegistryTest, dashesLeadOutOfNoFolder) {
  write("first/applications/vendor/b.desktop");
  write("first/elsewhere/a.desktop");
  EXPECT_EQ(find("..-elsewhere-a"), "");
  EXPECT_EQ(find("vendor-..-..-elsewhere-a"), "");
  EXPECT_EQ(find(".-vendor-b"), "");
}

TEST_F(DesktopEntryRegistryTest, anEntryThatTheUserRemovedIsNotThere) {
  write("first/applications/a.desktop");
  write("home/applications/a.desktop", "[Desktop Entry]\nType=Application\nHidden=true\n");
  EXPECT_EQ(find("a"), "");
}

TEST_F(DesktopEntryRegistryTest, anEntryThatIsNotShownInMenusIsThere) {
  write("first/applications/a.desktop", std::string(kApplication) + "NoDisplay=true\n");
  EXPECT_NE(find("a"), "");
}

TEST_F(DesktopEntryRegistryTest, whatIsNoApplicationDoesNotCount) {
  write("first/applications/link.desktop", "[Desktop Entry]\nType=Link\nURL=https://example.com\n");
  write("first/applications/garbage.desktop", "\x01\x02 not an entry");
  write("first/applications/empty.desktop", "");
  std::filesystem::create_directories(folder_.path() / "first/applications/folder.desktop");
  for (const char* identifier : {"link", "garbage", "empty", "folder"}) {
    EXPECT_EQ(find(identifier), "") << identifier;
  }
}

TEST_F(DesktopEntryRegistryTest, whatCannotBeAnIdentifierIsNotLookedFor) {
  write("first/secret.desktop");
  write("first/applications/.desktop");
  EXPECT_EQ(find(""), "");
  EXPECT_EQ(find("../secret"), "");
  EXPECT_EQ(find(std::string("a\0b", 3)), "");
  EXPECT_EQ(find(std::string(1'000'000, '-')), "");
}

TEST_F(DesktopEntryRegistryTest, foldersThatAreNotThereAreNoFault) {
  ::setenv("XDG_DATA_DIRS", ":relative::/nowhere/at/all:", 1);
  EXPECT_THAT(registry_.applicationUrlsForBundleIdentifier("a"), IsEmpty());
}

}  // namespace
}  // namespace qorix
