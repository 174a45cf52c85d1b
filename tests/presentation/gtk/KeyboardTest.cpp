// A user without a pointer: where the keyboard goes, and where an advertisement may not take it.

#include <gmock/gmock.h>

#include <qorix/MyPushAdNotifications.h>
#include <qorix/MyPushAdOperator.h>
#include <qorix/MyPushAdUtil.h>

#include "docs/Guide.h"
#include "fakes/FakeWorkspace.h"
#include "platform/gtk/WidgetView.h"
#include "support/Records.h"
#include "support/gtk/GtkTest.h"

namespace qorix::test {

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

/// A window of a host: an entry above the view for banners and another one below it.
class EntryHost {
 public:
  EntryHost() {
    GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    gtk_container_add(GTK_CONTAINER(overlay), newColoredArea(kGreen, 400, 200));
    for (GtkWidget* each : {above, overlay, below}) {
      gtk_container_add(GTK_CONTAINER(box), each);
    }
    gtk_container_add(GTK_CONTAINER(window), box);
    g_signal_connect_after(window, "key-press-event", G_CALLBACK(onKeyPress), this);
  }
  ~EntryHost() { gtk_widget_destroy(window); }
  EntryHost(const EntryHost&) = delete;
  EntryHost& operator=(const EntryHost&) = delete;

  void show() const {
    gtk_widget_show_all(window);
    EXPECT_TRUE(waitFor([this] { return isActive(); })) << "the host's window is not active";
  }

  bool isActive() const { return gtk_window_is_active(GTK_WINDOW(window)) != FALSE; }
  GtkWidget* focus() const { return gtk_window_get_focus(GTK_WINDOW(window)); }
  std::shared_ptr<View> view() const { return gtk::viewForOverlay(GTK_OVERLAY(overlay)); }

  GtkWidget* const window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  GtkWidget* const above = gtk_entry_new();
  GtkWidget* const overlay = gtk_overlay_new();
  GtkWidget* const below = gtk_entry_new();
  std::vector<guint> keys;  // that nobody in the window used

 private:
  static gboolean onKeyPress(GtkWidget* /*window*/, GdkEvent* event, gpointer host) {
    static_cast<EntryHost*>(host)->keys.push_back(event->key.keyval);
    return FALSE;
  }
};

void press(const std::string& key) { run({"xdotool", "key", key}); }

std::string link(const std::string& id, const std::string& attributes = "") {
  return "<a id='" + id + "' href='https://example.com/" + id + "' " + attributes + ">" + id +
         "</a> ";
}

class KeyboardTest : public GtkTest {
 protected:
  KeyboardTest() {
    Platform services = platform();
    services.workspace = workspace;
    installPlatform(services);
    for (const char* name : {kPushAdWillShowNotification, kPushAdDidCloseNotification,
                             kPushAdOpenIAPNotification, kWindowWillCloseNotification}) {
      observe(name, [this](const Notification& each) {
        const bool isVisible = presenter != nullptr && presenter->popupAdWindow() != nullptr &&
                               presenter->popupAdWindow()->isVisible();
        events.push_back(each.name() + (isVisible ? ", visible" : ", hidden"));
      });
    }
    observe(kPushAdIsTriggeringNavigationNotification, [this](const Notification& each) {
      announced.push_back(
          MyPushAdUtil::fetchHTMLElementDescriptionForNotification(&each).value_or("?"));
    });
  }

  static void observe(const char* name, NotificationCenter::Handler observer) {
    platform().notificationCenter->addObserver(name, std::move(observer)).keep();
  }

