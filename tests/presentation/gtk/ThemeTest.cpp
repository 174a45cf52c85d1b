// The desktop's themes are the host's, not the advertisement's.

#include <array>
#include <cstdlib>
#include <utility>

#include "support/gtk/GtkTest.h"

namespace qorix::test {

namespace {

constexpr int kWidth = 500;
constexpr int kHeight = 200;
constexpr int kStripHeight = 10;
/// On a busy machine the engine at times paints a scroll bar's thumb again over itself, under any
/// theme: its round corners, 28 pixels, then look fuller. A colour of a theme changes a thousand.
constexpr int kPixelsOfThumbs = 2 * 28;

/// Leaves to the engine whatever a theme could give: the colours of texts, links, controls and
/// scroll bars. A strip at the bottom tells one painting from another.
constexpr const char* kPageWithoutColors =
    "<!DOCTYPE html><body style='margin:0;overflow:hidden'>"
    "<div id='strip' style='position:fixed;bottom:0;width:100%;height:10px'></div>"
    "Text, <a href='https://example.com'>a link</a>, <mark>a mark</mark><br>"
    "<input value='entry' size='10'> <button>button</button>"
    " <input type='checkbox' checked> <input type='radio' checked> <input type='range'><br>"
    "<progress value='0.5'></progress> <meter value='0.5'></meter>"
    " <select><option>choice</select>"
    "<div style='overflow:scroll;width:80px;height:60px'>"
    "<div style='width:200px;height:200px'></div></div>";

struct Theme {
  const char* name = "";
  bool prefersDark = false;
};

constexpr std::array kThemes{Theme{"Adwaita:dark"}, Theme{"HighContrast"},
                             Theme{"HighContrastInverse"}, Theme{"", true}};

/// Chooses a theme as its user does: for one program, or dark ones for all.
void useTheme(const Theme& theme) {
  GtkSettings* settings = gtk_settings_get_default();
  if (std::string(theme.name).empty()) {
    unsetenv("GTK_THEME");
  } else {
    setenv("GTK_THEME", theme.name, 1);
  }
  g_object_notify(G_OBJECT(settings), "gtk-theme-name");
  g_object_set(settings, "gtk-application-prefer-dark-theme", theme.prefersDark ? TRUE : FALSE,
               nullptr);
}

int differences(const Picture& one, const Picture& other) {
  int count = 0;
  for (int y = 0; y < one.height(); ++y) {
    for (int x = 0; x < one.width(); ++x) {
      count += one.at(x, y) == other.at(x, y) ? 0 : 1;
    }
  }
  return count;
}

class ThemeTest : public GtkTest {
 protected:
  ThemeTest() {
    // Others fade.
    g_object_set(gtk_settings_get_default(), "gtk-overlay-scrolling", FALSE, nullptr);
    host.show();
  }

  void show(Page& page) const {
    page.webView()->setDrawsBackground(false);
    page.showIn(host, {{0, 0}, {kWidth, kHeight}});
    page.loadAndWait(kPageWithoutColors);
  }

  /// Has a page painted once more, and returns what is above its strip then.
  Picture paintedAnew(const Page& page) {
    strip = strip == kRed ? kBlue : kRed;
    page.evaluate("document.getElementById('strip').style.background = '" +
                  std::string(strip == kRed ? "#f00" : "#00f") + "'");
    EXPECT_TRUE(waitFor([&] {
      return part(kHeight - kStripHeight, kStripHeight).countOf(strip) ==
             std::size_t{kWidth} * kStripHeight;
    })) << "the page is not painted";
    return part(0, kHeight - kStripHeight);
  }

  /// Waits until the page, painted once more, is the same: the engine paints the strip
  /// and the rest at different times, and fades some controls in.
  void expectUnchanged(const Page& page, const Picture& usual, const std::string& what) {
    int last = -1;
    ASSERT_TRUE(waitFor([&] {
      last = differences(paintedAnew(page), usual);
      return last <= kPixelsOfThumbs;
    })) << last
        << " pixels of " << what;
  }

  /// What the screen shows of the page, from a line on.
  Picture part(int fromTop, int height) const {
    const GdkRectangle place = host.overlayOnScreen();
    gdk_display_sync(gdk_display_get_default());
    const auto picture = takePicture(std::getenv("DISPLAY"),
                                     PixelBox{place.x, place.y + fromTop, place.width, height});
    return picture == nullptr ? Picture() : *picture;
  }

  HostWindow host{kWidth, kHeight};
  Pixel strip;
};

}  // namespace

TEST_F(ThemeTest, noThemeChangesAPageThatDoesNotAskForIt) {
  useTheme({"Adwaita"});
  Page page;
  show(page);
  Picture usual = paintedAnew(page);
  ASSERT_TRUE(waitFor([&] {
    const Picture previous = std::exchange(usual, paintedAnew(page));
    return differences(previous, usual) <= kPixelsOfThumbs;
  })) << "the page does not come to rest";
  ASSERT_EQ(usual.height(), kHeight - kStripHeight);
  EXPECT_GT(usual.countOf({0, 0, 0}), 0U) << "no black text";
  EXPECT_GT(usual.countOf({53, 132, 228}), 0U) << "no controls of GTK's usual colour";
  EXPECT_GT(usual.countOf(kGreen), 0U) << "the host is not seen";
  for (const Theme& theme : kThemes) {
    useTheme(theme);
    ASSERT_NO_FATAL_FAILURE(expectUnchanged(
        page, usual, std::string("a page that was there before the theme ") + theme.name));
  }
  page.interface->view->removeFromSuperview();
  for (const Theme& theme : kThemes) {
    useTheme(theme);
    Page later;
    show(later);
    ASSERT_NO_FATAL_FAILURE(expectUnchanged(
        later, usual, std::string("a page that came under the theme ") + theme.name));
    later.interface->view->removeFromSuperview();
  }
}

TEST_F(ThemeTest, aPageMayColorItsControls) {
  Page page;
  page.showIn(host, {{0, 0}, {kWidth, kHeight}});
  page.loadAndWait("<style>:root { accent-color: #f00 }</style><progress value='0.5'></progress>");
  EXPECT_TRUE(waitFor([this] { return part(0, kHeight).countOf(kRed) > 0; }));
}

}  // namespace qorix::test
