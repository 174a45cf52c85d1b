// A host may act while a banner moves from one of its views to another.

#include <functional>

#include "support/gtk/GtkTest.h"
#include "support/gtk/WidgetEnd.h"

namespace qorix::test {

namespace {

class MovedBannerTest : public GtkTest {
 protected:
  // Moves a banner from one host to the other; `act` is called in the middle of it.
  void moveWhile(const std::function<void()>& act) {
    from.view()->addSubview(ad);
    const gulong handler = g_signal_connect_swapped(
        from.overlay(), "remove", G_CALLBACK(+[](const std::function<void()>* each) { (*each)(); }),
        const_cast<std::function<void()>*>(&act));
    target->addSubview(ad);
    g_signal_handler_disconnect(from.overlay(), handler);
  }

  HostWindow from{200, 100};
  HostWindow to{200, 100};
  const std::shared_ptr<View> target = to.view();
  const std::shared_ptr<PlainView> ad = makeView();
};

}  // namespace

TEST_F(MovedBannerTest, aHostMayDestroyTheBannerThatIsMoved) {
  moveWhile([this] { gtk_widget_destroy(ad->widget()); });
  EXPECT_TRUE(ad->isGone());
  EXPECT_EQ(ad->superview(), nullptr);
}

TEST_F(MovedBannerTest, aHostMayDestroyTheViewToWhichABannerIsMoved) {
  moveWhile([this] { to.destroy(); });
  EXPECT_TRUE(target->isGone());
  EXPECT_FALSE(ad->isGone());
  EXPECT_EQ(ad->superview(), nullptr);
}

TEST_F(MovedBannerTest, aHostMayTakeTheBannerThatIsMoved) {
  const auto other = makeView();
  moveWhile([&] { other->addSubview(ad); });
  EXPECT_EQ(ad->superview(), other);
}

}  // namespace qorix::test
