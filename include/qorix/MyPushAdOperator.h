#pragma once

// Machinery: public for those who extend it.

#include <memory>
#include <optional>
#include <utility>

#include <qorix/Export.h>
#include <qorix/FactoryKey.h>
#include <qorix/MyPushAdInfo.h>
#include <qorix/MyPushAdViewController.h>
#include <qorix/platform/NotificationCenter.h>
#include <qorix/platform/Value.h>
#include <qorix/platform/View.h>
#include <qorix/platform/Window.h>

namespace qorix {

/// Presents the advertisement for one host view: decides once whether it is due, shows it, places
/// it and reports what becomes of it. Main thread only.
class QORIX_EXPORT MyPushAdOperator : public MyPushAdViewControllerDelegate,
                                      public std::enable_shared_from_this<MyPushAdOperator> {
 public:
  /// A new presenter for that view (null allowed), allocated as a `Self`. Turns on the view's
  /// frame-change notifications.
  template <class Self = MyPushAdOperator>
  static std::shared_ptr<Self> createInstanceWithHostView(const std::shared_ptr<View>& hostView) {
    if (hostView != nullptr) {
      hostView->setPostsFrameChangedNotifications(true);
    }
    auto presenter = std::make_shared<Self>(FactoryKey<MyPushAdOperator>());
    presenter->setHostView(hostView);
    return presenter;
  }

  /// For the factory: a presenter is always shared.
  explicit MyPushAdOperator(const FactoryKey<MyPushAdOperator>& key);
  MyPushAdOperator(const MyPushAdOperator&) = delete;
  MyPushAdOperator& operator=(const MyPushAdOperator&) = delete;
  ~MyPushAdOperator() override;

  /// Decides whether `info` is due, counts the showing and prepares it. Only the first record is
  /// decided; later calls have no effect. Null logs and leaves the decision open.
  void processShowAdIfNeededWithPushAdInfo(const std::shared_ptr<const MyPushAdInfo>& info);

  /// Makes the view controller and the pop-up window as needed and schedules `showAd`.
  void prepareToShowAd();

  /// Brings the advertisement on screen and loads its page.
  void showAd();

  /// Whether the advertisement belongs into the host view; also true after the banner was closed.
  bool isAdShownAsBanner() const;

  /// Places the banner in the host view or the pop-up window on its screen.
  void relayoutPushAdFrame();

  // Reactions to the host's views and windows.

  /// Lays the advertisement out anew if the notification is about this presenter's host view.
  void handleViewFrameDidChangeNotification(const Notification& notification);
  /// Reports that the pop-up was closed, if it is this presenter's advertisement that it shows.
  void handleWindowWillCloseNotification(const Notification& notification);

  // MyPushAdViewControllerDelegate.
  void pushAdViewControllerCloseButtonDidClick(
      const std::shared_ptr<MyPushAdViewController>& controller) override;
  void pushAdViewControllerOpenIAPButtonDidClickWithURL(
      const std::shared_ptr<MyPushAdViewController>& controller,
      const std::optional<Url>& url) override;

  /// @{
  /// Posts one of the notifications to the host, later and in the order of the calls. Logs one line
  /// if there is no view to be its object, and posts all the same. `url` is that of the purchase;
  /// if it is absent, the notification has none.
  void postPushAdWillShowNotification();
  void postPushAdDidCloseNotification();
  void postPushAdOpenIAPNotificationWithURL(const std::optional<Url>& url);
  /// @}

  /// The user info of those notifications. Absent without a record.
  std::optional<Dictionary> composeNotificationUserInfo() const;

  /// @{
  /// Whether a record has been decided: due, disabled or used up.
  bool isProcessShowAdRequested() const { return isProcessShowAdRequested_; }
  void setIsProcessShowAdRequested(bool value) { isProcessShowAdRequested_ = value; }
  /// @}

  /// @{
  /// The host's view, held weakly; null once the host has dropped or destroyed it.
  std::shared_ptr<View> hostView() const;
  void setHostView(const std::shared_ptr<View>& hostView) { hostView_ = hostView; }
  /// @}

  /// @{
  /// The controller of the page; null until the advertisement is prepared.
  const std::shared_ptr<MyPushAdViewController>& pushAdViewController() const {
    return pushAdViewController_;
  }
  void setPushAdViewController(std::shared_ptr<MyPushAdViewController> controller) {
    pushAdViewController_ = std::move(controller);
  }
  /// @}

  /// @{
  /// The process's one pop-up window, as far as this presenter has it; it exists from the first
  /// pop-up's preparation on and is never released.
  const std::shared_ptr<Window>& popupAdWindow() const { return popupAdWindow_; }
  void setPopupAdWindow(std::shared_ptr<Window> window) { popupAdWindow_ = std::move(window); }
  /// @}

  /// @{
  /// The record of the last request before a decision; null before any, and after one with null.
  const std::shared_ptr<const MyPushAdInfo>& myPushAdInfo() const { return myPushAdInfo_; }
  void setMyPushAdInfo(std::shared_ptr<const MyPushAdInfo> info) {
    myPushAdInfo_ = std::move(info);
  }
  /// @}

 protected:
  /// Makes the controller; null when a subclass cannot.
  virtual std::shared_ptr<MyPushAdViewController> createPushAdViewController(std::int64_t mode);

 private:
  void startObservingNotifications();
  void stopObservingNotifications();
  void preparePopupWindowIfNeeded();
  bool decideOnce();
  void giveUpPopupWindow();
  void endUnseenPage();
  void endPageForGood();
  enum class Showing { notBegun, putOff, announced, inFront };
  void continueToShowAd(Showing showing);
  void showWhatIsLeft(Showing& showing);
  void announceOnce(Showing& showing);
  void showBanner(const std::optional<std::string>& title, const std::optional<std::string>& html,
                  Showing& showing);
  void showPopup(const std::optional<std::string>& title, const std::optional<std::string>& html,
                 Showing& showing);
  void layOutBanner();
  void layOutPopup();
  std::shared_ptr<View> adView() const;

  bool isProcessShowAdRequested_ = false;
  bool hasShownPopup_ = false;
  std::weak_ptr<View> hostView_;
  std::shared_ptr<MyPushAdViewController> pushAdViewController_;
  std::shared_ptr<Window> popupAdWindow_;
  std::shared_ptr<const MyPushAdInfo> myPushAdInfo_;
  NotificationObservation frameObservation_;
  NotificationObservation closeObservation_;
};

}  // namespace qorix
