#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "platform/linux/SqliteUserDefaults.h"

namespace qorix {
namespace {

TEST(DefaultSettingsPathTest, isBelowTheConfigurationFolder) {
  ::setenv("HOME", "/home/someone", 1);
  ::setenv("XDG_CONFIG_HOME", "/config", 1);
  EXPECT_EQ(defaultSettingsPath("com.example.editor"), "/config/qorix/com.example.editor.sqlite");
  for (const char* noFolder : {"", "relative/config", "./config"}) {
    ::setenv("XDG_CONFIG_HOME", noFolder, 1);
    EXPECT_EQ(defaultSettingsPath("com.example.editor"),
              "/home/someone/.config/qorix/com.example.editor.sqlite");
  }
  ::unsetenv("XDG_CONFIG_HOME");
  EXPECT_EQ(defaultSettingsPath("com.example.editor"),
            "/home/someone/.config/qorix/com.example.editor.sqlite");
}

TEST(DefaultSettingsPathTest, doesNotNeedAHomeVariable) {
  ::unsetenv("XDG_CONFIG_HOME");
  ::unsetenv("HOME");
  EXPECT_TRUE(defaultSettingsPath("com.example.editor").starts_with("/"));
}

TEST(DefaultSettingsPathTest, anIdentifierCannotLeadOutOfTheFolder) {
  ::setenv("XDG_CONFIG_HOME", "/config", 1);
  EXPECT_EQ(defaultSettingsPath("../../etc/passwd"),
            "/config/qorix/%2E.%2F..%2Fetc%2Fpasswd.sqlite");
  EXPECT_EQ(defaultSettingsPath(".hidden"), "/config/qorix/%2Ehidden.sqlite");
  EXPECT_EQ(defaultSettingsPath("/"), "/config/qorix/%2F.sqlite");
  EXPECT_EQ(defaultSettingsPath(std::string("a\0b", 3)), "/config/qorix/a%00b.sqlite");
  EXPECT_EQ(defaultSettingsPath("%2F"), "/config/qorix/%252F.sqlite");
}

}  // namespace
}  // namespace qorix
