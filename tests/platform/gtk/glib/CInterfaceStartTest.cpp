#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

#include <qorix/MyPushAdManager.h>
#include <qorix/MyPushAdNotifications.h>
#include <qorix/QORIXCommonUtil.h>
#include <qorix/QORIXInfo.h>
#include <qorix/QORIXVersion.h>
#include <qorix/platform/Platform.h>
#include <qorix/qorix-gtk.h>

#include "fakes/RecordingLog.h"
#include "platform/gtk/glib/CriticalMessages.h"
#include "platform/gtk/glib/InstallOptions.h"
#include "support/TemporaryFolder.h"

namespace qorix::test {

namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;

constexpr std::array<std::pair<const char*, std::string gtk::InstallOptions::*>, 8> kProperties{{
    {"bundle-identifier", &gtk::InstallOptions::bundleIdentifier},
    {"settings-path", &gtk::InstallOptions::settingsPath},
    {"applications-directory", &gtk::InstallOptions::applicationsDirectory},
    {"default-ad-file-url", &gtk::InstallOptions::defaultAdFileUrl},
    {"default-cloud-container-identifier", &gtk::InstallOptions::defaultCloudContainerIdentifier},
    {"cloud-service-address", &gtk::InstallOptions::cloudServiceAddress},
    {"cloud-environment", &gtk::InstallOptions::cloudEnvironment},
    {"cloud-api-token", &gtk::InstallOptions::cloudApiToken},
}};

/// A host that has not installed the library yet.
class CInterfaceStartTest : public testing::Test {
 public:
  ~CInterfaceStartTest() override { g_object_unref(options_); }

 protected:
  const gtk::InstallOptions& options() const { return gtk::installOptionsOf(*options_); }

  std::string property(const char* name) const {
    gchar* text = nullptr;
    g_object_get(options_, name, &text, nullptr);
    std::string value(text);
    g_free(text);
    return value;
  }

  void setProperty(const char* name, const char* value) {
    g_object_set(options_, name, value, nullptr);
  }

  QorixInstallOptions* const options_ = qorix_install_options_new("com.example.c");
};

}  // namespace

TEST_F(CInterfaceStartTest, optionsHaveTheDefaultsOfTheirMembers) {
  EXPECT_EQ(options().bundleIdentifier, "com.example.c");
  const gtk::InstallOptions defaults{.bundleIdentifier = "com.example.c"};
  for (const auto& [name, member] : kProperties) {
    EXPECT_EQ(options().*member, defaults.*member) << name;
    EXPECT_EQ(property(name), defaults.*member) << name;
  }
}

TEST_F(CInterfaceStartTest, everyPropertyReachesItsMember) {
  guint count = 0;
  g_free(g_object_class_list_properties(G_OBJECT_GET_CLASS(options_), &count));
  EXPECT_EQ(count, kProperties.size() + 1) << "and the public keys";
  // A new member does not compile here. It needs a property; `settings` alone is for C++ only.
  const auto& [identifier, path, settings, applications, url, container, service, environment,
               token, publicKeys] = options();
  EXPECT_THAT(publicKeys, IsEmpty());
  EXPECT_EQ(settings, nullptr);
  for (const auto& [name, member] : kProperties) {
    setProperty(name, (std::string("value of ") + name).c_str());
  }
  for (const auto& [name, member] : kProperties) {
    EXPECT_EQ(options().*member, std::string("value of ") + name);
    EXPECT_EQ(property(name), std::string("value of ") + name);
    setProperty(name, nullptr);
    EXPECT_EQ(options().*member, gtk::InstallOptions().*member) << "NULL is the default";
  }
}

TEST_F(CInterfaceStartTest, thePublicKeysAreAList) {
  const char* const keys[] = {"first", "second", nullptr};
  g_object_set(options_, "document-public-keys", keys, nullptr);
  EXPECT_THAT(options().documentPublicKeys, ElementsAre("first", "second"));
  gchar** read = nullptr;
  g_object_get(options_, "document-public-keys", &read, nullptr);
  EXPECT_TRUE(g_strv_equal(read, keys));
  g_strfreev(read);
  CriticalMessages criticals;
  const char* const wrong[] = {"third", kNoUtf8, nullptr};
  EXPECT_EQ(
      criticals.during([&] { g_object_set(options_, "document-public-keys", wrong, nullptr); }), 1);
  EXPECT_THAT(options().documentPublicKeys, ElementsAre("first", "second"));
  g_object_set(options_, "document-public-keys", nullptr, nullptr);
  EXPECT_THAT(options().documentPublicKeys, IsEmpty());
}

TEST_F(CInterfaceStartTest, anOptionIsUtf8UnlessItIsAFileName) {
  CriticalMessages criticals;
  for (const auto& [name, member] : kProperties) {
    const std::string_view property = name;
    const bool isFileName = property == "settings-path" || property == "applications-directory";
    const std::string before = options().*member;
    EXPECT_EQ(criticals.during([&, name = name] { setProperty(name, kNoUtf8); }),
              isFileName ? 0 : 1)
        << name;
    EXPECT_EQ(options().*member, isFileName ? kNoUtf8 : before) << name;
  }
}

