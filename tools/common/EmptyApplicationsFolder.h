#pragma once

#include <optional>
#include <string>
#include <vector>

#include <qorix/platform/ApplicationsFolder.h>

namespace qorix::tools {

/// A folder that exists and is empty: no application is installed.
class EmptyApplicationsFolder : public ApplicationsFolder {
 public:
  std::vector<std::string> directories() override { return {"/"}; }
  std::optional<std::vector<Item>> items(const std::string& /*directory*/) override {
    return std::vector<Item>();
  }
};

}  // namespace qorix::tools
