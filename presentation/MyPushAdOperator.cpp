#include <qorix/MyPushAdOperator.h>
#include <qorix/platform/Log.h>
#include <qorix/platform/Platform.h>

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
  if (isDue(decideAndCount(*myPushAdInfo_))) {
    prepareToShowAd();
  }
  isProcessShowAdRequested_ = true;
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
  platform().mainRunLoop->performAfterDelay(static_cast<double>(info.delay()),
                                            [self] { self->showAd(); });
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
    sharedWindow = windowWithContentViewController(pushAdViewController_);
    if (sharedWindow != nullptr) {
      sharedWindow->setLevel(WindowLevel::floating);
    }
  }
  if (popupAdWindow_ == nullptr) {
    popupAdWindow_ = sharedWindow;
  }
}

// Showing.

void MyPushAdOperator::showAd() {
  const auto info = myPushAdInfo_;
  const auto title = info == nullptr ? std::nullopt : info->localizedTitle();
  const auto html = info == nullptr ? std::nullopt : info->localizedHtmlString();
  if (isAdShownAsBanner()) {
    showBanner(title, html);
  } else if (info == nullptr || info->embed() == 0) {  // no record reads as all zeros
    showPopup(title, html);
  }
}

void MyPushAdOperator::showBanner(const std::optional<std::string>& title,
                                  const std::optional<std::string>& html) {
  const auto host = hostView();
  const auto ad = adView();
  if (ad->superview() != host) {
    postPushAdWillShowNotification();
    host->addSubview(ad);
  }
  if (title) {
    ad->setAccessibleName(*title);  // a banner shows its title nowhere
  }
  relayoutPushAdFrame();
  pushAdViewController_->loadDataWithTitle(title, html);
}

void MyPushAdOperator::showPopup(const std::optional<std::string>& title,
                                 const std::optional<std::string>& html) {
  const bool wasVisible = popupAdWindow_ != nullptr && popupAdWindow_->isVisible();
  postPushAdWillShowNotification();
  if (wasVisible) {
    return;
  }
  if (popupAdWindow_ != nullptr) {
    popupAdWindow_->makeKeyAndOrderFront();
  }
  relayoutPushAdFrame();
  if (pushAdViewController_ != nullptr) {
    pushAdViewController_->loadDataWithTitle(title, html);
  }
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
  postPushAdDidCloseNotification();
  pushAdViewController_->endPage();
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
