#include <gmock/gmock.h>

#include <map>
#include <memory>
#include <string>

#include <qorix/MyPushAdManager.h>
#include <qorix/platform/MemoryUserDefaults.h>

#include "docs/Guide.h"
#include "fakes/FakePlatform.h"
#include "support/Documents.h"

namespace qorix::test {
namespace {

/// Notes what is written.
class NotedSettings : public MemoryUserDefaults {
 public:
  void setString(const std::string& value, const std::string& key) override {
    written[key] = "text";
    MemoryUserDefaults::setString(value, key);
  }
  void setStringArray(const std::vector<std::string>& value, const std::string& key) override {
    written[key] = "list";
    MemoryUserDefaults::setStringArray(value, key);
  }
  void setInteger(std::int64_t value, const std::string& key) override {
    written[key] = "integer";
    MemoryUserDefaults::setInteger(value, key);
  }

  std::map<std::string, std::string> written;
};

TEST(HostGuideSettingsTest, whatAShowingStoresIsInTheGuideWithItsType) {
  FakePlatform fakes;
  const auto settings = std::make_shared<NotedSettings>();
  auto services = fakes.services();
  services.standardUserDefaults = settings;
  installPlatform(services);
  const auto manager = MyPushAdManager::sharedPushAdManager();
  manager->configureWithAppBundle(platform().mainBundle);
  manager->prepareAndShowAdWithHostView(std::make_shared<FakeView>(), MyPushAdFileHostModeWebServer,
                                        "https://example.com/");
  fakes.urlSessions->sessions.at(0)->deliver(makeDocument({}));
  fakes.urlSessions->sessions.at(0)->complete();
  fakes.runLoop->runUntilIdle();

  std::map<std::string, std::string> inGuide;
  for (const auto& row : Guide().table("What is stored")) {
    inGuide[codeIn(row.at(0))] = row.at(1);
  }
  EXPECT_EQ(settings->written, inGuide);

  manager->clearCachedAdContents();
  EXPECT_EQ(settings->stringForKey("ZAMPushAdCachedAdContentsKey"), std::nullopt);
}

}  // namespace
}  // namespace qorix::test
