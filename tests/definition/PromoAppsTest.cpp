#include <set>
#include <string>

#include <qorix/MyPushAdUtil.h>

#include "support/CheckLines.h"
#include "support/DefinitionTest.h"

namespace qorix {
namespace {

using Names = std::set<std::string>;

const std::string kMethod = "+[MyPushAdUtil fetchUserInstalledAppNamesSet]";

class PromoAppsTest : public DefinitionTest {};

TEST_F(PromoAppsTest, anAbsentOrEmptySetIsFalseWithoutTouchingTheFileSystem) {
  installPackages({"Example Viewer.app"});
  EXPECT_FALSE(MyPushAdUtil::areAllPromoAppsAlreadyInstalled(std::nullopt));
  EXPECT_FALSE(MyPushAdUtil::areAllPromoAppsAlreadyInstalled(Names{}));
  EXPECT_EQ(applicationsFolder_->directoryRequests, 0);
  EXPECT_TRUE(applicationsFolder_->openedDirectories.empty());
}

TEST_F(PromoAppsTest, allNamesMustBeInstalledSpelledExactlySo) {
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

TEST_F(PromoAppsTest, aPlainFolderIsNotCountedButItsPackageChildrenAre) {
  applicationsFolder_->contents = {{false, "Example Viewer"}, {true, "Inside.app"}};
  EXPECT_EQ(MyPushAdUtil::fetchUserInstalledAppNamesSet(), Names{"Inside"});
}

TEST_F(PromoAppsTest, onlyTheLastExtensionIsRemoved) {
  installPackages({"Tool.Pro.app", "Plain", "Dot.", "Two..app"});
  EXPECT_EQ(MyPushAdUtil::fetchUserInstalledAppNamesSet(),
            (Names{"Tool.Pro", "Plain", "Dot", "Two."}));
}

TEST_F(PromoAppsTest, itemsThatCannotBeReadOrHaveNoNameLeftArePassedOver) {
  applicationsFolder_->contents = {{std::nullopt, "Unreadable.app"},
                                   {true, std::nullopt},
                                   {true, ""},
                                   {true, ".app"},
                                   {true, "Good.app"},
                                   {true, "Good.AppDir"}};
  EXPECT_EQ(MyPushAdUtil::fetchUserInstalledAppNamesSet(), Names{"Good"});
}

TEST_F(PromoAppsTest, onlyTheFirstDirectoryIsRead) {
  applicationsFolder_->folders = {"/first", "/second"};
  MyPushAdUtil::fetchUserInstalledAppNamesSet();
  EXPECT_EQ(applicationsFolder_->openedDirectories, Lines{"/first"});
}

TEST_F(PromoAppsTest, theFolderIsReadAfreshOnEveryCall) {
  installPackages({"Example Viewer.app"});
  EXPECT_TRUE(MyPushAdUtil::areAllPromoAppsAlreadyInstalled(Names{"Example Viewer"}));
  installPackages({});
  EXPECT_FALSE(MyPushAdUtil::areAllPromoAppsAlreadyInstalled(Names{"Example Viewer"}));
  EXPECT_EQ(applicationsFolder_->openedDirectories.size(), 2U);
}

TEST_F(PromoAppsTest, noApplicationsFolderLogsOnceAndNothingIsInstalled) {
  applicationsFolder_->folders.clear();
  EXPECT_FALSE(MyPushAdUtil::areAllPromoAppsAlreadyInstalled(Names{"Example Viewer"}));
  EXPECT_EQ(log_->lines(), Lines{checkLine(kMethod, 244, kFatalMessage)});
  EXPECT_TRUE(applicationsFolder_->openedDirectories.empty());
}

TEST_F(PromoAppsTest, aFolderThatCannotBeOpenedLogsAndNothingIsInstalled) {
  applicationsFolder_->contents.reset();
  EXPECT_FALSE(MyPushAdUtil::areAllPromoAppsAlreadyInstalled(Names{"Example Viewer"}));
  EXPECT_EQ(log_->lines(), Lines{checkLine(kMethod, 257, kFatalMessage)});
}

}  // namespace
}  // namespace qorix
