#include <gmock/gmock.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <qorix/MyPushAdManager.h>
#include <qorix/MyPushAdNotifications.h>
#include <qorix/platform/DomNode.h>
#include <qorix/platform/MemoryUserDefaults.h>
#include <qorix/qorix-gtk.h>

#include "fakes/FakeCloudContainer.h"
#include "fakes/FakeUrlSession.h"
#include "fakes/FakeView.h"
#include "platform/gtk/glib/CriticalMessages.h"
#include "support/Documents.h"
#include "support/Records.h"
#include "support/gtk/GtkTest.h"

namespace qorix::test {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// What a handler of one of the first three signals received.
struct Heard {
  std::string signal;
  std::optional<gint64> adId;
  GtkWidget* host;
  bool isPopup;
  std::optional<Rect> frame;
  std::optional<std::string> url;
};

std::optional<std::string> textOrNone(const gchar* text) {
  return text == nullptr ? std::nullopt : std::optional<std::string>(text);
}

/// As C and other languages pass any number.
QorixFileHostMode modeOfNumber(int number) { return static_cast<QorixFileHostMode>(number); }

class SettingsThatThrow : public MemoryUserDefaults {
 public:
  std::optional<std::string> stringForKey(const std::string& /*key*/) override {
    throw std::runtime_error("no settings");
  }
  void removeObjectForKey(const std::string& /*key*/) override {
    throw std::runtime_error("no settings");
  }
};

class CInterfaceManagerTest : public GtkTest {
 public:
  ~CInterfaceManagerTest() override {
    gtk_widget_destroy(overlay_);
    g_object_unref(overlay_);
    g_object_unref(label_);
  }

 protected:
  CInterfaceManagerTest() {
    Platform services = platform();
    services.urlSessions = urlSessions_;
    services.cloudContainers = cloudContainers_;
    services.standardUserDefaults = std::make_shared<MemoryUserDefaults>();
    services.defaultAdFileUrl = "https://www.example.com/default.xml";
    services.defaultCloudContainerIdentifier = "iCloud.com.example.default";
    installPlatform(services);
    g_object_ref_sink(overlay_);
    g_object_ref_sink(label_);
  }
  static QorixManager* manager() { return qorix_manager_get_default(); }
  GtkOverlay* overlay() const { return GTK_OVERLAY(overlay_); }

  void listen() {
    for (const char* name : {"will-show", "did-close"}) {
      g_signal_connect_data(
          manager(), name, G_CALLBACK(heardShowing), new Listener{name, &heard_},
          [](gpointer listener, GClosure*) { delete static_cast<Listener*>(listener); },
          GConnectFlags{});
    }
    g_signal_connect(manager(), "open-iap", G_CALLBACK(heardPurchase), &heard_);
    g_signal_connect(manager(), "triggering-navigation", G_CALLBACK(heardElement), &elements_);
  }

  static void post(const char* name, const std::shared_ptr<Object>& object,
                   const std::optional<Dictionary>& userInfo) {
    platform().notificationCenter->post(Notification(name, object, userInfo));
  }

  Dictionary userInfo(const std::shared_ptr<View>& host, bool isPopup) const {
    return {{kPushAdInfoKey, std::shared_ptr<const MyPushAdInfo>(makeRecord())},
            {kPushAdIsPopupWindowKey, isPopup},
            {kPushAdHostViewKey, host}};
  }

  /// The hosts' views of the requests so far.
  static std::vector<std::shared_ptr<View>> askedViews() {
    std::vector<std::shared_ptr<View>> views;
    for (const auto& presenter : *MyPushAdManager::sharedPushAdManager()->pushAdOperators()) {
      views.push_back(presenter->hostView());
    }
    return views;
  }

  std::vector<std::string> fetchedUrls() const {
    return urlSessions_->sessions.empty() ? std::vector<std::string>()
                                          : urlSessions_->sessions.back()->startedUrls;
  }

