#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <qorix/MyPushAdOperator.h>
#include <qorix/MyPushAdViewController.h>

#include "tools/preview/Services.h"

namespace qorix::tools::preview {

/// The library's controller. Prints each decision about a navigation, with its reason, and each
/// exchange with the page's script.
class PreviewController : public MyPushAdViewController {
 public:
  void webViewDecidePolicyForNavigationAction(const std::shared_ptr<WebView>& webView,
                                              const Dictionary& actionInformation, const Url& url,
                                              const WebFrame& frame,
                                              WebPolicyDecisionListener& listener) override;
  void webViewDidFinishLoadForFrame(const std::shared_ptr<WebView>& webView,
                                    const WebFrame& frame) override;
  bool isSupportAdFilterFeature(const std::shared_ptr<WebView>& webView) override;

  /// The registry in force; set it before the page is loaded.
  void setRegistry(std::shared_ptr<RememberingRegistry> registry) {
    registry_ = std::move(registry);
  }

  /// Called whenever the page has loaded and has received what the library sends it.
  void setPageDidLoad(std::function<void()> pageDidLoad) { pageDidLoad_ = std::move(pageDidLoad); }

 protected:
  void viewDidLoad() override;

 private:
  std::string describeBridge(WebView& webView);

  std::shared_ptr<RememberingRegistry> registry_;
  std::optional<bool> takesPart_;  // the page, in the exchange that runs or has run last
  std::function<void()> pageDidLoad_;
};

/// The library's presenter, with that controller.
class PreviewOperator : public MyPushAdOperator {
 public:
  using MyPushAdOperator::MyPushAdOperator;

  /// See PreviewController; set both before anything is shown.
  void setRegistry(std::shared_ptr<RememberingRegistry> registry) {
    registry_ = std::move(registry);
  }
  void setPageDidLoad(std::function<void()> pageDidLoad) { pageDidLoad_ = std::move(pageDidLoad); }

 protected:
  std::shared_ptr<MyPushAdViewController> createPushAdViewController(std::int64_t mode) override;

 private:
  std::shared_ptr<RememberingRegistry> registry_;
  std::function<void()> pageDidLoad_;
};

}  // namespace qorix::tools::preview
