#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <qorix/platform/MemoryUserDefaults.h>
#include <qorix/platform/Platform.h>

#include "fakes/FakeApplicationsFolder.h"
#include "fakes/RecordingLog.h"

namespace qorix {

using Lines = std::vector<std::string>;

inline constexpr const char* kEditor = "com.example.editor";

/// Installs a platform whose host, log, settings and applications folder the test can see.
class DefinitionTest : public testing::Test {
 protected:
  DefinitionTest() { installHost(kEditor); }

  void installHost(const std::optional<std::string>& identifier) {
    Platform services;
    services.log = log_;
    services.standardUserDefaults = userDefaults_;
    services.applicationsFolder = applicationsFolder_;
    services.mainBundle =
        std::make_shared<const Bundle>(identifier, Url::fileUrl("/opt/editor/bin/editor"));
    installPlatform(services);
  }

  void installPackages(const std::vector<std::string>& fileNames) {
    applicationsFolder_->contents.emplace();
    for (const auto& name : fileNames) {
      applicationsFolder_->contents->push_back({true, name});
    }
  }

  const std::shared_ptr<RecordingLog> log_ = std::make_shared<RecordingLog>();
  const std::shared_ptr<MemoryUserDefaults> userDefaults_ = std::make_shared<MemoryUserDefaults>();
  const std::shared_ptr<FakeApplicationsFolder> applicationsFolder_ =
      std::make_shared<FakeApplicationsFolder>();
};

}  // namespace qorix
