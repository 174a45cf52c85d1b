#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>

#include "platform/linux/LinuxApplicationsFolder.h"
#include "support/TemporaryFolder.h"

namespace qorix {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

class LinuxApplicationsFolderTest : public ::testing::Test {
 protected:
  void makeFile(const std::string& name) {
    fs::create_directories((root_.path() / name).parent_path());
    std::ofstream(root_.path() / name) << "[Desktop Entry]\n";
  }
  void makeFolder(const std::string& name) { fs::create_directories(root_.path() / name); }
  void makeLink(const std::string& name, const std::string& target) {
    fs::create_symlink(target, root_.path() / name);
  }

  /// The items below the root as name and package flag.
  std::multimap<std::string, bool> items() {
    std::multimap<std::string, bool> result;
    const auto items = LinuxApplicationsFolder().items(root_.path().string());
    EXPECT_TRUE(items.has_value());
    for (const auto& item : items.value_or(std::vector<ApplicationsFolder::Item>())) {
      result.emplace(item.name.value(), item.isPackage.value());
    }
    return result;
  }

  TemporaryFolder root_;
};

TEST_F(LinuxApplicationsFolderTest, theFolderIsTheSystemsUnlessToldOtherwise) {
  EXPECT_THAT(LinuxApplicationsFolder().directories(), ElementsAre("/usr/share/applications"));
  EXPECT_THAT(LinuxApplicationsFolder("/opt/apps").directories(), ElementsAre("/opt/apps"));
  EXPECT_THAT(LinuxApplicationsFolder("").directories(), IsEmpty());
}

TEST_F(LinuxApplicationsFolderTest, desktopEntriesAndBundleFoldersArePackages) {
  makeFile("viewer.desktop");
  makeFolder("Example Viewer.app");
  makeFolder("Tool.Pro.AppDir");
  makeFile("mimeinfo.cache");
  makeFile("not-a-folder.app");
  makeFolder("not-a-file.desktop");
  makeFolder("Example Viewer");
  EXPECT_THAT(items(), UnorderedElementsAre(
                           Pair("viewer.desktop", true), Pair("Example Viewer.app", true),
                           Pair("Tool.Pro.AppDir", true), Pair("mimeinfo.cache", false),
                           Pair("not-a-folder.app", false), Pair("not-a-file.desktop", false),
                           Pair("Example Viewer", false)));
}

TEST_F(LinuxApplicationsFolderTest, ordinaryFoldersAreEnteredAndPackagesAreNot) {
  makeFile("Utilities/converter.desktop");
  makeFile("Utilities/deeper/still.desktop");
  makeFile("odd.desktop/inner.desktop");
  makeFile("Viewer.app/Contents/nested.desktop");
  makeFile("Viewer.AppDir/nested.desktop");
  EXPECT_THAT(items(),
              UnorderedElementsAre(Pair("Utilities", false), Pair("converter.desktop", true),
                                   Pair("deeper", false), Pair("still.desktop", true),
                                   Pair("odd.desktop", false), Pair("inner.desktop", true),
                                   Pair("Viewer.app", true), Pair("Viewer.AppDir", true)));
}

TEST_F(LinuxApplicationsFolderTest, linksToPackagesCountAndLinkedFoldersAreNotEntered) {
  makeFile("away/.hidden/real.desktop");
  makeFile("away/.hidden/folder/inside.desktop");
  makeFolder("away/.hidden/Real.app");
  makeLink("entry.desktop", "away/.hidden/real.desktop");
  makeLink("entry.txt", "away/.hidden/real.desktop");
  makeLink("Bundle.app", "away/.hidden/Real.app");
  makeLink("Other.AppDir", "away/.hidden/folder");
  makeLink("linked", "away/.hidden/folder");
  makeLink("folder.desktop", "away/.hidden/folder");
  makeLink("gone.desktop", "nowhere");
  makeLink("loop.app", "loop.app");
  makeLink("up", "..");
  EXPECT_THAT(items(),
              UnorderedElementsAre(Pair("away", false), Pair("entry.desktop", true),
                                   Pair("entry.txt", false), Pair("Bundle.app", true),
                                   Pair("Other.AppDir", true), Pair("linked", false),
                                   Pair("folder.desktop", false), Pair("gone.desktop", false),
                                   Pair("loop.app", false), Pair("up", false)));
}

TEST_F(LinuxApplicationsFolderTest, hiddenItemsAndWhatLiesInThemAreSkipped) {
  makeFile(".secret.desktop");
  makeFolder(".Secret.app");
  makeFile(".hidden/entry.desktop");
  makeFile("shown/.entry.desktop");
  EXPECT_THAT(items(), ElementsAre(Pair("shown", false)));
}

TEST_F(LinuxApplicationsFolderTest, theFolderItselfMayBeALink) {
  makeFile("real/viewer.desktop");
  makeLink("link", "real");
  const auto items = LinuxApplicationsFolder().items(root_ / "link");
  ASSERT_TRUE(items.has_value());
  EXPECT_EQ(items->size(), 1U);
}

TEST_F(LinuxApplicationsFolderTest, aFolderThatCannotBeOpenedIsNothing) {
  makeFile("file");
  LinuxApplicationsFolder folder;
  EXPECT_FALSE(folder.items(root_ / "missing").has_value());
  EXPECT_FALSE(folder.items(root_ / "file").has_value());
  EXPECT_FALSE(folder.items("").has_value());
}

TEST_F(LinuxApplicationsFolderTest, foldersThatCannotBeReadArePassedOver) {
  makeFile("closed/inner.desktop");
  makeFile("open/inner.desktop");
  fs::permissions(root_.path(), fs::perms(0755));
  fs::permissions(root_.path() / "closed", fs::perms::none);
  const bool isRoot = ::geteuid() == 0;
  if (isRoot) {  // whom no permission stops
    ASSERT_EQ(::seteuid(65534), 0);
  }
  EXPECT_THAT(items(), UnorderedElementsAre(Pair("closed", false), Pair("open", false),
                                            Pair("inner.desktop", true)));
  if (isRoot) {
    ASSERT_EQ(::seteuid(0), 0);
  }
  fs::permissions(root_.path() / "closed", fs::perms::owner_all);
}

TEST_F(LinuxApplicationsFolderTest, everyCallReadsAfresh) {
  EXPECT_THAT(items(), IsEmpty());
  makeFile("viewer.desktop");
  EXPECT_EQ(items().size(), 1U);
  fs::remove(root_.path() / "viewer.desktop");
  EXPECT_THAT(items(), IsEmpty());
}

TEST_F(LinuxApplicationsFolderTest, readsDeepTrees) {
  constexpr std::size_t kDepth = 1500;
  std::string path = root_.path().string();
  for (std::size_t i = 0; i < kDepth; ++i) {
    path += "/d";
    ASSERT_TRUE(fs::create_directory(path));
  }
  std::ofstream(path + "/deep.desktop") << "";
  EXPECT_EQ(items().size(), kDepth + 1);
}

TEST_F(LinuxApplicationsFolderTest, readsManyItems) {
  constexpr std::size_t kCount = 20'000;
  for (std::size_t i = 0; i < kCount; ++i) {
    std::ofstream(root_ / (std::to_string(i) + ".desktop")) << "";
  }
  EXPECT_EQ(items().size(), kCount);
}

}  // namespace
}  // namespace qorix
