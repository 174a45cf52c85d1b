#include <set>
#include <string>

#include "definition/DefinitionTest.h"
#include "qorix/MyPushAdUtil.h"

namespace qorix {
namespace {

using Names = std::set<std::string>;

const std::string kMethod = "+[MyPushAdUtil fetchUserInstalledAppNamesSet]";
const std::string kFatal = ": ZAM <=> ***Error***: fatal error found, go to pre-defined condition.";

class PromoAppsTest : public DefinitionTest {};

TEST_F(PromoAppsTest, AnAbsentOrEmptySetIsFalseWithoutTouchingTheFileSystem) {
  installPackages({"Example Viewer.app"});
  EXPECT_FALSE(MyPushAdUtil::areAllPromoAppsAlreadyInstalled(std::nullopt));
  EXPECT_FALSE(MyPushAdUtil::areAllPromoAppsAlreadyInstalled(Names{}));
  EXPECT_EQ(applicationsFolder_->directoryRequests, 0);
  EXPECT_TRUE(applicationsFolder_->openedDirectories.empty());
}

TEST_F(PromoAppsTest, AllNamesMustBeInstalledSpelledExactlySo) {
  installPackages({"Example Viewer.app", "Example Converter.app", "Other.app"});
  const auto areInstalled = [](const Names& names) {
    return MyPushAdUtil::areAllPromoAppsAlreadyInstalled(names);
  };
  EXPECT_TRUE(areInstalled({"Example Viewer"}));
  EXPECT_TRUE(areInstalled({"Example Viewer", "Example Converter"}));
  EXPECT_FALSE(areInstalled({"Example Viewer", "Missing"}));
  EXPECT_FALSE(areInstalled({"example viewer"}));
  EXPECT_FALSE(areInstalled({"Example Viewer.app"}));
  EXPECT_FALSE(areInstalled({"Example Viewer "}));
  EXPECT_FALSE(areInstalled({""}));
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(PromoAppsTest, APlainFolderIsNotCountedButItsPackageChildrenAre) {
  applicationsFolder_->contents = {{false, "Example Viewer"}, {true, "Inside.app"}};
  EXPECT_EQ(MyPushAdUtil::fetchUserInstalledAppNamesSet(), Names{"Inside"});
}

TEST_F(PromoAppsTest, OnlyTheLastExtensionIsRemoved) {
  installPackages({"Tool.Pro.app", "Plain", "Dot.", "Two..app"});
  EXPECT_EQ(MyPushAdUtil::fetchUserInstalledAppNamesSet(),
            (Names{"Tool.Pro", "Plain", "Dot", "Two."}));
}

TEST_F(PromoAppsTest, ItemsThatCannotBeReadOrHaveNoNameLeftArePassedOver) {
  applicationsFolder_->contents = {{std::nullopt, "Unreadable.app"},
                                   {true, std::nullopt},
                                   {true, ""},
                                   {true, ".app"},
                                   {true, "Good.app"},
                                   {true, "Good.AppDir"}};
  EXPECT_EQ(MyPushAdUtil::fetchUserInstalledAppNamesSet(), Names{"Good"});
}

TEST_F(PromoAppsTest, OnlyTheFirstDirectoryIsRead) {
  applicationsFolder_->folders = {"/first", "/second"};
  MyPushAdUtil::fetchUserInstalledAppNamesSet();
  EXPECT_EQ(applicationsFolder_->openedDirectories, Lines{"/first"});
}

TEST_F(PromoAppsTest, TheFolderIsReadAfreshOnEveryCall) {
  installPackages({"Example Viewer.app"});
  EXPECT_TRUE(MyPushAdUtil::areAllPromoAppsAlreadyInstalled(Names{"Example Viewer"}));
  installPackages({});
  EXPECT_FALSE(MyPushAdUtil::areAllPromoAppsAlreadyInstalled(Names{"Example Viewer"}));
  EXPECT_EQ(applicationsFolder_->openedDirectories.size(), 2U);
}

TEST_F(PromoAppsTest, NoApplicationsFolderLogsOnceAndNothingIsInstalled) {
  applicationsFolder_->folders.clear();
  EXPECT_FALSE(MyPushAdUtil::areAllPromoAppsAlreadyInstalled(Names{"Example Viewer"}));
  EXPECT_EQ(log_->lines(), Lines{kMethod + " 244" + kFatal});
  EXPECT_TRUE(applicationsFolder_->openedDirectories.empty());
}

TEST_F(PromoAppsTest, AFolderThatCannotBeOpenedLogsAndNothingIsInstalled) {
  applicationsFolder_->contents.reset();
  EXPECT_FALSE(MyPushAdUtil::areAllPromoAppsAlreadyInstalled(Names{"Example Viewer"}));
  EXPECT_EQ(log_->lines(), Lines{kMethod + " 257" + kFatal});
}

}  // namespace
}  // namespace qorix