  /// Shows the page as a banner of the host, or as the pop-up, and waits until it has loaded.
  void show(RecordOf values, const std::string& page) {
    values.version = "";  // due every time
    const auto record = makeRecord(values);
    record->setTitleDict(LocalizedTexts{{"default", "Pop-up"}});
    record->setHtmlContentsDict(LocalizedTexts{
        {"default", "<!DOCTYPE html><body style='margin:0;background:#f00'>" + page +
                        "<script>addEventListener('load', () => { ready = true; })</script>"}});
    presenter = MyPushAdOperator::createInstanceWithHostView(host.view());
    presenter->processShowAdIfNeededWithPushAdInfo(record);
    ASSERT_TRUE(waitFor([this] { return evaluate("typeof ready") == "boolean"; }));
  }
  void showBanner(const std::string& page) {
    show({.embed = 4, .width = 300, .height = 100}, page);
  }
  void showPopup(const std::string& page) {
    show({.embed = 0, .width = 300, .height = 100}, page);
    ASSERT_TRUE(waitFor([this] { return gtk_window_is_active(popup()) != FALSE; }));
  }

  std::string evaluate(const std::string& script) const {
    return presenter->pushAdViewController()
        ->legacyWebView()
        ->stringByEvaluatingJavaScriptFromString(script);
  }

  GtkWindow* popup() const {
    const auto content = presenter->popupAdWindow()->contentView();
    return GTK_WINDOW(gtk_widget_get_toplevel(dynamic_cast<gtk::NativeView&>(*content).widget()));
  }

  GtkWidget* webView() const {
    const auto view = presenter->pushAdViewController()->legacyWebView();
    return dynamic_cast<gtk::NativeView&>(*view).widget();
  }

  /// What has the keyboard: a widget of the host, or an element of the page.
  std::string focus() const {
    GtkWidget* widget = host.focus();
    if (gtk_window_is_active(GTK_WINDOW(host.window)) == FALSE || widget == webView()) {
      return evaluate(
          "!document.hasFocus() ? 'nobody' : (document.activeElement.contentDocument || document)"
          ".activeElement.id || 'page'");
    }
    return widget == host.above ? "above" : widget == host.below ? "below" : "nothing";
  }

  /// Whether that is where the keyboard is once the page has done with all keys before.
  bool waitForFocus(const std::string& expected) const {
    const bool isThere = waitFor([&] { return focus() == expected; });
    evaluate("1");
    return isThere && focus() == expected;
  }

  /// Types in the host, and expects the text in one of its entries.
  static void expectTyped(GtkWidget* entry, const std::string& typed, const std::string& whole,
                          const std::string& when = "") {
    run({"xdotool", "type", typed});
    EXPECT_TRUE(waitFor([&] { return gtk_entry_get_text(GTK_ENTRY(entry)) == whole; }))
        << gtk_entry_get_text(GTK_ENTRY(entry)) << " instead of " << whole << ' ' << when;
  }

  void clickPage(int x, int y) const {
    int left = 0;
    int top = 0;
    gdk_window_get_origin(gtk_widget_get_window(webView()), &left, &top);
    run({"xdotool", "mousemove", std::to_string(left + x), std::to_string(top + y), "click", "1"});
  }

  EntryHost host;
  std::shared_ptr<FakeWorkspace> workspace = std::make_shared<FakeWorkspace>();
  std::shared_ptr<MyPushAdOperator> presenter;
  std::vector<std::string> events;
  std::vector<std::string> announced;
};

}  // namespace

TEST_F(KeyboardTest, tabLeadsThroughABannersLinksToTheHostsNextWidget) {
  host.show();
  gtk_widget_grab_focus(host.above);
  showBanner(link("a") + link("b"));
  for (int round = 0; round < 2; ++round) {
    for (const char* next : {"page", "a", "b", "below"}) {
      press("Tab");
      ASSERT_TRUE(waitForFocus(next))
          << "expected " << next << ", seen " << focus() << " in round " << round;
    }
    for (const char* next : {"page", "b", "a", "above"}) {
      press("shift+Tab");
      ASSERT_TRUE(waitForFocus(next))
          << "expected " << next << ", seen " << focus() << " in round " << round;
    }
  }
}