TEST_F(CInterfaceStartTest, aWrongArgumentIsRefusedOnce) {
  CriticalMessages criticals;
  for (const char* name : {static_cast<const char*>(nullptr), "", kNoUtf8}) {
    EXPECT_EQ(criticals.during([&] { EXPECT_EQ(qorix_install_options_new(name), nullptr); }), 1);
  }
  GtkWidget* label = gtk_label_new("");
  g_object_ref_sink(label);
  for (auto* wrong : {static_cast<QorixInstallOptions*>(nullptr),
                      reinterpret_cast<QorixInstallOptions*>(label)}) {
    EXPECT_EQ(criticals.during([&] { qorix_install(wrong); }), 1);
    EXPECT_EQ(criticals.during([&] { EXPECT_EQ(qorix_start(wrong), nullptr); }), 1);
  }
  g_object_unref(label);
  EXPECT_EQ(platform().mainBundle->bundleIdentifier(), std::nullopt) << "nothing is installed";
}

TEST_F(CInterfaceStartTest, optionsThatNameNoHostAreRefused) {
  setProperty("bundle-identifier", nullptr);
  CriticalMessages criticals;
  EXPECT_EQ(criticals.during([&] { qorix_install(options_); }), 1);
  EXPECT_EQ(criticals.during([&] { EXPECT_EQ(qorix_start(options_), nullptr); }), 1);
  setProperty("bundle-identifier", "com.example.c");
  EXPECT_EQ(criticals.during([&] { EXPECT_NE(qorix_start(options_), nullptr); }), 0)
      << "nothing was installed before";
  EXPECT_EQ(platform().mainBundle->bundleIdentifier(), "com.example.c");
}

TEST_F(CInterfaceStartTest, theOptionsAreInForce) {
  const TemporaryFolder folder;
  setProperty("settings-path", (folder / "settings").c_str());
  setProperty("default-ad-file-url", "https://www.example.com/c.xml");
  setProperty("default-cloud-container-identifier", "iCloud.com.example.c");
  qorix_install(options_);
  EXPECT_EQ(platform().mainBundle->bundleIdentifier(), "com.example.c");
  EXPECT_EQ(platform().defaultAdFileUrl, "https://www.example.com/c.xml");
  EXPECT_EQ(platform().defaultCloudContainerIdentifier, "iCloud.com.example.c");
  EXPECT_EQ(qorix_manager_dup_app_bundle_identifier(qorix_manager_get_default()), nullptr);
  platform().standardUserDefaults->setString("value", "key");
  platform().standardUserDefaults->synchronize();
  EXPECT_TRUE(std::filesystem::exists(folder / "settings"));
}

TEST_F(CInterfaceStartTest, aStartedManagerKnowsItsHostAndListens) {
  int heard = 0;
  g_signal_connect_swapped(qorix_manager_get_default(), "will-show",
                           G_CALLBACK(+[](int* count) { ++*count; }), &heard);
  QorixManager* manager = qorix_start(options_);
  ASSERT_EQ(manager, qorix_manager_get_default());
  gchar* identifier = qorix_manager_dup_app_bundle_identifier(manager);
  EXPECT_STREQ(identifier, "com.example.c");
  g_free(identifier);
  platform().notificationCenter->post(Notification(kPushAdWillShowNotification, nullptr));
  EXPECT_EQ(heard, 1) << "also when the manager was there before the services";
}

TEST_F(CInterfaceStartTest, aHostWithAManagerOfItsOwnGetsNone) {
  const auto own = MyPushAdManager::alloc();
  testing::internal::CaptureStderr();
  EXPECT_EQ(qorix_start(options_), nullptr);
  const std::string told = testing::internal::GetCapturedStderr();
  EXPECT_THAT(told, EndsWith("This MACRO only supports really singlton class.\n"));
  EXPECT_EQ(std::ranges::count(told, '\n'), 1);
  EXPECT_EQ(platform().mainBundle->bundleIdentifier(), "com.example.c");
}

TEST_F(CInterfaceStartTest, aSecondInstallationIsRefused) {
  qorix_start(options_);
  const auto log = std::make_shared<RecordingLog>();
  Platform services = platform();
  services.log = log;
  installPlatform(services);
  setProperty("bundle-identifier", "com.example.other");
  qorix_install(options_);
  EXPECT_THAT(log->lines(), ElementsAre("ZAM QORIX is installed already: the second installation "
                                        "is refused."));
  EXPECT_EQ(platform().mainBundle->bundleIdentifier(), "com.example.c");
}

TEST_F(CInterfaceStartTest, theLibraryDescribesItself) {
  EXPECT_EQ(qorix_version_number(), QORIXVersionNumber);
  EXPECT_EQ(qorix_version_string(), QORIXVersionString);
  gchar* info = qorix_framework_info();
  EXPECT_EQ(info, QORIXInfo::frameworkInfoString());
  g_free(info);
  gchar* time = qorix_compile_date_time();
  EXPECT_EQ(time, QORIXCommonUtil::fetchQORIXCompileDateTimeString());
  g_free(time);
}

}  // namespace qorix::test
