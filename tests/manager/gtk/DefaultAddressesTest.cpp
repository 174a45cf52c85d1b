// Where the document is when a request names no address: what the host installs, else nowhere.

#include <qorix/platform/MemoryUserDefaults.h>

#include "support/gtk/GtkTest.h"

namespace qorix::test {

namespace {

void installWith(const std::string& url, const std::string& container) {
  gtk::install({.bundleIdentifier = "com.example.host",
                .settings = std::make_shared<MemoryUserDefaults>(),
                .defaultAdFileUrl = url,
                .defaultCloudContainerIdentifier = container});
}

}  // namespace

TEST(DefaultAddressesTest, areTheHosts) {
  installWith("https://ads.example.org/mac/ads/commonad.xml", "iCloud.org.example.ads");
  EXPECT_EQ(platform().defaultAdFileUrl, "https://ads.example.org/mac/ads/commonad.xml");
  EXPECT_EQ(platform().defaultCloudContainerIdentifier, "iCloud.org.example.ads");
}

TEST(DefaultAddressesTest, areNoneWhereTheHostNamesNone) {
  installWith("", "");
  EXPECT_EQ(platform().defaultAdFileUrl, "");
  EXPECT_EQ(platform().defaultCloudContainerIdentifier, "");
}

TEST(DefaultAddressesTest, areNamedEachForItself) {
  installWith("", "iCloud.org.example.ads");
  EXPECT_EQ(platform().defaultAdFileUrl, "");
  EXPECT_EQ(platform().defaultCloudContainerIdentifier, "iCloud.org.example.ads");
}

}  // namespace qorix::test