TEST_F(KeyboardTest, tabLeadsThroughInnerFramesAsWell) {
  host.show();
  gtk_widget_grab_focus(host.above);
  showBanner(link("a") + "<iframe id='frame' height='40' srcdoc=\"" + link("b") + "\"></iframe>");
  for (const char* next : {"page", "a", "b", "below"}) {
    press("Tab");
    ASSERT_TRUE(waitForFocus(next)) << "expected " << next << ", seen " << focus();
  }
  for (const char* next : {"page", "b", "a", "above"}) {
    press("shift+Tab");
    ASSERT_TRUE(waitForFocus(next)) << "expected " << next << ", seen " << focus();
  }
}

TEST_F(KeyboardTest, enterOnALinkIsTheUsersClick) {
  host.show();
  gtk_widget_grab_focus(host.above);
  showBanner(link("a", "class='zamopenout'") + link("b", "class='zamopeniap'"));
  press("Tab");
  press("Tab");
  ASSERT_TRUE(waitForFocus("a"));
  // A script alone could not open so many.
  constexpr std::size_t kTimes = 7;
  for (std::size_t times = 1; times <= kTimes; ++times) {
    press("Return");
    ASSERT_TRUE(waitFor([&] { return announced.size() == times; }));
  }
  EXPECT_EQ(workspace->opened.size(), kTimes);
  EXPECT_THAT(workspace->opened, Contains("https://example.com/a"));
  EXPECT_EQ(announced.back(), "{(idName is a)(className is zamopenout)}");
  press("Tab");
  ASSERT_TRUE(waitForFocus("b"));
  press("Return");
  ASSERT_TRUE(waitFor([&] { return events.size() == 2 && announced.size() > kTimes; }));
  EXPECT_EQ(events.back(), std::string(kPushAdOpenIAPNotification) + ", hidden");
  EXPECT_EQ(announced.back(), "{(idName is b)(className is zamopeniap)}");
}

TEST_F(KeyboardTest, thePopupsLinksAreReachedAndFollowed) {
  host.show();
  showPopup(link("a", "class='zamopenout'") + link("b", "class='zamopenout'"));
  for (const char* next : {"a", "b"}) {
    press("Tab");
    ASSERT_TRUE(waitForFocus(next)) << "expected " << next << ", seen " << focus();
    press("Return");
  }
  ASSERT_TRUE(waitFor([&] { return announced.size() == 2; }));
  EXPECT_THAT(workspace->opened, ElementsAre("https://example.com/a", "https://example.com/b"));
  press("shift+Tab");
  EXPECT_TRUE(waitForFocus("a")) << focus();
}

TEST_F(KeyboardTest, escapeClosesThePopupAsItsTitleBarDoes) {
  host.show();
  const auto closeBy = [this](const std::vector<std::string>& command) {
    events.clear();
    showPopup(link("a"));
    run(command);
    EXPECT_TRUE(waitFor([&] { return events.size() == 3; })) << events.size();
    EXPECT_FALSE(presenter->popupAdWindow()->isVisible());
    serveLoop();
    auto seen = events;
    presenter = nullptr;
    return seen;
  };
  const auto byTitleBar = closeBy({"wmctrl", "-F", "-c", "Pop-up"});
  EXPECT_THAT(byTitleBar, ElementsAre(std::string(kPushAdWillShowNotification) + ", visible",
                                      std::string(kWindowWillCloseNotification) + ", visible",
                                      std::string(kPushAdDidCloseNotification) + ", hidden"));
  EXPECT_EQ(closeBy({"xdotool", "key", "Escape"}), byTitleBar);
}

TEST_F(KeyboardTest, escapeWithAModifierClosesNothing) {
  host.show();
  showPopup(link("a"));
  press("shift+Escape");
  press("Tab");
  ASSERT_TRUE(waitForFocus("a"));
  EXPECT_TRUE(presenter->popupAdWindow()->isVisible());
}

TEST_F(KeyboardTest, aPageMayUseEscapeItself) {
  host.show();
  showPopup(
      "<script>var used = 0; addEventListener('keydown', (event) => {"
      " if (event.key === 'Escape' && !used) { event.preventDefault(); ++used; } });</script>");
  press("Escape");
  ASSERT_TRUE(waitFor([&] { return evaluate("used") == "1"; }));
  EXPECT_TRUE(presenter->popupAdWindow()->isVisible());
  press("Escape");
  EXPECT_TRUE(waitFor([&] { return !presenter->popupAdWindow()->isVisible(); }));
}

