#pragma once

#include <memory>
#include <string>

#include <qorix/platform/MemoryUserDefaults.h>
#include <qorix/platform/Platform.h>

#include "fakes/FakeApplicationsFolder.h"
#include "fakes/FakeInterfaceLoader.h"
#include "fakes/FakeRunLoop.h"
#include "fakes/FakeUrlSession.h"
#include "fakes/FakeWindow.h"
#include "fakes/RecordingLog.h"

namespace qorix {

/// One fake of each service that a test may want to look into.
struct FakePlatform {
  std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>();
  std::shared_ptr<MemoryUserDefaults> userDefaults = std::make_shared<MemoryUserDefaults>();
  std::shared_ptr<FakeRunLoop> runLoop = std::make_shared<FakeRunLoop>();
  std::shared_ptr<FakeUrlSessionFactory> urlSessions = std::make_shared<FakeUrlSessionFactory>();
  std::shared_ptr<FakeApplicationsFolder> applicationsFolder =
      std::make_shared<FakeApplicationsFolder>();
  std::shared_ptr<FakeWindowFactory> windows = std::make_shared<FakeWindowFactory>();
  std::shared_ptr<FakeInterfaceLoader> interfaceLoader = std::make_shared<FakeInterfaceLoader>();
  std::shared_ptr<NotificationCenter> notificationCenter = std::make_shared<NotificationCenter>();

  /// Returns a platform of these fakes, for a host with that identifier. A test may change it
  /// before it installs it.
  Platform services(const std::string& hostIdentifier = "com.example.editor") const {
    Platform platform;
    platform.log = log;
    platform.standardUserDefaults = userDefaults;
    platform.notificationCenter = notificationCenter;
    platform.mainRunLoop = runLoop;
    platform.mainBundle =
        std::make_shared<const Bundle>(hostIdentifier, Url::fileUrl("/opt/editor/bin/editor"));
    platform.libraryBundle =
        std::make_shared<const Bundle>(std::nullopt, Url::fileUrl("/opt/editor/lib/libqorix.so"));
    platform.urlSessions = urlSessions;
    platform.applicationsFolder = applicationsFolder;
    platform.windows = windows;
    platform.interfaceLoader = interfaceLoader;
    platform.defaultAdFileUrl = "https://www.example.com/mac/ads/commonad.xml";
    platform.defaultCloudContainerIdentifier = "iCloud.com.example.ads";
    return platform;
  }
};

}  // namespace qorix
