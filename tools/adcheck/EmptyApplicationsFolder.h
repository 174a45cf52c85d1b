#pragma once

#include <optional>
#include <string>
#include <vector>

#include <qorix/platform/ApplicationsFolder.h>

namespace qorix::adcheck {

/// A folder that is there and holds nothing: no application is installed.
class EmptyApplicationsFolder : public ApplicationsFolder {
 public:
  std::vector<std::string> directories() override { return {"/"}; }
  std::optional<std::vector<Item>> items(const std::string& /*directory*/) override {
    return std::vector<Item>();
  }
};

}  // namespace qorix::adcheck