TEST_F(KeyboardTest, escapeClosesAPopupWhosePageIsGone) {
  host.show();
  showPopup(link("a"));
  presenter->pushAdViewController()->endPage();
  ASSERT_TRUE(waitFor([&] { return evaluate("typeof ready") != "boolean"; }));
  press("Escape");
  EXPECT_TRUE(waitFor([&] { return !presenter->popupAdWindow()->isVisible(); }));
}

TEST_F(KeyboardTest, escapeInABannerIsTheHosts) {
  host.show();
  gtk_widget_grab_focus(host.above);
  showBanner(link("a"));
  press("Tab");
  press("Tab");
  ASSERT_TRUE(waitForFocus("a"));
  host.keys.clear();
  press("Escape");
  EXPECT_TRUE(waitFor([&] { return !host.keys.empty(); }));
  EXPECT_THAT(host.keys, ElementsAre(static_cast<guint>(GDK_KEY_Escape)));
  EXPECT_TRUE(waitForFocus("a"));
  EXPECT_THAT(events, ElementsAre(std::string(kPushAdWillShowNotification) + ", hidden"));
}

TEST_F(KeyboardTest, afterThePopupsEscapeTheKeyboardIsWhereItWas) {
  host.show();
  gtk_widget_grab_focus(host.below);
  expectTyped(host.below, "ab", "ab");
  showPopup(link("a"));
  press("Escape");
  ASSERT_TRUE(waitFor([&] { return host.isActive(); }));
  expectTyped(host.below, "c", "abc");
}

TEST_F(KeyboardTest, afterThePopupsTitleBarTheKeyboardIsWhereItWas) {
  host.show();
  gtk_widget_grab_focus(host.below);
  expectTyped(host.below, "ab", "ab");
  showPopup(link("a"));
  run({"wmctrl", "-F", "-c", "Pop-up"});
  ASSERT_TRUE(waitFor([&] { return host.isActive(); }));
  expectTyped(host.below, "c", "abc");
}

TEST_F(KeyboardTest, aBannerNeverTakesTheKeyboard) {
  constexpr const char* kGreedyPage =
      "<input id='in' autofocus><iframe id='frame' width='100' height='20' srcdoc='<input "
      "autofocus>'></iframe>"
      "<script>var tries = 0; const grab = () => { ++tries; window.focus(); "
      "document.getElementById('in').focus(); document.getElementById('in').select();"
      " frames[0].focus(); frames[0].document.querySelector('input').focus(); window.focus(); };"
      "addEventListener('load', () => { grab(); setInterval(grab, 5); });"
      "var clicks = 0; addEventListener('click', () => { ++clicks; });</script>";
  host.show();
  gtk_widget_grab_focus(host.above);
  showBanner(kGreedyPage);
  const auto hasTriedAgain = [this] {
    const int before = std::stoi("0" + evaluate("tries"));
    return waitFor([&] { return std::stoi("0" + evaluate("tries")) > before + 3; });
  };
  ASSERT_TRUE(hasTriedAgain());
  expectTyped(host.above, "a", "a", "when the banner is shown");
  gtk_window_resize(GTK_WINDOW(host.window), 640, 480);
  ASSERT_TRUE(waitFor([&] { return gtk_widget_get_allocated_width(host.overlay) == 640; }));
  expectTyped(host.above, "b", "ab", "when it is laid out again");
  EXPECT_EQ(host.focus(), host.above);

  clickPage(150, 70);  // now the page has had the user's attention
  ASSERT_TRUE(waitFor([&] { return evaluate("clicks") == "1"; }));
  EXPECT_EQ(host.focus(), webView());
  gtk_entry_grab_focus_without_selecting(GTK_ENTRY(host.above));
  ASSERT_TRUE(hasTriedAgain());
  expectTyped(host.above, "c", "abc", "after a click");
  EXPECT_EQ(evaluate("document.getElementById('in').value"), "");

  presenter->pushAdViewController()->endPage();
  ASSERT_TRUE(waitFor([&] { return gtk_widget_get_mapped(webView()) == FALSE; }));
  expectTyped(host.above, "d", "abcd", "when it is hidden");
}

