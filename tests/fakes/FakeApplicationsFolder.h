#pragma once

#include <optional>
#include <string>
#include <vector>

#include <qorix/platform/ApplicationsFolder.h>

namespace qorix {

/// A folder whose items the test lists.
class FakeApplicationsFolder : public ApplicationsFolder {
 public:
  std::vector<std::string> directories() override {
    ++directoryRequests;
    return folders;
  }

  std::optional<std::vector<Item>> items(const std::string& directory) override {
    openedDirectories.push_back(directory);
    return contents;
  }

  std::vector<std::string> folders = {"/Applications"};
  /// What is in whichever folder is opened; nothing: it cannot be opened.
  std::optional<std::vector<Item>> contents = std::vector<Item>();
  int directoryRequests = 0;
  std::vector<std::string> openedDirectories;
};

}  // namespace qorix
