#include <gmock/gmock.h>

#include <qorix/MyPushAdManager.h>
#include <qorix/platform/Platform.h>

namespace qorix {
namespace {

TEST(NullPlatformTest, aHostWithoutAPlatformIsServedWithNothing) {
  const auto manager = MyPushAdManager::sharedPushAdManager();
  manager->prepareAndShowAdWithHostView(nullptr, MyPushAdFileHostModeWebServer,
                                        "https://ads.example.com/commonad.xml");
  manager->saveAsCachedPushAdWith("text");
  EXPECT_EQ(manager->fetchCachedPushAdInfo(), nullptr);
  EXPECT_TRUE(manager->pushAdOperators()->empty());
}

TEST(NullPlatformTest, membersThatAPlatformLacksAreFilledIn) {
  const auto center = std::make_shared<NotificationCenter>();
  Platform mine;
  mine.notificationCenter = center;
  installPlatform(mine);
  EXPECT_EQ(platform().notificationCenter, center);
  EXPECT_NE(platform().log, nullptr);
  EXPECT_NE(platform().standardUserDefaults, nullptr);
  EXPECT_NE(platform().mainRunLoop, nullptr);
  EXPECT_NE(platform().mainBundle, nullptr);
  EXPECT_NE(platform().libraryBundle, nullptr);
  EXPECT_NE(platform().urlSessions->createEphemeralSession({}), nullptr);
  EXPECT_TRUE(platform().applicationsFolder->directories().empty());
  EXPECT_TRUE(platform().applicationRegistry->applicationUrlsForBundleIdentifier("a").empty());
  platform().workspace->openUrl(Url::fileUrl("/"));
  EXPECT_EQ(platform().windows->createBorderlessWindow({}), nullptr);
  EXPECT_FALSE(platform().interfaceLoader->load("a", *platform().libraryBundle, {}));
  EXPECT_EQ(platform().cloudContainers->containerWithIdentifier("a"), nullptr);
}

}  // namespace
}  // namespace qorix