TEST_F(KeyboardTest, aWindowThatAppearsGivesTheKeyboardToItsHost) {
  gtk_widget_set_can_focus(host.above, FALSE);
  showBanner(link("a"));
  host.show();
  EXPECT_EQ(host.focus(), host.below);
  expectTyped(host.below, "ab", "ab");
}

TEST_F(KeyboardTest, theUsersClickTakesTheKeyboardIntoABanner) {
  host.show();
  gtk_widget_grab_focus(host.above);
  showBanner("<input id='in' style='width:300px;height:100px'>");
  clickPage(150, 50);
  ASSERT_TRUE(waitForFocus("in"));
  run({"xdotool", "type", "ab"});
  EXPECT_TRUE(waitFor([&] { return evaluate("document.getElementById('in').value") == "ab"; }));
  EXPECT_STREQ(gtk_entry_get_text(GTK_ENTRY(host.above)), "");
}

TEST_F(KeyboardTest, aClosedBannerGivesTheKeyboardBack) {
  host.show();
  gtk_widget_grab_focus(host.below);
  expectTyped(host.below, "ab", "ab");
  showBanner(link("cocoa_close_web"));
  press("shift+Tab");
  press("shift+Tab");
  ASSERT_TRUE(waitForFocus("cocoa_close_web"));
  press("Return");
  ASSERT_TRUE(waitFor([&] { return events.size() == 2; }));
  EXPECT_EQ(events.back(), std::string(kPushAdDidCloseNotification) + ", hidden");
  expectTyped(host.below, "c", "abc");
  EXPECT_EQ(host.focus(), host.below);
}

TEST_F(KeyboardTest, theGuidesCloseControlWorksByPointerAndByKeys) {
  host.show();
  gtk_widget_grab_focus(host.below);
  const std::string control = Guide().block("close-control");
  showBanner(control);
  clickPage(10, 10);
  ASSERT_TRUE(waitFor([&] { return events.size() == 2; }));
  EXPECT_EQ(events.back(), std::string(kPushAdDidCloseNotification) + ", hidden");
  ASSERT_TRUE(waitForFocus("below"));
  showBanner(control);
  press("shift+Tab");
  press("shift+Tab");
  ASSERT_TRUE(waitForFocus("cocoa_close_web"));
  press("Return");
  ASSERT_TRUE(waitFor([&] { return events.size() == 4; }));
  EXPECT_EQ(events.back(), std::string(kPushAdDidCloseNotification) + ", hidden");
}

TEST_F(KeyboardTest, aBannerWhosePageEndsGivesTheKeyboardBack) {
  host.show();
  gtk_widget_grab_focus(host.below);
  showBanner(link("a"));
  press("shift+Tab");
  ASSERT_TRUE(waitForFocus("page"));
  presenter->pushAdViewController()->endPage();
  ASSERT_TRUE(waitFor([&] { return gtk_widget_get_mapped(webView()) == FALSE; }));
  EXPECT_EQ(host.focus(), host.below);
}

TEST_F(KeyboardTest, theKeyboardIsGivenToNoWidgetThatIsGone) {
  host.show();
  gtk_widget_grab_focus(host.below);
  showBanner(link("cocoa_close_web"));
  press("shift+Tab");
  press("shift+Tab");
  ASSERT_TRUE(waitForFocus("cocoa_close_web"));
  gtk_widget_hide(host.below);
  press("Return");
  ASSERT_TRUE(waitFor([&] { return events.size() == 2; }));
  EXPECT_EQ(host.focus(), nullptr);
}

}  // namespace qorix::test
