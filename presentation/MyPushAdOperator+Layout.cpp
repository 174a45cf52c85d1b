#include <qorix/MyPushAdOperator.h>
#include <qorix/platform/Log.h>
#include <qorix/platform/Platform.h>

#include "platform/Guarded.h"
#include "presentation/AdFrameLayout.h"

namespace qorix {

namespace {

Size adSize(const MyPushAdInfo& info) {
  return {static_cast<double>(info.width()), static_cast<double>(info.height())};
}

}  // namespace

void MyPushAdOperator::startObservingNotifications() {
  NotificationCenter& center = *platform().notificationCenter;
  frameObservation_ = center.addObserver(
      kViewFrameDidChangeNotification,
      [this](const Notification& each) { handleViewFrameDidChangeNotification(each); });
  closeObservation_ = center.addObserver(
      kWindowWillCloseNotification,
      [this](const Notification& each) { handleWindowWillCloseNotification(each); });
}

void MyPushAdOperator::stopObservingNotifications() {
  frameObservation_.end();
  closeObservation_.end();
}

// Every operator hears of every view and window of the process: the identity test comes first.

void MyPushAdOperator::handleViewFrameDidChangeNotification(const Notification& notification) {
  const Object* sender = notification.object().get();
  if (sender != nullptr && sender == hostView_.lock().get() && isAdShownAsBanner()) {
    relayoutPushAdFrame();
  }
}

void MyPushAdOperator::handleWindowWillCloseNotification(const Notification& notification) {
  const Object* sender = notification.object().get();
  if (sender != nullptr && sender == popupAdWindow_.get() && popupAdWindow_->isVisible()) {
    callGuarded([this] { postPushAdDidCloseNotification(); });
    endUnseenPage();
  }
}

/// The window keeps the page of the first presenter. That of a later one, which lies in no window,
/// would go on for as long as the process.
void MyPushAdOperator::endUnseenPage() {
  const auto ad = pushAdViewController_ == nullptr ? nullptr : adView();
  if (hasShownPopup_ && ad != nullptr && ad->superview() == nullptr &&
      popupAdWindow_->contentView() != ad) {
    endPageForGood();
    hasShownPopup_ = false;  // every later closing of the window comes here too
  }
}

void MyPushAdOperator::relayoutPushAdFrame() {
  if (isAdShownAsBanner()) {
    layOutBanner();
  } else {
    layOutPopup();
  }
}

void MyPushAdOperator::layOutBanner() {
  const MyPushAdInfo& info = *myPushAdInfo_;
  const BannerPlacement placement{info.embed(), adSize(info), static_cast<double>(info.offsetx()),
                                  static_cast<double>(info.offsety())};
  adView()->setFrame(bannerFrame(hostView()->frame().size, placement));
}

void MyPushAdOperator::layOutPopup() {
  if (popupAdWindow_ == nullptr || myPushAdInfo_ == nullptr || myPushAdInfo_->embed() != 0) {
    return;
  }
  Window& window = *popupAdWindow_;
  // Without a size of its own the advertisement gets the window's outer size as its content size.
  const bool hasSize = myPushAdInfo_->width() > 0 && myPushAdInfo_->height() > 0;
  const Size content = hasSize ? adSize(*myPushAdInfo_) : window.frame().size;
  if (const auto screen = window.screen()) {
    const Rect contentRect = centeredContentRect(content, screen->visibleFrame());
    window.setFrame(window.frameRectForContentRect(contentRect));
  } else {
    window.setFrame(window.frameRectForContentRect({{0, 0}, content}));
    window.center();
    logCheck("-[MyPushAdOperator relayoutPushAdFrame]", 264, kConfigurationError);
  }
}

}  // namespace qorix
