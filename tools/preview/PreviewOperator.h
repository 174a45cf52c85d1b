#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <qorix/MyPushAdOperator.h>
#include <qorix/MyPushAdViewController.h>

#include "tools/preview/Services.h"

/// The library's controller; tells every decision about a navigation, with its reason, on a line,
/// and every exchange with the page's script.
class PreviewController : public qorix::MyPushAdViewController {
 public:
  void webViewDecidePolicyForNavigationAction(const std::shared_ptr<qorix::WebView>& webView,
                                              const qorix::Dictionary& actionInformation,
                                              const qorix::Url& url, const qorix::WebFrame& frame,
                                              qorix::WebPolicyDecisionListener& listener) override;
  void webViewDidFinishLoadForFrame(const std::shared_ptr<qorix::WebView>& webView,
                                    const qorix::WebFrame& frame) override;
  bool isSupportAdFilterFeature(const std::shared_ptr<qorix::WebView>& webView) override;

  /// The registry in force; set it before the page is loaded.
  void setRegistry(std::shared_ptr<RememberingRegistry> registry) {
    registry_ = std::move(registry);
  }

  /// Called whenever the page has loaded and been told what the library tells it.
  void setPageDidLoad(std::function<void()> pageDidLoad) { pageDidLoad_ = std::move(pageDidLoad); }

 protected:
  void viewDidLoad() override;

 private:
  std::string describeBridge(qorix::WebView& webView);

  std::shared_ptr<RememberingRegistry> registry_;
  std::optional<bool> takesPart_;  // the page, in the exchange that runs or has run last
  std::function<void()> pageDidLoad_;
};

/// The library's presenter, with that controller.
class PreviewOperator : public qorix::MyPushAdOperator {
 public:
  using MyPushAdOperator::MyPushAdOperator;

  /// See PreviewController; set both before anything is shown.
  void setRegistry(std::shared_ptr<RememberingRegistry> registry) {
    registry_ = std::move(registry);
  }
  void setPageDidLoad(std::function<void()> pageDidLoad) { pageDidLoad_ = std::move(pageDidLoad); }

 protected:
  std::shared_ptr<qorix::MyPushAdViewController> createPushAdViewController(
      std::int64_t mode) override;

 private:
  std::shared_ptr<RememberingRegistry> registry_;
  std::function<void()> pageDidLoad_;
};
