#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "qorix/MyPushAdOperator.h"
#include "qorix/MyPushAdViewController.h"

/// The library's controller; tells every decision about a navigation, with its reason, on a line.
class PreviewController : public qorix::MyPushAdViewController {
 public:
  void webViewDecidePolicyForNavigationAction(const std::shared_ptr<qorix::WebView>& webView,
                                              const qorix::Dictionary& actionInformation,
                                              const qorix::Url& url, const qorix::WebFrame& frame,
                                              qorix::WebPolicyDecisionListener& listener) override;
  void webViewDidFinishLoadForFrame(const std::shared_ptr<qorix::WebView>& webView,
                                    const qorix::WebFrame& frame) override;

  /// Called whenever the page has loaded and been told what the library tells it.
  void setPageDidLoad(std::function<void()> pageDidLoad) { pageDidLoad_ = std::move(pageDidLoad); }

 protected:
  void viewDidLoad() override;

 private:
  std::function<void()> pageDidLoad_;
};

/// The library's presenter, with that controller.
class PreviewOperator : public qorix::MyPushAdOperator {
 public:
  /// See PreviewController; set it before anything is shown.
  void setPageDidLoad(std::function<void()> pageDidLoad) { pageDidLoad_ = std::move(pageDidLoad); }

 protected:
  std::shared_ptr<qorix::MyPushAdViewController> createPushAdViewController(
      std::int64_t mode) override;

 private:
  std::function<void()> pageDidLoad_;
};
