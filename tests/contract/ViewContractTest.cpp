#include <functional>
#include <memory>
#include <ostream>
#include <vector>

#include "fakes/FakeView.h"
#include "platform/gtk/WidgetView.h"
#include "support/gtk/GtkTest.h"

namespace qorix::test {
namespace {

struct ViewImplementation {
  const char* name;
  std::function<std::shared_ptr<View>()> makeView;
  std::function<std::shared_ptr<View>()> makeBoxView;

  friend void PrintTo(const ViewImplementation& implementation, std::ostream* stream) {
    *stream << implementation.name;
  }
};

template <class ViewType>
std::shared_ptr<View> makeGtkView() {
  return gtk::makeNativeView<ViewType>(gtk_overlay_new(), gtk::Ownership::viewOwnsWidget);
}

/// What every view does that is made for the library.
class ViewContractTest : public GtkTest, public testing::WithParamInterface<ViewImplementation> {
 protected:
  ViewContractTest() {
    platform()
        .notificationCenter
        ->addObserver(
            kViewFrameDidChangeNotification,
            [this](const Notification& notification) { posted.push_back(notification.object()); })
        .keep();
  }

  const std::shared_ptr<View> view = GetParam().makeView();
  const std::shared_ptr<View> other = GetParam().makeView();
  std::vector<std::shared_ptr<Object>> posted;
};

}  // namespace

TEST_P(ViewContractTest, frameIsKeptAsItWasSet) {
  EXPECT_EQ(view->frame(), Rect{});
  for (const Rect frame : {Rect{{-100.25, 50.5}, {300.75, 50}}, Rect{{1, 2}, {0, -7}}}) {
    view->setFrame(frame);
    EXPECT_EQ(view->frame(), frame);
  }
  other->addSubview(view);
  view->setFrame({{-3.5, 4}, {10, 20}});
  EXPECT_EQ(view->frame(), (Rect{{-3.5, 4}, {10, 20}}));
  view->removeFromSuperview();
  EXPECT_EQ(view->frame(), (Rect{{-3.5, 4}, {10, 20}}));
}

TEST_P(ViewContractTest, addingAndRemovingChangesTheSuperview) {
  EXPECT_EQ(view->superview(), nullptr);
  view->removeFromSuperview();
  other->addSubview(view);
  EXPECT_EQ(view->superview(), other);
  other->addSubview(view);
  EXPECT_EQ(view->superview(), other) << "adding it again changes nothing";
  view->removeFromSuperview();
  EXPECT_EQ(view->superview(), nullptr);
}

TEST_P(ViewContractTest, addingTakesTheViewFromWhereItWas) {
  const auto third = GetParam().makeView();
  other->addSubview(view);
  third->addSubview(view);
  EXPECT_EQ(view->superview(), third);
}

TEST_P(ViewContractTest, superviewKeepsItsSubviewAlive) {
  auto child = GetParam().makeView();
  const std::weak_ptr<View> weak = child;
  view->addSubview(child);
  child.reset();
  ASSERT_FALSE(weak.expired());
  weak.lock()->removeFromSuperview();
  EXPECT_TRUE(weak.expired());
}

TEST_P(ViewContractTest, newSizesArePostedByAViewThatWasToldTo) {
  view->setFrame({{0, 0}, {10, 10}});
  EXPECT_TRUE(posted.empty());
  view->setPostsFrameChangedNotifications(true);
  view->setFrame({{5, 5}, {10, 10}});
  EXPECT_TRUE(posted.empty()) << "the size is the same";
  view->setFrame({{5, 5}, {10, 11}});
  ASSERT_EQ(posted.size(), 1U);
  EXPECT_EQ(posted[0], view);
  view->setPostsFrameChangedNotifications(false);
  view->setFrame({{5, 5}, {12, 12}});
  EXPECT_EQ(posted.size(), 1U);
}

TEST_P(ViewContractTest, tagTellsABoxView) {
  EXPECT_EQ(view->tag(), -1);
  EXPECT_EQ(GetParam().makeBoxView()->tag(), 27921);
}

INSTANTIATE_TEST_SUITE_P(
    , ViewContractTest,
    testing::Values(ViewImplementation{"Fake", [] { return std::make_shared<FakeView>(); },
                                       [] { return std::make_shared<FakeBoxView>(); }},
                    ViewImplementation{"Gtk", makeGtkView<gtk::WidgetView<View>>,
                                       makeGtkView<gtk::WidgetView<MyPushAdBoxView>>}),
    [](const auto& instance) { return instance.param.name; });

}  // namespace qorix::test
