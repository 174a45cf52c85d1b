#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/Bundle.h"
#include "platform/ViewController.h"
#include "platform/WebView.h"

namespace qorix {

class MyPushAdViewController;

/// How an advertisement is presented.
enum MyPushAdMode : std::int64_t {
  MyPushAdModePopup = 0,   // in the pop-up window
  MyPushAdModeBanner = 1,  // in the host view
};

/// Hears what the user does in the page. Main thread. Every method may be left out.
class MyPushAdViewControllerDelegate {
 public:
  virtual ~MyPushAdViewControllerDelegate() = default;

  /// The user wants the advertisement closed; the controller itself closes nothing.
  virtual void pushAdViewControllerCloseButtonDidClick(
      const std::shared_ptr<MyPushAdViewController>& /*controller*/) {}

  /// The user chose the page's in-app purchase; `url` is the address of the link, unchanged.
  virtual void pushAdViewControllerOpenIAPButtonDidClickWithURL(
      const std::shared_ptr<MyPushAdViewController>& /*controller*/,
      const std::optional<Url>& /*url*/) {}
};

/// Shows one advertisement's page in a web view and reports what the user does in it. Main thread
/// only.
class MyPushAdViewController : public ViewController,
                               public WebViewDelegate,
                               public std::enable_shared_from_this<MyPushAdViewController> {
 public:
  /// A new controller, allocated as a `Self`, whose view will come from the library's interface
  /// file "MyPushAdViewController". Any mode is stored as given; only MyPushAdModePopup is special.
  template <class Self = MyPushAdViewController>
  static std::shared_ptr<Self> createInstanceWithPushAdMode(std::int64_t mode) {
    auto controller = std::make_shared<Self>();
    controller->initWithNibName("MyPushAdViewController", libraryBundle());
    controller->setPushAdMode(mode);
    return controller;
  }

  /// Gives the controller's view that size (points) and leaves its origin.
  void changeViewSize(const Size& size);

  /// Sets the title and loads the page; what is absent stays as it is. The page's relative
  /// references resolve against the folder of the library's own file.
  void loadDataWithTitle(const std::optional<std::string>& title,
                         const std::optional<std::string>& htmlString);

  /// Tell the delegate, if there is one.
  void handleCloseButtonClicked();
  void handleOpenIAPButtonClickedWithURL(const std::optional<Url>& url);

  /// Held weakly.
  std::shared_ptr<MyPushAdViewControllerDelegate> delegate() const { return delegate_.lock(); }
  void setDelegate(const std::shared_ptr<MyPushAdViewControllerDelegate>& delegate) {
    delegate_ = delegate;
  }

  std::int64_t pushAdMode() const { return pushAdMode_; }
  void setPushAdMode(std::int64_t mode) { pushAdMode_ = mode; }

  /// The web view inside the controller's view, which keeps it alive; null before the view is made
  /// and after it is gone.
  std::shared_ptr<WebView> legacyWebView() const { return legacyWebView_.lock(); }
  void setLegacyWebView(const std::shared_ptr<WebView>& webView) { legacyWebView_ = webView; }

  // WebViewDelegate.
  void webViewDidFinishLoadForFrame(const std::shared_ptr<WebView>& webView,
                                    const WebFrame& frame) override;

 protected:
  std::shared_ptr<View> loadView() override;
  void viewDidLoad() override;

  /// For subclasses: runs once, when a new controller has been initialised.
  virtual void customInit() {}

 private:
  static std::shared_ptr<const Bundle> libraryBundle();
  void initWithNibName(std::string nibName, std::shared_ptr<const Bundle> bundle);

  std::string nibName_;
  std::shared_ptr<const Bundle> bundle_;
  std::weak_ptr<MyPushAdViewControllerDelegate> delegate_;
  std::int64_t pushAdMode_ = MyPushAdModePopup;
  std::weak_ptr<WebView> legacyWebView_;
};

}  // namespace qorix