  const std::shared_ptr<FakeUrlSessionFactory> urlSessions_ =
      std::make_shared<FakeUrlSessionFactory>();
  const std::shared_ptr<FakeCloudContainerFactory> cloudContainers_ =
      std::make_shared<FakeCloudContainerFactory>();
  GtkWidget* const overlay_ = gtk_overlay_new();
  GtkWidget* const label_ = gtk_label_new("");
  const std::shared_ptr<FakeView> adView_ = std::make_shared<FakeView>();
  std::vector<Heard> heard_;
  std::vector<std::optional<std::string>> elements_;

 private:
  struct Listener {
    const char* signal;
    std::vector<Heard>* heard;
  };

  static Heard arguments(const char* signal, QorixAdInfo* info, GtkWidget* host, gboolean isPopup,
                         const QorixRect* frame, const gchar* url) {
    Heard heard{signal, std::nullopt, host, isPopup != FALSE, std::nullopt, textOrNone(url)};
    if (info != nullptr) {
      heard.adId = qorix_ad_info_get_ad_id(info);
    }
    if (frame != nullptr) {
      heard.frame = Rect{{frame->x, frame->y}, {frame->width, frame->height}};
    }
    return heard;
  }

  static void heardShowing(QorixManager* /*manager*/, QorixAdInfo* info, GtkWidget* host,
                           gboolean isPopup, QorixRect* frame, gpointer data) {
    const auto* listener = static_cast<Listener*>(data);
    listener->heard->push_back(arguments(listener->signal, info, host, isPopup, frame, nullptr));
  }

  static void heardPurchase(QorixManager* /*manager*/, QorixAdInfo* info, GtkWidget* host,
                            gboolean isPopup, QorixRect* frame, const gchar* url, gpointer data) {
    static_cast<std::vector<Heard>*>(data)->push_back(
        arguments("open-iap", info, host, isPopup, frame, url));
  }

  static void heardElement(QorixManager* /*manager*/, const gchar* element, gpointer data) {
    static_cast<std::vector<std::optional<std::string>>*>(data)->push_back(textOrNone(element));
  }
};

}  // namespace

TEST_F(CInterfaceManagerTest, thereIsOneManagerHoweverItIsMade) {
  QorixManager* first = manager();
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(manager(), first);
  gpointer made = g_object_new(QORIX_TYPE_MANAGER, nullptr);
  EXPECT_EQ(made, first);
  EXPECT_EQ(G_OBJECT(first)->ref_count, 2U);
  g_object_unref(made);
  EXPECT_EQ(G_OBJECT(first)->ref_count, 1U);
}

TEST_F(CInterfaceManagerTest, aManagerThatALanguageMakesFirstIsTheOne) {
  gpointer made = g_object_new(QORIX_TYPE_MANAGER, nullptr);
  EXPECT_EQ(manager(), made);
  g_object_unref(made);
  EXPECT_EQ(G_OBJECT(manager())->ref_count, 1U);
}

TEST_F(CInterfaceManagerTest, thereIsNoneBesideTheHostsOwn) {
  const auto own = MyPushAdManager::alloc();
  EXPECT_EQ(manager(), nullptr);
  auto* made = QORIX_MANAGER(g_object_new(QORIX_TYPE_MANAGER, nullptr));
  qorix_manager_configure(made, "com.example.c");
  EXPECT_EQ(qorix_manager_dup_app_bundle_identifier(made), nullptr);
  EXPECT_EQ(own->appBundleIdentifier(), std::nullopt);
  g_object_unref(made);
}

