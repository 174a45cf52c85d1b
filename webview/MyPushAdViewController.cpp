#include "qorix/MyPushAdViewController.h"

#include <utility>

#include "platform/Platform.h"
#include "webview/PageScripts.h"

namespace qorix {

std::shared_ptr<const Bundle> MyPushAdViewController::libraryBundle() {
  return platform().libraryBundle;
}

void MyPushAdViewController::initWithNibName(std::string nibName,
                                             std::shared_ptr<const Bundle> bundle) {
  nibName_ = std::move(nibName);
  bundle_ = std::move(bundle);
  customInit();
}

std::shared_ptr<View> MyPushAdViewController::loadView() {
  const auto interface = platform().interfaceLoader->load(nibName_, *bundle_, weak_from_this());
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
    webView->loadHtmlString(*htmlString, bundle_->executableUrl());
  }
}

void MyPushAdViewController::handleCloseButtonClicked() {
  if (const auto delegate = delegate_.lock()) {
    delegate->pushAdViewControllerCloseButtonDidClick(shared_from_this());
  }
}

void MyPushAdViewController::handleOpenIAPButtonClickedWithURL(const std::optional<Url>& url) {
  if (const auto delegate = delegate_.lock()) {
    delegate->pushAdViewControllerOpenIAPButtonDidClickWithURL(shared_from_this(), url);
  }
}

// Inner frames count like the main one: the work below is done for each frame that has loaded.
void MyPushAdViewController::webViewDidFinishLoadForFrame(const std::shared_ptr<WebView>& webView,
                                                          const WebFrame& /*frame*/) {
  const auto ownWebView = legacyWebView();
  if (webView != ownWebView || ownWebView == nullptr) {
    return;
  }
  const auto self = shared_from_this();  // the host may drop everything while a script runs
  processAdFilterFeatureIfNeeded(ownWebView);
  if (pushAdMode_ == MyPushAdModePopup) {
    ownWebView->stringByEvaluatingJavaScriptFromString(hideElementScript(kCloseControlId));
  }
}

}  // namespace qorix
