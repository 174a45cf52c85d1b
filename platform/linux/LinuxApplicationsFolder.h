#pragma once

#include <string>

#include <qorix/platform/ApplicationsFolder.h>

namespace qorix {

/// The folder where the system keeps its desktop entries. A package is a desktop entry file
/// ("*.desktop"), or a bundle directory whose name ends in ".app" or ".AppDir". Symbolic links to
/// either count; links to ordinary directories are not followed.
class LinuxApplicationsFolder : public ApplicationsFolder {
 public:
  /// An empty `folder` stands for a system without one.
  explicit LinuxApplicationsFolder(std::string folder = "/usr/share/applications");

  std::vector<std::string> directories() override;
  std::optional<std::vector<Item>> items(const std::string& directory) override;

 private:
  std::string folder_;
};

}  // namespace qorix
