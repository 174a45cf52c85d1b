#include <algorithm>
#include <new>

#include <qorix/MyPushAdOperator.h>
#include <qorix/platform/Log.h>
#include <qorix/platform/Platform.h>

#include "platform/Guarded.h"
#include "presentation/StoredShownState.h"

namespace qorix {

namespace {

/// The one pop-up window of the process. Never destroyed: it lives as long as the process.
std::shared_ptr<Window>& sharedPopupAdWindow() {
  static auto& window = *new std::shared_ptr<Window>();
  return window;
}

}  // namespace

MyPushAdOperator::MyPushAdOperator(const FactoryKey<MyPushAdOperator>& /*key*/)
    : popupAdWindow_(sharedPopupAdWindow()) {
  startObservingNotifications();
}

MyPushAdOperator::~MyPushAdOperator() { stopObservingNotifications(); }

std::shared_ptr<View> MyPushAdOperator::hostView() const {
  auto view = hostView_.lock();
  return view == nullptr || view->isGone() ? nullptr : view;
}

// The decision.

void MyPushAdOperator::processShowAdIfNeededWithPushAdInfo(
    const std::shared_ptr<const MyPushAdInfo>& info) {
  constexpr const char* kMethod = "-[MyPushAdOperator processShowAdIfNeededWithPushAdInfo:]";
  if (isProcessShowAdRequested_) {
    return;
  }
  if (myPushAdInfo_ != nullptr) {
    logCheck(kMethod, 283, kVerifyFailed);
  }
  myPushAdInfo_ = info;
  if (myPushAdInfo_ == nullptr) {
    logCheck(kMethod, 287, kFatalError);
    return;
  }
  if (decideOnce()) {
    callGuarded([this] { prepareToShowAd(); });  // it has been counted, whatever happens now
  }
  isProcessShowAdRequested_ = true;
}

/// If there is no decision, nothing was counted, and the record may be offered again.
bool MyPushAdOperator::decideOnce() {
  try {
    return isDue(decideAndCount(*myPushAdInfo_));
  } catch (...) {
    myPushAdInfo_ = nullptr;
    throw;
  }
}

// Preparing.

void MyPushAdOperator::prepareToShowAd() {
  constexpr const char* kMethod = "-[MyPushAdOperator prepareToShowAd]";
  if (myPushAdInfo_ == nullptr) {
    logCheck(kMethod, 372, kFatalError);
    return;
  }
  const auto self = weak_from_this().lock();  // null while a subclass's constructor runs
  const auto record = myPushAdInfo_;          // kept, whatever the host does meanwhile
  const MyPushAdInfo& info = *record;
  info.doCheck();
  if (pushAdViewController_ != nullptr) {
    logCheck(kMethod, 376, kVerifyFailed);
  } else {
    const bool asBanner = hostView() != nullptr && info.embed() > 0;
    pushAdViewController_ =
        createPushAdViewController(asBanner ? MyPushAdModeBanner : MyPushAdModePopup);
    if (pushAdViewController_ != nullptr) {
      pushAdViewController_->setDelegate(self);
    }
  }
  if (pushAdViewController_ == nullptr) {
    logCheck(kMethod, 401, kVerifyFailed);
  } else if (info.width() > 0 && info.height() > 0) {
    pushAdViewController_->changeViewSize(
        {static_cast<double>(info.width()), static_cast<double>(info.height())});
  }
  preparePopupWindowIfNeeded();
  if (info.delay() < 0 || self == nullptr) {
    return;
  }
  try {
    platform().mainRunLoop->performAfterDelay(static_cast<double>(info.delay()),
                                              [self] { self->showAd(); });
  } catch (...) {
    giveUpPopupWindow();
    throw;
  }
}

std::shared_ptr<MyPushAdViewController> MyPushAdOperator::createPushAdViewController(
    std::int64_t mode) {
  return MyPushAdViewController::createInstanceWithPushAdMode(mode);
}

void MyPushAdOperator::preparePopupWindowIfNeeded() {
  if (pushAdViewController_ != nullptr &&
      pushAdViewController_->pushAdMode() != MyPushAdModePopup) {
    return;
  }
  auto& sharedWindow = sharedPopupAdWindow();
  if (sharedWindow == nullptr && pushAdViewController_ != nullptr) {
    // The window keeps the first operator's controller as its content for good; later ones share
    // it.
    const auto window = windowWithContentViewController(pushAdViewController_);
    if (window != nullptr) {
      window->setLevel(WindowLevel::floating);
    }
    sharedWindow = window;
  }
  if (popupAdWindow_ == nullptr) {
    popupAdWindow_ = sharedWindow;
  }
}

/// A window with a page that cannot be loaded any more must not stay the one of the process: the
/// next presenter makes another.
void MyPushAdOperator::giveUpPopupWindow() {
  callGuarded([this] {
    if (popupAdWindow_ != nullptr && popupAdWindow_->contentView() == adView()) {
      sharedPopupAdWindow() = nullptr;
      callGuarded([this] { popupAdWindow_->close(); });
      popupAdWindow_ = nullptr;
    }
  });
}

// Showing.

void MyPushAdOperator::showAd() { continueToShowAd(Showing::notBegun); }

/// Without memory for all of it, the rest is done after a minute, so that what was announced is
/// shown, and once.
void MyPushAdOperator::continueToShowAd(Showing showing) {
  constexpr double kRetryDelaySeconds = 60;
  try {
    showWhatIsLeft(showing);
  } catch (const std::bad_alloc&) {
    logStoppedException();
    showing = std::max(showing, Showing::putOff);
    try {
      platform().mainRunLoop->performAfterDelay(
          kRetryDelaySeconds,
          [self = shared_from_this(), showing] { self->continueToShowAd(showing); });
    } catch (...) {
      logStoppedException();
      giveUpPopupWindow();
    }
  }
}

void MyPushAdOperator::showWhatIsLeft(Showing& showing) {
  const auto info = myPushAdInfo_;
  const auto title = info == nullptr ? std::nullopt : info->localizedTitle();
  const auto html = info == nullptr ? std::nullopt : info->localizedHtmlString();
  if (isAdShownAsBanner()) {
    showBanner(title, html, showing);
  } else if (info == nullptr || info->embed() == 0) {  // no record reads as all zeros
    showPopup(title, html, showing);
  }
}

void MyPushAdOperator::announceOnce(Showing& showing) {
  if (showing < Showing::announced) {
    postPushAdWillShowNotification();
    showing = Showing::announced;
  }
}

void MyPushAdOperator::showBanner(const std::optional<std::string>& title,
                                  const std::optional<std::string>& html, Showing& showing) {
  const auto host = hostView();
  const auto ad = adView();
  if (ad->superview() != host) {
    announceOnce(showing);
    host->addSubview(ad);
  }
  if (title) {
    ad->setAccessibleName(*title);  // a banner shows its title nowhere
  }
  relayoutPushAdFrame();
  pushAdViewController_->loadDataWithTitle(title, html);
}

void MyPushAdOperator::showPopup(const std::optional<std::string>& title,
                                 const std::optional<std::string>& html, Showing& showing) {
  const bool wasVisible = popupAdWindow_ != nullptr && popupAdWindow_->isVisible();
  const bool isClosedAlready = showing == Showing::inFront && !wasVisible;
  const bool isAnotherInFront = showing == Showing::notBegun && wasVisible;
  announceOnce(showing);
  if (isClosedAlready || isAnotherInFront) {
    return;
  }
  if (popupAdWindow_ != nullptr) {
    popupAdWindow_->makeKeyAndOrderFront();
    showing = Showing::inFront;
  }
  relayoutPushAdFrame();
  if (pushAdViewController_ != nullptr) {
    pushAdViewController_->loadDataWithTitle(title, html);
  }
  hasShownPopup_ = true;
}

bool MyPushAdOperator::isAdShownAsBanner() const {
  return adView() != nullptr && hostView() != nullptr && myPushAdInfo_ != nullptr &&
         myPushAdInfo_->embed() > 0;
}

std::shared_ptr<View> MyPushAdOperator::adView() const {
  return pushAdViewController_ == nullptr ? nullptr : pushAdViewController_->view();
}

// What the user does in the page.

void MyPushAdOperator::pushAdViewControllerCloseButtonDidClick(
    const std::shared_ptr<MyPushAdViewController>& controller) {
  constexpr const char* kMethod = "-[MyPushAdOperator pushAdViewControllerCloseButtonDidClick:]";
  if (controller != pushAdViewController_) {
    logCheck(kMethod, 489, kVerifyFailed);
  }
  if (!isAdShownAsBanner()) {
    return;
  }
  const auto ad = adView();
  if (ad->superview() != hostView()) {
    logCheck(kMethod, 494, kVerifyFailed);
  }
  ad->removeFromSuperview();
  callGuarded([this] { postPushAdDidCloseNotification(); });  // the page ends all the same
  endPageForGood();
}

/// The advertisement is not shown again. The engine keeps descriptors and processes for a page that
/// has ended, as long as its view is there; the view goes later, as a click on it may have led
/// here.
void MyPushAdOperator::endPageForGood() {
  pushAdViewController_->endPage();
  if (const auto webView = pushAdViewController_->legacyWebView()) {
    platform().mainRunLoop->performAfterDelay(0, [webView] { webView->removeFromSuperview(); });
  }
}

void MyPushAdOperator::pushAdViewControllerOpenIAPButtonDidClickWithURL(
    const std::shared_ptr<MyPushAdViewController>& controller, const std::optional<Url>& url) {
  if (controller != pushAdViewController_) {
    logCheck("-[MyPushAdOperator pushAdViewController:openIAPButtonDidClickWithURL:]", 504,
             kVerifyFailed);
  }
  postPushAdOpenIAPNotificationWithURL(url);
}

}  // namespace qorix
