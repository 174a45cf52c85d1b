#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <ostream>

#include "fakes/FakeApplicationsFolder.h"
#include "platform/linux/LinuxApplicationsFolder.h"
#include "support/TemporaryFolder.h"

namespace qorix {
namespace {

using ::testing::ElementsAre;
using ::testing::SizeIs;
using Item = ApplicationsFolder::Item;

/// A folder of applications that holds one package, "viewer.desktop", and one plain file, "notes".
struct FolderRig {
  std::unique_ptr<ApplicationsFolder> folder;
  std::string path;
};

struct FolderImplementation {
  const char* name;
  std::function<FolderRig(const TemporaryFolder&)> make;
  std::function<void(FolderRig&)> takeAway;  // makes the folder one that cannot be opened

  friend void PrintTo(const FolderImplementation& implementation, std::ostream* stream) {
    *stream << implementation.name;
  }
};

FolderRig makeLinuxRig(const TemporaryFolder& root) {
  std::ofstream(root / "viewer.desktop") << "";
  std::ofstream(root / "notes") << "";
  return {std::make_unique<LinuxApplicationsFolder>(root.path().string()), root.path().string()};
}

FolderRig makeFakeRig(const TemporaryFolder& root) {
  auto fake = std::make_unique<FakeApplicationsFolder>();
  fake->folders = {root.path().string()};
  fake->contents = std::vector<Item>{{true, "viewer.desktop"}, {false, "notes"}};
  return {std::move(fake), root.path().string()};
}

/// What every folder of applications does.
class ApplicationsFolderContractTest : public ::testing::TestWithParam<FolderImplementation> {
 protected:
  ApplicationsFolderContractTest() : rig_(GetParam().make(root_)) {}

  TemporaryFolder root_;
  FolderRig rig_;
};

TEST_P(ApplicationsFolderContractTest, namesItsFolders) {
  EXPECT_THAT(rig_.folder->directories(), ElementsAre(rig_.path));
}

TEST_P(ApplicationsFolderContractTest, tellsPackagesFromOtherItemsOnEveryCall) {
  for (int round = 0; round < 2; ++round) {
    const auto items = rig_.folder->items(rig_.path);
    ASSERT_TRUE(items.has_value());
    EXPECT_THAT(*items, SizeIs(2));
    for (const Item& item : *items) {
      EXPECT_EQ(item.isPackage, item.name == "viewer.desktop");
    }
  }
}

TEST_P(ApplicationsFolderContractTest, aFolderThatCannotBeOpenedIsNothing) {
  GetParam().takeAway(rig_);
  EXPECT_THAT(rig_.folder->directories(), SizeIs(1));
  EXPECT_FALSE(rig_.folder->items(rig_.path).has_value());
}

INSTANTIATE_TEST_SUITE_P(
    , ApplicationsFolderContractTest,
    ::testing::Values(
        FolderImplementation{"Linux", &makeLinuxRig,
                             [](FolderRig& rig) { std::filesystem::remove_all(rig.path); }},
        FolderImplementation{"Fake", &makeFakeRig,
                             [](FolderRig& rig) {
                               static_cast<FakeApplicationsFolder&>(*rig.folder).contents =
                                   std::nullopt;
                             }}),
    [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace qorix