TEST_F(CInterfaceManagerTest, signalsTellWhatNotificationsTell) {
  listen();
  adView_->setFrame({{10, 20.5}, {300, 100}});
  auto info = userInfo(gtk::viewForOverlay(overlay()), false);
  post(kPushAdWillShowNotification, adView_, info);
  post(kPushAdDidCloseNotification, adView_, info);
  info[kPushAdActionURLKey] = *Url::parse("https://example.com/buy");
  info[kPushAdIsPopupWindowKey] = true;
  post(kPushAdOpenIAPNotification, adView_, info);
  const char* names[] = {"will-show", "did-close", "open-iap"};
  ASSERT_EQ(heard_.size(), 3U);
  for (std::size_t i = 0; i < heard_.size(); ++i) {
    EXPECT_EQ(heard_[i].signal, names[i]);
    EXPECT_EQ(heard_[i].adId, 12);
    EXPECT_EQ(heard_[i].host, overlay_);
    EXPECT_EQ(heard_[i].isPopup, i == 2);
    EXPECT_EQ(heard_[i].frame, (Rect{{10, 20.5}, {300, 100}}));
    EXPECT_EQ(heard_[i].url.value_or("none"), i == 2 ? "https://example.com/buy" : "none");
  }
  EXPECT_THAT(elements_, IsEmpty());
}

TEST_F(CInterfaceManagerTest, theClickedElementIsTold) {
  listen();
  const auto element = std::make_shared<DomHtmlElement>("buy", kNoUtf8);
  post(kPushAdIsTriggeringNavigationNotification, adView_,
       Dictionary{{kPushAdActionHTMLElementKey, std::shared_ptr<DomHtmlElement>(element)},
                  {kPushAdActionHTMLElementIdNameKey, "buy"},
                  {kPushAdActionHTMLElementClassNameKey, kNoUtf8}});
  EXPECT_THAT(elements_, ElementsAre("{(idName is buy)(className is caf\xEF\xBF\xBD)}"));
  EXPECT_THAT(heard_, IsEmpty());
}

TEST_F(CInterfaceManagerTest, whatANotificationLacksIsNull) {
  listen();
  for (const char* name : {kPushAdWillShowNotification, kPushAdDidCloseNotification,
                           kPushAdOpenIAPNotification, kPushAdIsTriggeringNavigationNotification}) {
    post(name, nullptr, std::nullopt);
  }
  ASSERT_EQ(heard_.size(), 3U);
  for (const Heard& each : heard_) {
    EXPECT_EQ(each.adId, std::nullopt);
    EXPECT_EQ(each.host, nullptr);
    EXPECT_FALSE(each.isPopup);
    EXPECT_EQ(each.frame, std::nullopt);
    EXPECT_EQ(each.url, std::nullopt);
  }
  EXPECT_THAT(elements_, ElementsAre(std::nullopt));
}

TEST_F(CInterfaceManagerTest, aHostIsNullWhenItIsGoneOrWasNotOffered) {
  listen();
  const auto destroyed = gtk::viewForOverlay(overlay());
  gtk_widget_destroy(overlay_);
  post(kPushAdWillShowNotification, adView_, userInfo(destroyed, false));
  qorix_manager_show_ad_of_default_url(manager(), nullptr);
  const auto standIn = askedViews().back();
  ASSERT_NE(standIn, nullptr);
  post(kPushAdWillShowNotification, adView_, userInfo(standIn, true));
  ASSERT_EQ(heard_.size(), 2U);
  EXPECT_EQ(heard_[0].host, nullptr);
  EXPECT_EQ(heard_[1].host, nullptr);
}

TEST_F(CInterfaceManagerTest, aSignalKeepsNothingAndADisconnectedHandlerHearsNoMore) {
  int heard = 0;
  const gulong handler = g_signal_connect_swapped(
      manager(), "will-show", G_CALLBACK(+[](int* count) { ++*count; }), &heard);
  auto record = makeRecord();
  const std::weak_ptr<const MyPushAdInfo> watched = record;
  post(kPushAdWillShowNotification, adView_,
       Dictionary{{kPushAdInfoKey, std::shared_ptr<const MyPushAdInfo>(std::move(record))}});
  EXPECT_EQ(heard, 1);
  EXPECT_TRUE(watched.expired());
  g_signal_handler_disconnect(manager(), handler);
  post(kPushAdWillShowNotification, adView_, std::nullopt);
  EXPECT_EQ(heard, 1);
}

