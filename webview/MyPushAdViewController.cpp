#include <qorix/MyPushAdViewController.h>
#include <qorix/platform/Platform.h>

#include "webview/PageScripts.h"

namespace qorix {

std::shared_ptr<const Bundle> MyPushAdViewController::libraryBundle() {
  return platform().libraryBundle;
}

bool MyPushAdViewController::initWithNibName(const std::optional<std::string>& nibName,
                                             const std::shared_ptr<const Bundle>& bundle) {
  if (!ViewController::initWithNibName(nibName, bundle)) {
    return false;
  }
  customInit();
  return true;
}

bool MyPushAdViewController::initWithCoder(const Dictionary& coder) {
  if (!ViewController::initWithCoder(coder)) {
    return false;
  }
  customInit();
  return true;
}

std::shared_ptr<View> MyPushAdViewController::loadView() {
  const auto bundle = nibBundle() == nullptr ? libraryBundle() : nibBundle();
  const auto interface = platform().interfaceLoader->load(
      nibName().value_or("MyPushAdViewController"), *bundle, weak_from_this());
  if (!interface) {
    return nullptr;
  }
  legacyWebView_ = interface->webView;
  return interface->view;
}

void MyPushAdViewController::viewDidLoad() {
  if (const auto webView = legacyWebView()) {
    webView->setDrawsBackground(false);
  }
}

void MyPushAdViewController::changeViewSize(const Size& size) {
  if (const auto view = this->view()) {
    Rect frame = view->frame();
    frame.size = size;
    view->setFrame(frame);
  }
}

void MyPushAdViewController::loadDataWithTitle(const std::optional<std::string>& title,
                                               const std::optional<std::string>& htmlString) {
  if (title) {
    setTitle(*title);
  }
  const auto webView = legacyWebView();
  if (htmlString && webView != nullptr) {
    openingLimit_ = nullptr;
    webView->loadHtmlString(*htmlString, libraryBundle()->executableUrl());
  }
}

void MyPushAdViewController::endPage() {
  if (const auto webView = legacyWebView()) {
    webView->endPage();
  }
}

void MyPushAdViewController::handleCloseButtonClicked() {
  if (const auto delegate = delegate_.lock()) {
    delegate->pushAdViewControllerCloseButtonDidClick(weak_from_this().lock());
  }
}

void MyPushAdViewController::handleOpenIAPButtonClickedWithURL(const std::optional<Url>& url) {
  if (const auto delegate = delegate_.lock()) {
    delegate->pushAdViewControllerOpenIAPButtonDidClickWithURL(weak_from_this().lock(), url);
  }
}

// The same is done for each frame that has loaded, main or inner.
void MyPushAdViewController::webViewDidFinishLoadForFrame(const std::shared_ptr<WebView>& webView,
                                                          const WebFrame& frame) {
  const auto ownWebView = legacyWebView();
  if (webView != ownWebView || ownWebView == nullptr) {
    return;
  }
  const auto self = weak_from_this().lock();  // the host may drop everything while a script runs
  processAdFilterFeatureIfNeeded(ownWebView);
  if (isAdFilterFeaturePutOff_) {
    ownWebView->performWhenPageAnswers(
        [controller = weak_from_this(), reporter = std::weak_ptr<WebView>(ownWebView), frame] {
          if (const auto same = controller.lock()) {
            same->webViewDidFinishLoadForFrame(reporter.lock(), frame);
          }
        });
    return;
  }
  if (pushAdMode_ == MyPushAdModePopup) {
    ownWebView->stringByEvaluatingJavaScriptFromString(hideElementScript(kCloseControlId));
  }
}

}  // namespace qorix