TEST_F(CInterfaceManagerTest, theHostConfiguresIt) {
  EXPECT_EQ(qorix_manager_dup_app_bundle_identifier(manager()), nullptr);
  for (const char* name : {"com.example.c", static_cast<const char*>(nullptr)}) {
    qorix_manager_configure(manager(), name);
    gchar* identifier = qorix_manager_dup_app_bundle_identifier(manager());
    EXPECT_STREQ(identifier, name == nullptr ? "com.example.host" : name);
    g_free(identifier);
  }
}

TEST_F(CInterfaceManagerTest, aRequestNamesTheDocument) {
  qorix_manager_show_ad(manager(), overlay(), QORIX_FILE_HOST_MODE_WEB_SERVER,
                        "https://www.example.com/a.xml");
  EXPECT_THAT(askedViews(), ElementsAre(gtk::viewForOverlay(overlay())));
  EXPECT_THAT(fetchedUrls(), ElementsAre("https://www.example.com/a.xml"));
}

TEST_F(CInterfaceManagerTest, aRequestNamesTheContainer) {
  qorix_manager_show_ad(manager(), overlay(), QORIX_FILE_HOST_MODE_CLOUD_KIT,
                        "iCloud.com.example.a");
  EXPECT_THAT(askedViews(), ElementsAre(gtk::viewForOverlay(overlay())));
  EXPECT_THAT(cloudContainers_->asked, ElementsAre("iCloud.com.example.a"));
}

TEST_F(CInterfaceManagerTest, aRequestWithoutAnAddressFetchesNothing) {
  qorix_manager_show_ad(manager(), nullptr, QORIX_FILE_HOST_MODE_WEB_SERVER, nullptr);
  EXPECT_EQ(askedViews().size(), 1U);
  EXPECT_THAT(fetchedUrls(), IsEmpty());
}

TEST_F(CInterfaceManagerTest, aRequestUsesTheInstalledUrl) {
  qorix_manager_show_ad_of_default_url(manager(), overlay());
  EXPECT_THAT(askedViews(), ElementsAre(gtk::viewForOverlay(overlay())));
  EXPECT_THAT(fetchedUrls(), ElementsAre("https://www.example.com/default.xml"));
}

TEST_F(CInterfaceManagerTest, aRequestUsesTheInstalledContainer) {
  qorix_manager_show_ad_of_default_cloud_container(manager(), overlay());
  EXPECT_THAT(askedViews(), ElementsAre(gtk::viewForOverlay(overlay())));
  EXPECT_THAT(cloudContainers_->asked, ElementsAre("iCloud.com.example.default"));
}

TEST_F(CInterfaceManagerTest, theCachedDocumentIsReadAndForgotten) {
  EXPECT_EQ(qorix_manager_fetch_cached_ad_info(manager()), nullptr);
  MyPushAdManager::sharedPushAdManager()->saveAsCachedPushAdWith(makeDocument({.adid = "21"}));
  QorixAdInfo* cached = qorix_manager_fetch_cached_ad_info(manager());
  ASSERT_NE(cached, nullptr);
  EXPECT_EQ(qorix_ad_info_get_ad_id(cached), 21);
  qorix_ad_info_unref(cached);
  qorix_manager_clear_cached_ad_contents(manager());
  EXPECT_EQ(qorix_manager_fetch_cached_ad_info(manager()), nullptr);
}

TEST_F(CInterfaceManagerTest, noExceptionPasses) {
  Platform services = platform();
  services.standardUserDefaults = std::make_shared<SettingsThatThrow>();
  installPlatform(services);
  qorix_manager_clear_cached_ad_contents(manager());
  EXPECT_EQ(qorix_manager_fetch_cached_ad_info(manager()), nullptr);
  qorix_manager_show_ad(manager(), overlay(), QORIX_FILE_HOST_MODE_WEB_SERVER, nullptr);
  qorix_manager_show_ad_of_default_url(manager(), overlay());
  qorix_manager_show_ad_of_default_cloud_container(manager(), overlay());
  int stopped = 0;
  for (const auto& line : log->lines()) {
    stopped += line == "ZAM An exception was stopped: no settings" ? 1 : 0;
  }
  EXPECT_EQ(stopped, 5);
}

TEST_F(CInterfaceManagerTest, aWrongArgumentIsRefusedOnce) {
  auto* const noManager = reinterpret_cast<QorixManager*>(label_);
  auto* const noOverlay = reinterpret_cast<GtkOverlay*>(label_);
  constexpr auto kMode = QORIX_FILE_HOST_MODE_WEB_SERVER;
  const std::vector<std::function<void()>> calls{
      [] { qorix_manager_configure(nullptr, "a"); },
      [&] { qorix_manager_configure(noManager, "a"); },
      [] { qorix_manager_configure(manager(), kNoUtf8); },
      [] { EXPECT_EQ(qorix_manager_dup_app_bundle_identifier(nullptr), nullptr); },
      [] { qorix_manager_show_ad(nullptr, nullptr, kMode, ""); },
      [&] { qorix_manager_show_ad(manager(), noOverlay, kMode, ""); },
      [] { qorix_manager_show_ad(manager(), nullptr, kMode, kNoUtf8); },
      [] { qorix_manager_show_ad(manager(), nullptr, modeOfNumber(2), ""); },
      [] { qorix_manager_show_ad_of_default_url(nullptr, nullptr); },
      [&] { qorix_manager_show_ad_of_default_url(manager(), noOverlay); },
      [] { qorix_manager_show_ad_of_default_cloud_container(nullptr, nullptr); },
      [&] { qorix_manager_show_ad_of_default_cloud_container(manager(), noOverlay); },
      [] { qorix_manager_clear_cached_ad_contents(nullptr); },
      [] { EXPECT_EQ(qorix_manager_fetch_cached_ad_info(nullptr), nullptr); },
  };
  CriticalMessages criticals;
  for (std::size_t i = 0; i < calls.size(); ++i) {
    EXPECT_EQ(criticals.during(calls[i]), 1) << "call " << i;
  }
  EXPECT_THAT(askedViews(), IsEmpty());
}

TEST_F(CInterfaceManagerTest, aWrongRequestDoesNotUseUpTheFirst) {
  CriticalMessages criticals;
  EXPECT_EQ(
      criticals.during([] { qorix_manager_show_ad(manager(), nullptr, modeOfNumber(2), "a"); }), 1);
  qorix_manager_show_ad(manager(), overlay(), QORIX_FILE_HOST_MODE_WEB_SERVER,
                        "https://www.example.com/a.xml");
  EXPECT_THAT(fetchedUrls(), ElementsAre("https://www.example.com/a.xml"));
}

TEST_F(CInterfaceManagerTest, anAddressThatIsNoneUsesUpTheFirstRequest) {
  qorix_manager_show_ad(manager(), overlay(), QORIX_FILE_HOST_MODE_WEB_SERVER, "no address");
  qorix_manager_show_ad(manager(), overlay(), QORIX_FILE_HOST_MODE_WEB_SERVER,
                        "https://www.example.com/a.xml");
  EXPECT_EQ(askedViews().size(), 2U);
  EXPECT_THAT(fetchedUrls(), IsEmpty());
}

TEST_F(CInterfaceManagerTest, anOverlayThatIsBeingDestroyedIsRefused) {
  CriticalMessages criticals;
  g_signal_connect(overlay_, "destroy", G_CALLBACK(+[](GtkWidget* widget) {
                     qorix_manager_show_ad_of_default_url(manager(), GTK_OVERLAY(widget));
                   }),
                   nullptr);
  EXPECT_EQ(criticals.during([&] { gtk_widget_destroy(overlay_); }), 1);
  EXPECT_THAT(askedViews(), IsEmpty());
}

}  // namespace qorix::test
